#include "platform/messages.h"

#include <unordered_map>

namespace platform
{

namespace
{
const std::unordered_map<unsigned, const char*>& Table()
{
    static const std::unordered_map<unsigned, const char*> table = {
        {100, "OLE initialization failed.  Make sure that the OLE libraries are the correct version."},
        {142, "Tips file does not exist in the prescribed directory"},
        {151, "Trouble reading the tips file"},
        {38000, "1 Minute"},
        {38001, "3 Minutes"},
        {38002, "5 Minutes"},
        {38003, "10 Minutes"},
        {38004, "15 Minutes"},
        {38005, "30 Minutes"},
        {38006, "1 Hour"},
        {38007, "6 Minutes"},
        {40001, "The End Time must be later than the Start Time."},
        {40002, "Due to rounding of the active time entry, it has the same start and end time. "
                "Would you like to delete it?\n\nAnswering 'No' will round the end time to the "
                "nearest minute."},
        {40003, "Select the type for the report."},
        {40006, "Select a time frame to summarize this report by."},
        {40007, "Select a task level to summarize this report by."},
        {40008, "Enter a name for this report."},
        {40009, "The Start Time must be before the current time on an active task."},
        {40011, "Cannot move Task: The destination task is a sub task of the source task"},
        {40012, "Cannot move Task: The destination task level is not above the source task level."},
        {40014, "Enter a To Do Description."},
        {40015, "Enter a start date."},
        {40016, "Enter an end date."},
        {40017, "Start date must be on or before end date."},
        {40018, "Invalid Date."},
        {40019, "A name is required for contact."},
        {40021, "Error %1 retrieving Project Management interfaces."},
        {40022, "Select a task."},
        {40025, "Cannot move Task:  The destination task was imported from a project."},
        {40026, "Cannot move Task:  The source task was imported from a project."},
        {40027, "Cannot add entry:  The task is a project summary task."},
        {40028, "Cannot move To Do entry:  The entry was imported from a project."},
        {40029, "This file was created with a newer version of Quorvane Time & Expense.  It "
                "cannot be loaded with this version."},
        {40030, "Error %1 accessing Registry - %2."},
        {40031, "Error initializing project management interface %1."},
        {40032, "Cannot delete task.  There is a project task below it in the task hierarchy."},
        {40033, "Cannot move entry:  The destination task is a project summary task."},
        {41003, "Are you sure you want to delete the "},
        {41004, " and all its sub tasks?"},
        {41005, "Task has entries.  Would you like to roll up all entries to the "},
        {41006, "?\n\nAnswering No will delete all entries."},
        {41008, "Are you sure you want to delete the selected Time Entry?"},
        {41009, "Are you sure you want to delete the selected Expense Entry?"},
        {41010, "Are you sure you want to delete the activity "},
        {41011, "Are you sure you want to delete the expense type "},
        {41012, "Are you sure you want to delete the payment method "},
        {41013, "\n\nThe payment method for all expense entries using "},
        {41014, " will become unassigned. "},
        {41015, "\n\nThe activity for all time entries using "},
        {41016, "\n\nThe expense type for all expense entries using "},
        {41017, "Are you sure you want to delete the selected To Do Entry?"},
        {41018, "This file was created with an older version of Quorvane Time & Expense.  Loading "
                "it will automatically convert it to the new format.  Would you like to continue "
                "loading?"},
        {41019, "Are you sure you want to delete the selected Time Entries?"},
        {41020, "Are you sure you want to delete the selected Expense Entries?"},
        {41021, "Are you sure you want to delete the selected To Do Entries?"},
        {41022, "Are you sure you want to delete the selected reports?"},
        {41024, "This expense item will always be used for mileage calculation even if you change "
                "the name.\n\nDo you still want to edit this expense type?"},
        {41025, "Are you sure you want to delete the contact - %1?"},
        {41026, "Are you sure you want to delete the project - %1?"},
        {41037, "This invoice is set to use the next invoice number, but it already has one.  "
                "Would you like to replace the current invoice number with the next invoice "
                "number?"},
        {42000, "Timer Inactive"},
        {42001, "Pa&use Timer\tCtrl+U"},
        {42002, "Res&ume Timer\tCtrl+U"},
        {42003, "Paused"},
        {43000, "CSV (Comma Delimited) (*.csv)|*.csv;|HTML (Hypertext Markup Language)(*.htm)|"
                "*.htm;|Tab Delimited (*.tab)|*.tab;||"},
        {43001, "Quorvane Time & Expense File (*.qvx)|*.qvx;||"},
    };
    return table;
}
} // namespace

std::string LoadString(unsigned id)
{
    const auto& table = Table();
    auto it = table.find(id);
    return it == table.end() ? std::string() : std::string(it->second);
}

std::string FormatMessage(const std::string& text, const std::string& arg1, const std::string& arg2)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] == '%' && i + 1 < text.size() && (text[i + 1] == '1' || text[i + 1] == '2'))
        {
            out += text[i + 1] == '1' ? arg1 : arg2;
            ++i;
        }
        else
            out += text[i];
    }
    return out;
}

std::string FormatPrintf(const char* picture, const std::string& arg)
{
    std::string out;
    for (const char* p = picture; *p; ++p)
    {
        if (p[0] == '%' && (p[1] == 's' || p[1] == 'u' || p[1] == 'd'))
        {
            out += arg;
            ++p;
        }
        else
            out += *p;
    }
    return out;
}

} // namespace platform
