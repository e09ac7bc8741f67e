#include "platform/settingsstore.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace platform
{

namespace
{

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

std::string Trim(const std::string& text)
{
    size_t begin = 0;
    size_t end = text.size();
    while (begin < end && IsBlank(text[begin]))
        ++begin;
    while (end > begin && IsBlank(text[end - 1]))
        --end;
    return text.substr(begin, end - begin);
}

void AppendHex(std::string& out, unsigned char c)
{
    static const char digits[] = "0123456789ABCDEF";
    out += "\\x";
    out += digits[c >> 4];
    out += digits[c & 0xF];
}

// Escapes what the line format cannot hold as it is. Blanks at either end would be
// trimmed on reading, so they are escaped too; keys also escape the characters that
// would end them or make the line a section or a comment.
std::string Escape(const std::string& text, bool isKey)
{
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i)
    {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        const bool atEdge = i == 0 || i + 1 == text.size();
        if (c == '\\')
            out += "\\\\";
        else if (c == '\n')
            out += "\\n";
        else if (c == '\r')
            out += "\\r";
        else if (c == '\t')
            out += "\\t";
        else if (c < 0x20 || c == 0x7F)
            AppendHex(out, c);
        else if (c == ' ' && atEdge)
            AppendHex(out, c);
        else if (isKey && (c == '=' || (i == 0 && (c == '[' || c == ';' || c == '#'))))
            AppendHex(out, c);
        else
            out += char(c);
    }
    return out;
}

int HexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool Unescape(const std::string& text, std::string& out)
{
    out.clear();
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] != '\\')
        {
            out += text[i];
            continue;
        }
        if (++i == text.size())
            return false;
        switch (text[i])
        {
        case '\\': out += '\\'; break;
        case 'n': out += '\n'; break;
        case 'r': out += '\r'; break;
        case 't': out += '\t'; break;
        case 'x':
        {
            if (i + 2 >= text.size())
                return false;
            const int high = HexValue(text[i + 1]);
            const int low = HexValue(text[i + 2]);
            if (high < 0 || low < 0)
                return false;
            out += char(high * 16 + low);
            i += 2;
            break;
        }
        default: return false;
        }
    }
    return true;
}

std::string ErrorText(int err) { return std::strerror(err); }

// Reads the whole file; false with errno in `err` (ENOENT for a missing file).
bool ReadFile(const std::string& path, std::string& text, int& err)
{
    err = 0;
    text.clear();
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
    {
        err = errno;
        return false;
    }
    struct stat st{};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode))
    {
        err = S_ISDIR(st.st_mode) ? EISDIR : EINVAL;
        ::close(fd);
        return false;
    }
    char buffer[8192];
    for (;;)
    {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            err = errno;
        if (n <= 0)
            break;
        text.append(buffer, size_t(n));
    }
    ::close(fd);
    return err == 0;
}

bool WriteAll(int fd, const std::string& text)
{
    size_t written = 0;
    while (written < text.size())
    {
        const ssize_t n = ::write(fd, text.data() + written, text.size() - written);
        if (n < 0)
        {
            if (errno == EINTR)
                continue;
            return false;
        }
        written += size_t(n);
    }
    return true;
}

} // namespace

SettingsStore::SettingsStore(std::string path) : m_path(std::move(path)) {}

std::string SettingsStore::DefaultPath()
{
    std::string base;
    // Relative values are to be ignored, as for every XDG variable.
    const char* config = std::getenv("XDG_CONFIG_HOME");
    if (config && config[0] == '/')
        base = config;
    else
    {
        const char* home = std::getenv("HOME");
        if (!home || !*home)
        {
            const passwd* pw = ::getpwuid(::getuid());
            home = pw ? pw->pw_dir : "";
        }
        base = std::string(home) + "/.config";
    }
    return base + "/Halvery/Quorvane Time & Expense.conf";
}

std::string SettingsStore::Serialize(const Sections& sections)
{
    std::string out;
    for (const auto& [section, values] : sections)
    {
        if (values.empty())
            continue;
        if (!out.empty())
            out += '\n';
        out += '[' + Escape(section, true) + "]\n";
        for (const auto& [key, value] : values)
            out += Escape(key, true) + '=' + Escape(value, false) + '\n';
    }
    return out;
}

bool SettingsStore::Parse(const std::string& text, Sections& sections, int* badLine)
{
    sections.clear();
    std::map<std::string, std::string>* values = nullptr;
    int lineNumber = 0;
    size_t pos = 0;
    while (pos < text.size())
    {
        size_t end = text.find('\n', pos);
        if (end == std::string::npos)
            end = text.size();
        std::string line = text.substr(pos, end - pos);
        pos = end + 1;
        ++lineNumber;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const auto fail = [&] {
            if (badLine)
                *badLine = lineNumber;
            sections.clear();
            return false;
        };
        if (line.find('\0') != std::string::npos)
            return fail();
        const std::string trimmed = Trim(line);
        if (trimmed.empty() || trimmed[0] == ';' || trimmed[0] == '#')
            continue;
        if (trimmed[0] == '[')
        {
            std::string name;
            if (trimmed.back() != ']' || !Unescape(Trim(trimmed.substr(1, trimmed.size() - 2)), name))
                return fail();
            values = &sections[name];
            continue;
        }
        const size_t equals = trimmed.find('=');
        if (!values || equals == std::string::npos || equals == 0)
            return fail();
        std::string key, value;
        if (!Unescape(Trim(trimmed.substr(0, equals)), key) ||
            !Unescape(Trim(trimmed.substr(equals + 1)), value))
            return fail();
        (*values)[key] = value;
    }
    return true;
}

bool SettingsStore::Load(std::string* warning)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    m_sections.clear();
    m_changes.clear();
    if (m_path.empty())
        return true;
    std::string text;
    int err = 0;
    if (!ReadFile(m_path, text, err))
    {
        if (err == ENOENT)
            return true;
        if (warning)
            *warning = "The settings file '" + m_path + "' could not be read (" + ErrorText(err) +
                       "); the default settings are used.";
        return false;
    }
    int badLine = 0;
    if (!Parse(text, m_sections, &badLine))
    {
        if (warning)
            *warning = "The settings file '" + m_path + "' is damaged (line " +
                       std::to_string(badLine) +
                       "); the default settings are used and the file is rewritten when they "
                       "are next saved.";
        return false;
    }
    return true;
}

bool SettingsStore::Refresh()
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    if (m_path.empty())
        return true;
    std::string text;
    int err = 0;
    if (!ReadFile(m_path, text, err))
        return err == ENOENT;
    Sections fresh;
    if (!Parse(text, fresh))
        return false;
    ApplyChanges(fresh);
    m_sections = std::move(fresh);
    return true;
}

void SettingsStore::ApplyChanges(Sections& sections) const
{
    for (const auto& [where, value] : m_changes)
    {
        if (value)
            sections[where.first][where.second] = *value;
        else
        {
            auto section = sections.find(where.first);
            if (section != sections.end())
            {
                section->second.erase(where.second);
                if (section->second.empty())
                    sections.erase(section);
            }
        }
    }
}

bool SettingsStore::Save(std::string* error) const
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    if (m_path.empty())
    {
        m_changes.clear();
        return true;
    }
    const auto fail = [&](const std::string& what, int err) {
        if (error)
            *error = "The settings could not be saved to '" + m_path + "': " + what + " (" +
                     ErrorText(err) + ").";
        return false;
    };

    // Start from what the file holds now; a damaged or unreadable file gives way to
    // what this store holds.
    Sections merged;
    std::string text;
    int err = 0;
    if (!ReadFile(m_path, text, err) || !Parse(text, merged))
        merged = m_sections;
    ApplyChanges(merged);

    const std::filesystem::path target(m_path);
    std::error_code ec;
    if (target.has_parent_path())
    {
        std::filesystem::create_directories(target.parent_path(), ec);
        if (ec)
            return fail("cannot create its folder", ec.value());
    }
    std::string pattern = m_path + ".XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    const int fd = ::mkostemp(name.data(), O_CLOEXEC);
    if (fd < 0)
        return fail("cannot create a temporary file", errno);
    const std::string data = Serialize(merged);
    const bool written = WriteAll(fd, data) && ::fsync(fd) == 0;
    err = errno;
    if (::close(fd) != 0 && written)
        err = errno;
    if (!written || ::rename(name.data(), m_path.c_str()) != 0)
    {
        if (written)
            err = errno;
        ::unlink(name.data());
        return fail("cannot write the file", err);
    }
    const int dirFd = ::open(target.has_parent_path() ? target.parent_path().c_str() : ".",
                             O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dirFd >= 0)
    {
        ::fsync(dirFd);
        ::close(dirFd);
    }
    m_changes.clear();
    return true;
}

int SettingsStore::GetInt(const std::string& section, const std::string& key, int defaultValue) const
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    if (!Has(section, key))
        return defaultValue;
    const std::string text = Trim(m_sections.at(section).at(key));
    if (text.empty())
        return defaultValue;
    errno = 0;
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || value < INT_MIN || value > INT_MAX)
        return defaultValue;
    return int(value);
}

std::string SettingsStore::GetString(const std::string& section, const std::string& key,
                                     const std::string& defaultValue) const
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    auto s = m_sections.find(section);
    if (s == m_sections.end())
        return defaultValue;
    auto v = s->second.find(key);
    return v == s->second.end() ? defaultValue : v->second;
}

bool SettingsStore::Has(const std::string& section, const std::string& key) const
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    auto s = m_sections.find(section);
    return s != m_sections.end() && s->second.count(key) != 0;
}

void SettingsStore::SetInt(const std::string& section, const std::string& key, int value)
{
    SetString(section, key, std::to_string(value));
}

void SettingsStore::SetString(const std::string& section, const std::string& key,
                              const std::string& value)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    m_sections[section][key] = value;
    Changed(section, key, value);
}

void SettingsStore::Remove(const std::string& section, const std::string& key)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    auto s = m_sections.find(section);
    if (s != m_sections.end())
    {
        s->second.erase(key);
        if (s->second.empty())
            m_sections.erase(s);
    }
    Changed(section, key, std::nullopt);
}

void SettingsStore::Changed(const std::string& section, const std::string& key,
                            const std::optional<std::string>& value)
{
    m_changes[{section, key}] = value;
}

} // namespace platform
