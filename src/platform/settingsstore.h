#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace platform
{

// The per-user settings store: an INI file with sections ("Settings", "Tip",
// "Recent File List"), written atomically (temporary file, then rename).
// A store with an empty path lives in memory only (tests).
//
// The desktop program and qvx share the file, so a save writes only the values this
// store changed on top of what the file holds by then: a key that another program
// changed meanwhile keeps its new value unless this one changed it too.
// Line breaks, backslashes and other control characters in keys and values are
// written as escapes (\n, \r, \t, \\, \xHH) and read back exactly.
//
// One store may be used from several threads (the automatic save writes the paused
// timer while the user's thread reads settings): every member takes the store's lock.
class SettingsStore
{
public:
    SettingsStore() = default;
    explicit SettingsStore(std::string path);

    // $XDG_CONFIG_HOME (default ~/.config) + "/Halvery/Quorvane Time & Expense.conf".
    static std::string DefaultPath();

    // Reads the file. A missing file is an empty store; an unreadable or corrupt one
    // leaves the store empty (defaults apply) and returns false with a warning text.
    bool Load(std::string* warning = nullptr);
    // Writes the file: what it holds now with this store's changes on top. Returns false
    // with an error text when it cannot; the old file is then left as it was.
    bool Save(std::string* error = nullptr) const;
    // Reads the file again and keeps this store's unsaved changes on top, so that what
    // another program wrote since the last load is seen. A missing or unreadable file
    // leaves the store as it is (false for an unreadable one).
    bool Refresh();

    int GetInt(const std::string& section, const std::string& key, int defaultValue) const;
    std::string GetString(const std::string& section, const std::string& key,
                          const std::string& defaultValue) const;
    bool Has(const std::string& section, const std::string& key) const;
    void SetInt(const std::string& section, const std::string& key, int value);
    void SetString(const std::string& section, const std::string& key, const std::string& value);
    void Remove(const std::string& section, const std::string& key);

    const std::string& GetPath() const { return m_path; }

    using Sections = std::map<std::string, std::map<std::string, std::string>>;
    // The file's text for `sections`, and its reading; false with the number of the
    // first bad line.
    static std::string Serialize(const Sections& sections);
    static bool Parse(const std::string& text, Sections& sections, int* badLine = nullptr);

private:
    // This store's changes laid over `sections`.
    void ApplyChanges(Sections& sections) const;
    void Changed(const std::string& section, const std::string& key,
                 const std::optional<std::string>& value);

    mutable std::recursive_mutex m_mutex;
    std::string m_path;
    Sections m_sections;
    // Values set or removed since the last load or save (nullopt: removed).
    mutable std::map<std::pair<std::string, std::string>, std::optional<std::string>> m_changes;
};

} // namespace platform
