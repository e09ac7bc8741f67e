#include "cli/cliargs.h"

#include "model/amountlimits.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdlib>

namespace cli
{

Args::Args(const std::vector<std::string>& argv, const std::vector<std::string>& flags)
{
    bool onlyPositional = false;
    for (size_t i = 0; i < argv.size(); ++i)
    {
        const std::string& a = argv[i];
        if (onlyPositional || a.size() < 3 || a.compare(0, 2, "--") != 0)
        {
            if (a == "--")
            {
                onlyPositional = true;
                continue;
            }
            m_positional.push_back(a);
            continue;
        }
        std::string name = a.substr(2);
        const size_t eq = name.find('=');
        if (eq != std::string::npos)
        {
            m_options[name.substr(0, eq)] = name.substr(eq + 1);
            continue;
        }
        if (std::find(flags.begin(), flags.end(), name) != flags.end())
        {
            m_flags.push_back(name);
            continue;
        }
        if (i + 1 >= argv.size())
            throw UsageError("option --" + name + " needs a value");
        m_options[name] = argv[++i];
    }
}

const std::string& Args::At(size_t i, const char* what) const
{
    if (i >= m_positional.size())
        throw UsageError(std::string("missing ") + what);
    return m_positional[i];
}

std::optional<std::string> Args::Option(const std::string& name) const
{
    auto it = m_options.find(name);
    if (it == m_options.end())
        return std::nullopt;
    return it->second;
}

bool Args::Flag(const std::string& name) const
{
    return std::find(m_flags.begin(), m_flags.end(), name) != m_flags.end();
}

void Args::Expect(size_t minPositional, size_t maxPositional,
                  const std::vector<std::string>& known) const
{
    for (const auto& [name, value] : m_options)
        if (std::find(known.begin(), known.end(), name) == known.end())
            throw UsageError("unknown option --" + name);
    for (const std::string& name : m_flags)
        if (std::find(known.begin(), known.end(), name) == known.end())
            throw UsageError("unknown option --" + name);
    if (m_positional.size() < minPositional)
        throw UsageError("too few arguments");
    if (m_positional.size() > maxPositional)
        throw UsageError("unexpected argument '" + m_positional[maxPositional] + "'");
}

namespace
{
// Digits with an optional leading minus and at most one point, at least one digit.
bool IsDecimalNotation(const std::string& text)
{
    size_t i = text.size() > 0 && text[0] == '-' ? 1 : 0;
    bool digit = false, point = false;
    for (; i < text.size(); ++i)
    {
        if (text[i] >= '0' && text[i] <= '9')
            digit = true;
        else if (text[i] == '.' && !point)
            point = true;
        else
            return false;
    }
    return digit;
}

// The value of decimal notation, read the same whatever the user's locale.
std::optional<double> DecimalValue(const std::string& text)
{
    if (!IsDecimalNotation(text))
        return std::nullopt;
    double v = 0;
    const auto [end, ec] =
        std::from_chars(text.data(), text.data() + text.size(), v, std::chars_format::fixed);
    if (ec != std::errc() || end != text.data() + text.size() || !IsStorableAmount(v))
        return std::nullopt;
    return v == 0 ? 0.0 : v; // no negative zero
}
} // namespace

int ParseInt(const std::string& text, const char* what)
{
    const size_t start = !text.empty() && text[0] == '-' ? 1 : 0;
    long v = 0;
    const bool digits =
        text.size() > start && text.find_first_not_of("0123456789", start) == std::string::npos;
    if (digits)
    {
        const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
        if (ec != std::errc() || end != text.data() + text.size())
            v = LONG_MAX;
    }
    if (!digits || v < -2147483647L || v > 2147483647L)
        throw UsageError(
            std::string(what) +
            " must be a whole number such as 12 (digits, an optional leading minus), not '" + text +
            "'");
    return static_cast<int>(v);
}

double ParseDouble(const std::string& text, const char* what)
{
    if (const auto v = DecimalValue(text))
        return *v;
    throw UsageError(
        std::string(what) +
        " must be a decimal number such as 12.50 or -3.75 (digits, an optional leading "
        "minus and point, below one trillion), not '" +
        text + "'");
}

double ParseNonNegative(const std::string& text, const char* what)
{
    const auto v = DecimalValue(text);
    if (v && *v >= 0)
        return *v;
    throw UsageError(std::string(what) +
                     " must be a decimal number of 0 or more such as 12.50 (digits and an optional "
                     "point, below one trillion), not '" +
                     text + "'");
}

int ParseDistance(const std::string& text, const char* what)
{
    if (!text.empty() && text.size() <= 7 &&
        text.find_first_not_of("0123456789") == std::string::npos)
    {
        const int v = std::atoi(text.c_str());
        if (v <= kMaxDistance)
            return v;
    }
    throw UsageError(std::string(what) + " must be a whole number of miles (or km) from 0 to " +
                     std::to_string(kMaxDistance) + ", not '" + text + "'");
}

std::chrono::milliseconds ParseWaitSeconds(const std::string& text)
{
    const auto v = DecimalValue(text);
    if (!v || *v < 0 || *v > 86400)
        throw UsageError(
            "--wait must be a number of seconds from 0 to 86400, such as 10 or 2.5, not '" + text +
            "'");
    return std::chrono::milliseconds(static_cast<int64_t>(*v * 1000 + 0.5));
}

bool ParseYesNo(const std::string& text, const char* what)
{
    if (text == "yes" || text == "1" || text == "on" || text == "true")
        return true;
    if (text == "no" || text == "0" || text == "off" || text == "false")
        return false;
    throw UsageError(std::string(what) + " must be yes or no, not '" + text + "'");
}

} // namespace cli
