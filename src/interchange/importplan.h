#pragma once

#include "model/datetime.h"
#include "model/tinytime.h"

#include <cstdint>
#include <string>
#include <vector>

class CTimeKeeperDoc;

namespace interchange
{

// What an import will make in a document, worked out before anything changes: the tasks
// and activities to add, the entries and to-dos to file, what is skipped and why, and
// which new entries overlap others. A preview shows it; ApplyImport makes it in one step.
class CImportPlan
{
public:
    // A task of the document (by id) or one the plan adds (by its index in Tasks()).
    struct TaskRef
    {
        uint32_t id = 0;
        int newIndex = -1;
        bool IsNew() const { return newIndex >= 0; }
    };
    struct NewTask
    {
        TaskRef parent;
        std::string name;
        uint16_t level = 0;
        std::string path; // display path from the top task down
    };
    struct TimeItem
    {
        TaskRef task;
        CDateTime date;
        CTinyTime start;
        CTinyTime end; // null: the running entry
        std::string note;
        uint32_t activityId = 0; // an activity of the document, 0 none
        int newActivity = -1;    // else an index in Activities()
        std::string where;
        std::string overlaps; // what the entry overlaps; empty when nothing
    };
    struct ToDoItem
    {
        TaskRef task;
        std::string description;
        std::string note;
        std::string priority;
        CDateTime due;
        CDateTime completed; // null: outstanding
        std::string where;
    };
    struct SkipGroup
    {
        std::string reason;
        std::vector<std::string> wheres;
    };

    const std::string& Format() const { return m_format; }
    const std::vector<std::string>& Details() const { return m_details; }
    const std::vector<NewTask>& Tasks() const { return m_tasks; }
    const std::vector<std::string>& Activities() const { return m_activities; }
    const std::vector<TimeItem>& Times() const { return m_times; }
    const std::vector<ToDoItem>& ToDos() const { return m_todos; }
    // Skipped items grouped by reason, in the order the reasons first came up.
    const std::vector<SkipGroup>& Skipped() const { return m_skipped; }
    size_t SkippedCount() const;
    // New entries that overlap entries of the document or earlier ones of the import.
    size_t OverlapCount() const;
    // Nothing would change.
    bool IsEmpty() const { return m_tasks.empty() && m_activities.empty() && m_times.empty() && m_todos.empty(); }
    // Display path of a task of the plan or of `doc`.
    std::string TaskPath(const TaskRef& task, const CTimeKeeperDoc& doc) const;

    // Building (the planner).
    void SetFormat(std::string format) { m_format = std::move(format); }
    void AddDetail(std::string line) { m_details.push_back(std::move(line)); }
    TaskRef AddTask(NewTask task);
    int AddActivity(std::string name);
    void AddTime(TimeItem item) { m_times.push_back(std::move(item)); }
    void AddToDo(ToDoItem item) { m_todos.push_back(std::move(item)); }
    void Skip(const std::string& where, const std::string& reason);
    void ReserveTimes(size_t count) { m_times.reserve(count); }

private:
    std::string m_format;
    std::vector<std::string> m_details;
    std::vector<NewTask> m_tasks;
    std::vector<std::string> m_activities;
    std::vector<TimeItem> m_times;
    std::vector<ToDoItem> m_todos;
    std::vector<SkipGroup> m_skipped;
};

} // namespace interchange
