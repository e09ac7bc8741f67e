#include "projectlink/componentregistry.h"

#include "projectlink/projecttexts.h"
#include "platform/messages.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>

namespace fs = std::filesystem;

namespace projectlink
{

namespace
{
std::string Trim(const std::string& s)
{
    const size_t first = s.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return std::string();
    const size_t last = s.find_last_not_of(" \t\r\n");
    return s.substr(first, last - first + 1);
}

std::vector<std::string> SplitList(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    size_t start = 0;
    while (start <= text.size())
    {
        size_t end = text.find(separator, start);
        if (end == std::string::npos)
            end = text.size();
        std::string part = Trim(text.substr(start, end - start));
        if (!part.empty())
            parts.push_back(part);
        start = end + 1;
    }
    return parts;
}

std::string Lower(std::string s)
{
    for (char& c : s)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// Shell-style match of '*' and '?' without case.
bool WildcardMatch(const std::string& pattern, const std::string& text)
{
    size_t p = 0, t = 0, star = std::string::npos, mark = 0;
    while (t < text.size())
    {
        if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t]))
            ++p, ++t;
        else if (p < pattern.size() && pattern[p] == '*')
            star = p++, mark = t;
        else if (star != std::string::npos)
            p = star + 1, t = ++mark;
        else
            return false;
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}
} // namespace

std::string CComponentInfo::FilterDescription() const
{
    return filter.substr(0, filter.find('|'));
}

std::string CComponentInfo::FilterPattern() const
{
    const size_t bar = filter.find('|');
    return bar == std::string::npos ? std::string() : filter.substr(bar + 1);
}

bool CComponentInfo::MatchesFile(const std::string& path) const
{
    const std::string name = Lower(fs::path(path).filename().string());
    for (const std::string& pattern : SplitList(FilterPattern(), ';'))
        if (WildcardMatch(Lower(pattern), name))
            return true;
    return false;
}

std::vector<std::string> ComponentDirs()
{
    if (const char* path = std::getenv("QUORVANE_COMPONENT_PATH"))
        return SplitList(path, ':');
    std::vector<std::string> dirs;
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    const char* home = std::getenv("HOME");
    if (dataHome && *dataHome)
        dirs.push_back(std::string(dataHome) + "/quorvane/components");
    else if (home && *home)
        dirs.push_back(std::string(home) + "/.local/share/quorvane/components");
    const char* dataDirs = std::getenv("XDG_DATA_DIRS");
    for (const std::string& dir :
         SplitList(dataDirs && *dataDirs ? dataDirs : "/usr/local/share:/usr/share", ':'))
        dirs.push_back(dir + "/quorvane/components");
#ifdef QV_BUILD_COMPONENTS_DIR
    dirs.push_back(QV_BUILD_COMPONENTS_DIR);
#endif
    return dirs;
}

int32_t ReadManifest(const std::string& path, CComponentInfo& info, std::string& error)
{
    std::ifstream in(path);
    if (!in)
    {
        const int e = errno ? errno : ENOENT;
        error = std::strerror(e);
        return ResultFromErrno(e);
    }
    info = CComponentInfo();
    info.manifest = path;
    std::string line;
    std::string library;
    while (std::getline(in, line))
    {
        line = Trim(line);
        if (line.empty() || line[0] == '#' || line[0] == ';' || line[0] == '[')
            continue;
        const size_t eq = line.find('=');
        if (eq == std::string::npos)
            continue;
        const std::string key = Trim(line.substr(0, eq));
        const std::string value = Trim(line.substr(eq + 1));
        if (key == "ProgID")
            info.progId = value;
        else if (key == "CurVer")
            info.curVer = value;
        else if (key == "Filter")
            info.filter = value;
        else if (key == "Library")
            library = value;
        else if (key == "ClassID")
            info.classId = value;
    }
    if (in.bad())
    {
        error = std::strerror(EIO);
        return ResultFromErrno(EIO);
    }
    // A manifest without its ProgID, filter or library names no usable component.
    if (info.progId.empty() || info.filter.empty() || library.empty())
    {
        error = path + ": " + std::strerror(ENOENT) + " (ProgID, Filter and Library are needed)";
        return ResultFromErrno(ENOENT);
    }
    fs::path lib(library);
    info.library = lib.is_absolute() ? lib.string() : (fs::path(path).parent_path() / lib).string();
    return S_OK;
}

namespace
{
std::vector<std::string> ManifestsIn(const std::string& dir)
{
    std::vector<std::string> files;
    std::error_code ec;
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec))
        if (it->path().extension() == ".component")
            files.push_back(it->path().string());
    std::sort(files.begin(), files.end());
    return files;
}
} // namespace

DiscoveryResult DiscoverComponents(const std::vector<std::string>& dirs)
{
    DiscoveryResult result;
    std::set<std::string> seen;
    for (const std::string& dir : dirs)
        for (const std::string& file : ManifestsIn(dir))
        {
            CComponentInfo info;
            std::string error;
            const int32_t code = ReadManifest(file, info, error);
            if (Failed(code))
            {
                result.errorCode = code;
                result.messages.push_back(error);
                result.messages.push_back(
                    platform::FormatMessage(ProjectString(40021), HexCode(code)));
                return result;
            }
            if (seen.insert(info.progId).second)
                result.components.push_back(std::move(info));
        }
    return result;
}

std::string CombinedFilter(const std::vector<CComponentInfo>& components)
{
    std::string filter;
    for (const CComponentInfo& c : components)
        filter += c.filter + "|";
    if (!filter.empty())
        filter += "|";
    return filter;
}

bool FindComponent(const std::vector<std::string>& dirs, const std::string& progId,
                   CComponentInfo& info)
{
    for (const std::string& dir : dirs)
        for (const std::string& file : ManifestsIn(dir))
        {
            CComponentInfo candidate;
            std::string error;
            if (Succeeded(ReadManifest(file, candidate, error)) && candidate.progId == progId)
            {
                info = std::move(candidate);
                return true;
            }
        }
    return false;
}

} // namespace projectlink
