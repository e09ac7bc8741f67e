#include "projectlink/projecttexts.h"

#include "platform/messages.h"

#include <cstdint>
#include <cstdio>
#include <unordered_map>

namespace projectlink
{

std::string ProjectString(unsigned id)
{
    static const std::unordered_map<unsigned, const char*> table = {
        {40021, "Error %1 retrieving Project Management interfaces."},
        {40022, "Select a task."},
        {40023, "No resource is selected.  Without selecting a resource, you will not be able to "
                "update the project from Quorvane Time & Expense.\n\nAre you sure you want to "
                "continue?"},
        {40030, "Error %1 accessing Registry - %2."},
        {40031, "Error initializing project management interface %1."},
        {41026, "Are you sure you want to delete the project - %1?"},
        {41027, "%1 has been deleted from project.  Item moved to project parent."},
        {41028, "%1 is now a summary item and has entries.  These entries will not be updated "
                "in the project."},
        {41029, "Imported Project Entry"},
        {41030, "Updated %i of %i Tasks."},
        {41031, "Updated %i of %i Tasks."},
        {41032, "Updating Tasks from Project"},
        {41033, "Updating Tasks in Project"},
        {41035, "This file appears to be a different one that was originally imported.  "
                "Continue?"},
        {41036, "The Project was not found in the previous location.  Would you like to look "
                "for the file?"},
        {kCancelQuestion, "Are you sure you want to Cancel?"},
    };
    auto it = table.find(id);
    return it != table.end() ? std::string(it->second) : platform::LoadString(id);
}

std::string HexCode(int32_t code)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", unsigned(uint32_t(code)));
    return text;
}

} // namespace projectlink
