#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CReport;
class CTimeKeeperDoc;
class CTimeKeeperApp;

namespace reports
{

// Names of a report's choices for a command line: keywords ("time-detail",
// "current-week", "billing-rate") and the labels the program shows. Parsers take
// a keyword or a label, ignoring case; a refusal names what is accepted.

// "Time Detail", ..., "Time & Expense Summary" (the wizard's labels), empty when unknown.
std::string KindLabel(uint32_t kind);
std::string KindKeyword(uint32_t kind);
std::optional<uint32_t> ParseKind(std::string_view text);
std::string AcceptedKinds();

std::string PresetKeyword(uint32_t preset);
std::optional<uint32_t> ParsePreset(std::string_view text);
std::string AcceptedPresets();

// "Total", "Year", "Month", "Week", "Day" for the codes 0 to 4.
std::string TimeFrameLabel(uint32_t timeFrame);
std::optional<uint32_t> ParseTimeFrame(std::string_view text);
std::string AcceptedTimeFrames();

// One optional column of a kind.
struct FieldInfo
{
    std::string keyword;
    std::string label;
    uint32_t mask = 0;
};

// The optional columns of a kind, in the order of its "Additional Fields" page; the
// mileage column is labelled by the distance unit when an application is given.
std::vector<FieldInfo> FieldsOfKind(uint32_t kind, const CTimeKeeperApp* app = nullptr);
// Every field bit of the kind's family (reports made from a list page start so).
uint32_t AllFieldsOfKind(uint32_t kind);
// A comma-separated list of field keywords or labels ("all" for every one, empty
// for none) to field flags.
bool ParseFieldList(uint32_t kind, std::string_view list, uint32_t& flags, std::string& error);

// The grouping codes a kind offers besides task levels.
std::vector<int32_t> GroupingsOfKind(uint32_t kind);
std::string GroupingKeyword(int32_t code);
// A summarize level: a task level number or name, or one of the kind's groupings.
bool ParseSummarize(uint32_t kind, std::string_view text, const CTimeKeeperDoc& doc, int32_t& level,
                    std::string& error);
// The level's name, or the grouping's label ("Activity", "Task ID", ...).
std::string SummarizeLabel(int32_t level, const CTimeKeeperDoc& doc);

// Defaults of a new definition that come from the settings: the invoice terms and
// tax rate.
void InitNewReport(CReport& report, const CTimeKeeperApp& app);

// A detail report made straight from the time, expense or to-do list: named after
// its kind ("Time Detail Report", ...) and showing every optional column.
void InitListReport(CReport& report);

// What the wizard refuses to finish with: an empty name, missing or reversed custom
// dates. Empty when the definition is acceptable, else the program's message.
std::string CheckReport(const CReport& report);

} // namespace reports
