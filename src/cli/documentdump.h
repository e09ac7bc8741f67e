#pragma once

#include <string>

class CTimeKeeperDoc;

namespace cli
{

// Every record of the document as JSON: arrays of records sorted by id, days by key.
std::string DumpJson(const CTimeKeeperDoc& doc);
// A readable outline: the task tree with levels, the catalogs, the days with entries.
std::string DumpOutline(const CTimeKeeperDoc& doc);

} // namespace cli
