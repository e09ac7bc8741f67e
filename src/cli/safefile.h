#pragma once

#include <string>
#include <string_view>

namespace cli
{

// Writes a whole new file so that it is either absent or complete: the bytes go to a
// temporary file beside it, are synced, and the file is then moved into place. An
// existing `path` is refused (CommandError) unless `replace` is set.
void WriteNewFile(const std::string& path, std::string_view bytes, bool replace);

bool FileExists(const std::string& path);

// The two paths name the same file (or would, once created).
bool SameFile(const std::string& a, const std::string& b);

} // namespace cli
