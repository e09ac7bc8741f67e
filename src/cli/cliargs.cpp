#include "cli/cliargs.h"

#include <algorithm>
#include <cerrno>
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

int ParseInt(const std::string& text, const char* what)
{
    errno = 0;
    char* end = nullptr;
    const long v = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno != 0 || v < -2147483647L || v > 2147483647L)
        throw UsageError(std::string(what) + " must be a whole number, not '" + text + "'");
    return static_cast<int>(v);
}

double ParseDouble(const std::string& text, const char* what)
{
    errno = 0;
    char* end = nullptr;
    const double v = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || errno != 0 || v != v)
        throw UsageError(std::string(what) + " must be a number, not '" + text + "'");
    return v;
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
