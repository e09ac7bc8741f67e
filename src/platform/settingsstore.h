#pragma once

#include <map>
#include <string>

namespace platform
{

// The per-user settings store: an INI file with sections ("Settings", "Tip",
// "Recent File List"), written atomically (temporary file, then rename).
// A store with an empty path lives in memory only (tests).
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
    // Writes the whole store; returns false with an error text when it cannot.
    bool Save(std::string* error = nullptr) const;

    int GetInt(const std::string& section, const std::string& key, int defaultValue) const;
    std::string GetString(const std::string& section, const std::string& key,
                          const std::string& defaultValue) const;
    bool Has(const std::string& section, const std::string& key) const;
    void SetInt(const std::string& section, const std::string& key, int value);
    void SetString(const std::string& section, const std::string& key, const std::string& value);
    void Remove(const std::string& section, const std::string& key);

    const std::string& GetPath() const { return m_path; }

private:
    std::string m_path;
    std::map<std::string, std::map<std::string, std::string>> m_sections;
};

} // namespace platform
