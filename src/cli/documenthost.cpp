#include "cli/documenthost.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace cli
{

namespace
{
DocumentHost* g_host = nullptr;
} // namespace

HostScope::HostScope(DocumentHost& host) : m_previous(g_host)
{
    g_host = &host;
}

HostScope::~HostScope()
{
    g_host = m_previous;
}

DocumentHost* CurrentHost()
{
    return g_host;
}

DocumentHost* HostFor(const std::string& path)
{
    if (!g_host || path.empty())
        return nullptr;
    return CanonicalPath(path) == g_host->path ? g_host : nullptr;
}

std::string CanonicalPath(const std::string& path)
{
    std::error_code error;
    const std::filesystem::path canonical = std::filesystem::canonical(path, error);
    if (!error)
        return canonical.string();
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    return error ? path : absolute.lexically_normal().string();
}

std::string DocumentObjectPath(const std::string& canonicalPath)
{
    // FNV-1a: stable across builds and programs, unlike std::hash.
    uint64_t hash = UINT64_C(14695981039346656037);
    for (const unsigned char c : canonicalPath)
    {
        hash ^= c;
        hash *= UINT64_C(1099511628211);
    }
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
    return std::string(kDocumentPathPrefix) + "d" + digits;
}

bool CanAskOnTerminal()
{
    return g_host == nullptr && isatty(STDIN_FILENO);
}

} // namespace cli
