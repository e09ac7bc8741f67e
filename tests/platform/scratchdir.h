#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

// A fresh directory under the system's temporary folder, removed with everything in it.
class ScratchDir
{
public:
    ScratchDir()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "qvtest-XXXXXX").string();
        std::vector<char> buffer(pattern.begin(), pattern.end());
        buffer.push_back('\0');
        if (::mkdtemp(buffer.data()))
            m_path = buffer.data();
    }
    ~ScratchDir()
    {
        std::error_code ec;
        if (!m_path.empty())
            std::filesystem::remove_all(m_path, ec);
    }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    std::string File(const std::string& name) const { return m_path + "/" + name; }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

inline std::string ReadText(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteText(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

// Sets (or with nullptr unsets) an environment variable for the length of a scope.
class ScopedEnv
{
public:
    ScopedEnv(const char* name, const char* value) : m_name(name)
    {
        if (const char* old = std::getenv(name))
            m_old = old;
        if (value)
            ::setenv(name, value, 1);
        else
            ::unsetenv(name);
    }
    ~ScopedEnv()
    {
        if (m_old)
            ::setenv(m_name, m_old->c_str(), 1);
        else
            ::unsetenv(m_name);
    }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    const char* m_name;
    std::optional<std::string> m_old;
};
