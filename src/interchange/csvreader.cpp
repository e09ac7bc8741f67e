#include "interchange/csvreader.h"

#include "interchange/csvtable.h"
#include "interchange/datetimetext.h"
#include "interchange/wallclock.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>

namespace interchange
{

namespace
{
enum class Field
{
    task,
    date,
    start,
    end,
    endDate,
    duration,
    note,
    activity,
};

const char* FieldName(Field f)
{
    switch (f)
    {
    case Field::task:
        return "task";
    case Field::date:
        return "date";
    case Field::start:
        return "start";
    case Field::end:
        return "end";
    case Field::endDate:
        return "end-date";
    case Field::duration:
        return "duration";
    case Field::note:
        return "note";
    case Field::activity:
        return "activity";
    }
    return "";
}

std::string Lower(std::string s)
{
    for (char& c : s)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

std::string Trim(const std::string& s)
{
    const size_t first = s.find_first_not_of(" \t");
    if (first == std::string::npos)
        return std::string();
    return s.substr(first, s.find_last_not_of(" \t") - first + 1);
}

std::optional<Field> ParseField(const std::string& text)
{
    static const std::map<std::string, Field> names = {
        {"task", Field::task},         {"date", Field::date},         {"start", Field::start},
        {"end", Field::end},           {"end-date", Field::endDate},  {"enddate", Field::endDate},
        {"duration", Field::duration}, {"hours", Field::duration},    {"note", Field::note},
        {"description", Field::note},  {"activity", Field::activity},
    };
    const auto it = names.find(Lower(Trim(text)));
    return it == names.end() ? std::nullopt : std::optional<Field>(it->second);
}

// Header cells that the detailed exports of the common web trackers use, by field. A
// client or customer, a project and a task make the task path in that order.
const std::vector<std::pair<Field, std::vector<std::string>>>& KnownHeaders()
{
    static const std::vector<std::pair<Field, std::vector<std::string>>> known = {
        {Field::task, {"client", "customer", "client name", "customer name"}},
        {Field::task, {"project", "project name"}},
        {Field::task, {"task", "task name"}},
        {Field::date, {"date", "start date", "day", "startdate", "start_date"}},
        {Field::start, {"start time", "start", "from", "begin", "started", "starttime", "start_time"}},
        {Field::endDate, {"end date", "enddate", "end_date"}},
        {Field::end, {"end time", "end", "to", "stop", "until", "ended", "endtime", "end_time"}},
        {Field::duration,
         {"duration", "duration (h)", "duration (decimal)", "hours", "time", "time (h)", "duration (hours)",
          "decimal hours"}},
        {Field::note, {"description", "notes", "note", "comment", "comments", "annotation"}},
        {Field::activity, {"activity", "activity name"}},
    };
    return known;
}

struct Column
{
    size_t index = 0;
    Field field = Field::note;
};

std::string ColumnName(const CsvTable& table, size_t index)
{
    return "column " + std::to_string(index + 1) + " ('" + Trim(table.header.cells[index]) + "')";
}

std::string HeaderList(const CsvTable& table)
{
    std::string list;
    for (const std::string& cell : table.header.cells)
        list += (list.empty() ? "" : ", ") + ("'" + Trim(cell) + "'");
    return list;
}

// Splits "A=task,\"B, C\"=note" into its pairs.
std::vector<std::pair<std::string, std::string>> SplitMap(const std::string& map)
{
    std::vector<std::pair<std::string, std::string>> pairs;
    std::string item;
    bool quoted = false;
    auto flush = [&]
    {
        if (Trim(item).empty())
            return;
        const size_t eq = item.rfind('=');
        if (eq == std::string::npos)
            throw CImportError("--map", "'" + Trim(item) + "' names no field (COLUMN=FIELD)");
        std::string column = Trim(item.substr(0, eq));
        if (column.size() >= 2 && column.front() == '"' && column.back() == '"')
            column = column.substr(1, column.size() - 2);
        pairs.emplace_back(column, item.substr(eq + 1));
        item.clear();
    };
    for (char c : map)
    {
        if (c == '"')
            quoted = !quoted;
        if (c == ',' && !quoted)
        {
            flush();
            item.clear();
        }
        else
            item += c;
    }
    flush();
    return pairs;
}

std::vector<Column> MapGiven(const CsvTable& table, const std::string& map)
{
    std::vector<Column> columns;
    for (const auto& [name, fieldText] : SplitMap(map))
    {
        const std::optional<Field> field = ParseField(fieldText);
        if (!field)
            throw CImportError("--map", "'" + Trim(fieldText) +
                                            "' is no field (task, date, start, end, end-date, "
                                            "duration, note, activity)");
        size_t index = table.header.cells.size();
        for (size_t i = 0; i < table.header.cells.size() && index == table.header.cells.size(); ++i)
            if (Lower(Trim(table.header.cells[i])) == Lower(name))
                index = i;
        if (index == table.header.cells.size())
            throw CImportError("--map", "the header row (line " + std::to_string(table.header.line) +
                                            ") has no column '" + name + "'; its columns are " +
                                            HeaderList(table));
        columns.push_back({index, *field});
    }
    return columns;
}

std::vector<Column> Recognise(const CsvTable& table)
{
    std::vector<Column> columns;
    std::vector<bool> used(table.header.cells.size(), false);
    for (const auto& [known, names] : KnownHeaders())
    {
        const Field field = known;
        const bool repeatable = field == Field::task;
        const bool taken = std::any_of(columns.begin(), columns.end(),
                                       [&](const Column& c) { return c.field == field; });
        if (taken && !repeatable)
            continue;
        // The first name in the list that the header has wins, so that "Duration" goes
        // before "Duration (decimal)".
        for (const std::string& name : names)
        {
            size_t found = table.header.cells.size();
            for (size_t i = 0; i < table.header.cells.size(); ++i)
                if (!used[i] && Lower(Trim(table.header.cells[i])) == name)
                {
                    found = i;
                    break;
                }
            if (found < table.header.cells.size())
            {
                used[found] = true;
                columns.push_back({found, field});
                break;
            }
        }
    }
    return columns;
}

class RowReader
{
public:
    RowReader(const CsvTable& table, const std::vector<Column>& columns, const CsvOptions& options)
        : m_table(table), m_columns(columns), m_options(options)
    {
    }

    void Read(const CsvTable::Row& row, ImportSource& source);

private:
    std::string Cell(const CsvTable::Row& row, size_t index) const
    {
        return index < row.cells.size() ? Trim(row.cells[index]) : std::string();
    }
    const Column* Find(Field f) const
    {
        for (const Column& c : m_columns)
            if (c.field == f)
                return &c;
        return nullptr;
    }
    [[noreturn]] void Fail(const CsvTable::Row& row, size_t index, const std::string& what) const
    {
        throw CImportError("line " + std::to_string(row.line) + ", " + ColumnName(m_table, index), what);
    }
    std::optional<CivilDate> Date(const CsvTable::Row& row, const Column* column) const;
    // A time of day on `date`, or a date and time in one cell.
    std::optional<LocalSeconds> Moment(const CsvTable::Row& row, const Column* column,
                                       const std::optional<CivilDate>& date, bool& timeOnly) const;

    const CsvTable& m_table;
    const std::vector<Column>& m_columns;
    const CsvOptions& m_options;
    // Where the next entry without a start begins, by day.
    std::map<int64_t, LocalSeconds> m_nextStart;
};

std::optional<CivilDate> RowReader::Date(const CsvTable::Row& row, const Column* column) const
{
    if (!column)
        return std::nullopt;
    const std::string text = Cell(row, column->index);
    if (text.empty())
        return std::nullopt;
    std::optional<CivilDate> date;
    if (!m_options.datePicture.empty())
        date = ReadDate(text, m_options.datePicture);
    if (!date)
        date = ReadIsoDate(text);
    if (!date && m_options.datePicture.empty())
        date = ReadDate(text, m_options.localeDatePicture);
    // A date column may hold a date and a time; the date is what it gives here.
    if (!date)
        if (const auto moment = ReadDateTime(text, m_options.datePicture.empty()
                                                       ? m_options.localeDatePicture
                                                       : m_options.datePicture))
        {
            int y = 0, m = 0, d = 0;
            CivilFromDays(DayNumber(*moment), y, m, d);
            date = CivilDate{y, m, d};
        }
    if (!date)
        Fail(row, column->index,
             "'" + text + "' is not a date (" +
                 (m_options.datePicture.empty() ? "YYYY-MM-DD or " + m_options.localeDatePicture
                                                : m_options.datePicture) +
                 "; --date-format gives another picture)");
    if (!ValidDate(*date))
        Fail(row, column->index, "'" + text + "' is no plausible date");
    return date;
}

std::optional<LocalSeconds> RowReader::Moment(const CsvTable::Row& row, const Column* column,
                                              const std::optional<CivilDate>& date, bool& timeOnly) const
{
    timeOnly = false;
    if (!column)
        return std::nullopt;
    const std::string text = Cell(row, column->index);
    if (text.empty())
        return std::nullopt;
    if (const auto time = ReadTimeOfDay(text))
    {
        if (!date)
            Fail(row, column->index, "'" + text + "' is a time without a date, and no date is given");
        timeOnly = true;
        return LocalFromCivil(date->year, date->month, date->day) + *time;
    }
    const std::string picture =
        m_options.datePicture.empty() ? m_options.localeDatePicture : m_options.datePicture;
    if (const auto moment = ReadDateTime(text, picture))
        return moment;
    Fail(row, column->index, "'" + text + "' is not a time (HH:MM, or a date and a time)");
}

void RowReader::Read(const CsvTable::Row& row, ImportSource& source)
{
    const std::string where = "line " + std::to_string(row.line);
    for (size_t i = m_table.header.cells.size(); i < row.cells.size(); ++i)
        if (!Trim(row.cells[i]).empty())
            throw CImportError(where, "the row has " + std::to_string(row.cells.size()) +
                                          " cells, the header row " +
                                          std::to_string(m_table.header.cells.size()));
    ImportedTime time;
    time.where = where;
    for (const Column& c : m_columns)
    {
        const std::string text = Cell(row, c.index);
        if (text.empty())
            continue;
        if (c.field == Field::task)
            time.taskPath.push_back(text);
        else if (c.field == Field::note)
            time.note += (time.note.empty() ? "" : "; ") + text;
        else if (c.field == Field::activity)
            time.activity = text;
    }

    const std::optional<CivilDate> date = Date(row, Find(Field::date));
    const std::optional<CivilDate> endDate = Date(row, Find(Field::endDate));
    bool startTimeOnly = false, endTimeOnly = false;
    std::optional<LocalSeconds> start = Moment(row, Find(Field::start), date, startTimeOnly);
    // An end time alone lies on the end date, else on the day of the start.
    std::optional<CivilDate> endDay = endDate ? endDate : date;
    if (!endDay && start)
    {
        CivilDate d;
        CivilFromDays(DayNumber(*start), d.year, d.month, d.day);
        endDay = d;
    }
    std::optional<LocalSeconds> end = Moment(row, Find(Field::end), endDay, endTimeOnly);
    std::optional<int64_t> duration;
    if (const Column* c = Find(Field::duration))
        if (const std::string text = Cell(row, c->index); !text.empty())
        {
            duration = ReadDuration(text);
            if (!duration)
                Fail(row, c->index, "'" + text + "' is not a duration (H:MM, H:MM:SS or decimal hours)");
            if (*duration > kLongestInterval)
                Fail(row, c->index, "'" + text + "' is longer than 31 days");
        }

    if (!start && !date)
    {
        source.skipped.push_back({where, "no date or start"});
        return;
    }
    if (!end && !duration)
    {
        source.skipped.push_back({where, "neither an end nor a duration"});
        return;
    }
    const bool placed = !start;
    if (placed)
    {
        // A date and a duration: entries of a day follow each other from the day's start.
        const LocalSeconds day = LocalFromCivil(date->year, date->month, date->day);
        start = m_nextStart.emplace(DayNumber(day), day + m_options.dayStartMinutes * 60).first->second;
    }
    if (end && endTimeOnly && !endDate && *end < *start)
        *end += kSecondsPerDay; // an end time before the start passes midnight
    if (!end)
        end = *start + *duration;
    if (*end < *start)
        throw CImportError(where, "the entry ends before it starts");
    if (*end - *start > kLongestInterval)
        throw CImportError(where, "the entry lasts more than 31 days");
    if (placed)
        m_nextStart[DayNumber(*start)] = *end;
    time.start = *start;
    time.end = *end;
    source.times.push_back(std::move(time));
}
} // namespace

ImportSource ReadCsv(std::string_view bytes, const CsvOptions& options)
{
    const std::string text = DecodeSourceText(bytes, options.encoding);
    const CsvTable table = ParseCsv(text, options.delimiter);
    const std::vector<Column> columns = options.map.empty() ? Recognise(table) : MapGiven(table, options.map);
    auto has = [&](Field f)
    { return std::any_of(columns.begin(), columns.end(), [&](const Column& c) { return c.field == f; }); };
    if (!(has(Field::date) || has(Field::start)) || !(has(Field::end) || has(Field::duration)))
        throw CImportError(
            "line " + std::to_string(table.header.line),
            std::string(options.map.empty() ? "the header row has no column known to hold"
                                            : "--map names no column for") +
                " the date or the start, or none for the end or the duration; name them with "
                "--map \"COLUMN=FIELD,...\" (the columns are " +
                HeaderList(table) + ")");

    ImportSource source;
    source.format = "CSV";
    const std::string delimiter = table.delimiter == '\t' ? std::string("tab") : std::string(1, table.delimiter);
    source.details.push_back("header row: line " + std::to_string(table.header.line) +
                             "; cells separated by '" + delimiter + "'" +
                             (options.map.empty() ? "; columns recognised by their names" : "; columns as --map names them"));
    int taskPart = 0;
    std::vector<bool> used(table.header.cells.size(), false);
    for (const Column& c : columns)
    {
        std::string line = ColumnName(table, c.index) + " -> " + FieldName(c.field);
        if (c.field == Field::task)
            line += " (part " + std::to_string(++taskPart) + " of the path)";
        if (c.field == Field::date || c.field == Field::endDate)
            line += options.datePicture.empty() ? " (YYYY-MM-DD or " + options.localeDatePicture + ")"
                                                : " (" + options.datePicture + ")";
        source.details.push_back(line);
        used[c.index] = true;
    }
    std::string unused;
    for (size_t i = 0; i < used.size(); ++i)
        if (!used[i])
            unused += (unused.empty() ? "" : ", ") + ("'" + Trim(table.header.cells[i]) + "'");
    if (!unused.empty())
        source.details.push_back("not used: " + unused);

    RowReader reader(table, columns, options);
    source.times.reserve(table.rows.size());
    for (const CsvTable::Row& row : table.rows)
        reader.Read(row, source);
    return source;
}

} // namespace interchange
