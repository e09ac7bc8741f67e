#pragma once

#include "projectlink/projectinterface.h"

#include <string>
#include <vector>

namespace projectlink
{

// One installed component, read from its manifest file (an INI file with the keys
// ProgID, CurVer, Filter, Library and optionally ClassID).
struct CComponentInfo
{
    std::string progId;     // version-independent
    std::string curVer;     // the current versioned ProgID
    std::string filter;     // "description|pattern" for the file dialog
    std::string library;    // absolute path of the shared library
    std::string classId;    // braced text, for messages; may be empty
    std::string manifest;   // the file it was read from

    // The description and the pattern halves of the filter.
    std::string FilterDescription() const;
    std::string FilterPattern() const;
    // True when the file name matches one of the filter's patterns ("*.xml;*.mspdi").
    bool MatchesFile(const std::string& path) const;
};

// What discovery found, and the messages of the failure that stopped it (the system's
// text of the error, then message 40021), to be shown in that order.
struct DiscoveryResult
{
    std::vector<CComponentInfo> components;
    std::vector<std::string> messages;
    int32_t errorCode = S_OK;
};

// The folders searched, in order: $QUORVANE_COMPONENT_PATH (a colon-separated list that
// replaces the rest) or else the user's data folder, every folder of $XDG_DATA_DIRS
// (each with "/quorvane/components"), then the build tree's components folder.
std::vector<std::string> ComponentDirs();

// Reads the manifests ("*.component" files) of each folder in file-name order. A ProgID
// already found in an earlier folder is skipped. A manifest that cannot be read, or lacks
// a key, stops the enumeration: the components found before it are kept.
DiscoveryResult DiscoverComponents(const std::vector<std::string>& dirs);

// The combined filter text of the file dialog: each component's filter followed by "|",
// and one more "|" at the end when there is any.
std::string CombinedFilter(const std::vector<CComponentInfo>& components);

// Looks a ProgID up as the open of a session does: every readable manifest is searched,
// unreadable ones are passed over. False when no manifest names it.
bool FindComponent(const std::vector<std::string>& dirs, const std::string& progId,
                   CComponentInfo& info);

// Reads one manifest; on failure returns the error code and sets `error` to its text.
int32_t ReadManifest(const std::string& path, CComponentInfo& info, std::string& error);

} // namespace projectlink
