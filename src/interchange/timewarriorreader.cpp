#include "interchange/timewarriorreader.h"

#include "interchange/textencoding.h"
#include "interchange/wallclock.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace interchange
{

namespace
{
using Json = nlohmann::json;

// "20240610T070000Z" -> seconds since the epoch (the civil reading of a UTC time).
int64_t ParseUtcStamp(const Json& value, const char* key, const std::string& where)
{
    if (!value.is_string())
        throw CImportError(where, std::string("\"") + key + "\" is not a text");
    const std::string& text = value.get_ref<const std::string&>();
    int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
    char zulu = 0;
    int used = 0;
    const bool shaped = text.size() == 16 && text[8] == 'T' &&
                        std::sscanf(text.c_str(), "%4d%2d%2dT%2d%2d%2d%c%n", &y, &mo, &d, &h, &mi,
                                    &s, &zulu, &used) == 7 &&
                        used == 16 && zulu == 'Z';
    if (!shaped)
        throw CImportError(where, std::string("\"") + key + "\" is not a UTC time such as "
                                                            "20240610T070000Z: '" + text + "'");
    if (!PlausibleYear(y) || mo < 1 || mo > 12 || d < 1 || d > DaysInMonth(y, mo) || h > 23 ||
        mi > 59 || s > 60)
        throw CImportError(where, std::string("\"") + key + "\" is no plausible date and time: '" +
                                      text + "'");
    return LocalFromCivil(y, mo, d, h, mi, s);
}

std::string RecordName(size_t index, const Json& interval)
{
    std::string name = "record " + std::to_string(index + 1);
    const auto id = interval.find("id");
    if (id != interval.end() && id->is_number_unsigned())
        name += " (@" + std::to_string(id->get<uint64_t>()) + ")";
    return name;
}

std::string Clean(const std::string& text)
{
    std::string out = text;
    for (char& c : out)
        if (c == '\t' || c == '\n' || c == '\r')
            c = ' ';
    return out;
}
} // namespace

ImportSource ReadTimewarrior(std::string_view bytes, const TimewarriorOptions& options)
{
    const std::string text = DecodeSourceText(bytes);
    if (text.find_first_not_of(" \t\r\n") == std::string::npos)
        throw CImportError("", "the file is empty (a Timewarrior export is a JSON array)");
    Json root;
    try
    {
        root = Json::parse(text);
    }
    catch (const Json::parse_error& e)
    {
        // The library's message leads with its own numbering and position; keep the reason.
        std::string reason = e.what();
        if (const size_t colon = reason.find(": "); colon != std::string::npos)
            reason = reason.substr(colon + 2);
        const size_t at = e.byte == 0 ? 0 : e.byte - 1;
        throw CImportError(LineAndColumn(text, at), "not JSON: " + reason);
    }
    catch (const Json::exception& e)
    {
        // A number too large for any type: the message quotes it.
        std::string reason = e.what();
        if (const size_t bracket = reason.find("] "); bracket != std::string::npos)
            reason = reason.substr(bracket + 2);
        throw CImportError("", "not JSON: " + reason);
    }
    if (!root.is_array())
        throw CImportError("", "a Timewarrior export is a JSON array of intervals, and this is not one");

    ImportSource source;
    source.format = "Timewarrior export";
    source.details.push_back(options.tagsAsPath
                                 ? "the tags of an interval, in the export's order, are the task path"
                                 : "the first tag of an interval is the task");
    source.times.reserve(root.size());
    for (size_t i = 0; i < root.size(); ++i)
    {
        const Json& interval = root[i];
        if (!interval.is_object())
            throw CImportError("record " + std::to_string(i + 1), "an interval is a JSON object");
        const std::string where = RecordName(i, interval);
        const auto start = interval.find("start");
        if (start == interval.end())
            throw CImportError(where, "the interval has no \"start\"");
        ImportedTime time;
        time.where = where;
        const int64_t utcStart = ParseUtcStamp(*start, "start", where);
        time.start = LocalFromUtc(utcStart);
        if (const auto end = interval.find("end"); end != interval.end())
        {
            const int64_t utcEnd = ParseUtcStamp(*end, "end", where);
            if (utcEnd < utcStart)
                throw CImportError(where, "the interval ends before it starts");
            if (utcEnd - utcStart > kLongestInterval)
                throw CImportError(where, "the interval lasts more than 31 days (" +
                                              std::to_string((utcEnd - utcStart) / 3600) +
                                              " hours): correct it in Timewarrior first");
            time.end = LocalFromUtc(utcEnd);
        }
        if (const auto tags = interval.find("tags"); tags != interval.end())
        {
            if (!tags->is_array())
                throw CImportError(where, "\"tags\" is not a list");
            for (const Json& tag : *tags)
            {
                if (!tag.is_string())
                    throw CImportError(where, "a tag is not a text");
                if (options.tagsAsPath || time.taskPath.empty())
                    time.taskPath.push_back(Clean(tag.get<std::string>()));
            }
        }
        if (const auto note = interval.find("annotation"); note != interval.end())
        {
            if (!note->is_string())
                throw CImportError(where, "\"annotation\" is not a text");
            time.note = note->get<std::string>();
        }
        source.times.push_back(std::move(time));
    }
    return source;
}

} // namespace interchange
