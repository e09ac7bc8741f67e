#pragma once

// Record bodies and document heads of the file layouts before version 11, assembled
// value by value (for reader tests and fuzz seeds).

#include "model/archive.h"
#include "model/timekeeperdoc.h"
#include "support/testsupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace oldlayout
{
using qvtest::StreamBuilder;

// Reads one object of `className` from the whole stream.
template <class T> std::unique_ptr<T> ReadOne(const StreamBuilder& b, const char* className)
{
    CArchive ar(b.Data().data(), b.Size(), &CTimeKeeperDoc::CreateRecord);
    std::unique_ptr<T> record = ar.ReadObjectOf<T>(className);
    EXPECT_TRUE(ar.AtEnd()) << "bytes left after the " << className;
    return record;
}

// A task of versions 5 to 8 (5 and 6 keep the rate as f32).
inline void Task(StreamBuilder& b, uint32_t version, uint32_t id, uint32_t parentId,
                 const std::string& name, uint32_t level, double rate = 25.0,
                 uint32_t lastActivity = 0)
{
    b.Object("CTask").U32(version).U32(id).U32(parentId).Text(name).U32(level).Text("");
    b.U32(1); // billable
    if (version >= 7)
        b.F64(rate);
    else
        b.F32(float(rate));
    b.U32(id == 1 ? 0 : 1).Text(id == 1 ? "EMP" : "").U32(id == 1 ? 0 : 1).U32(1);
    b.U32(7).U32(9).Text("last note").U32(lastActivity);
}

// A task of versions 5 to 8 with the billing, task ID and flags given: these layouts
// store the values whatever the flags say.
inline void TaskWithFlags(StreamBuilder& b, uint32_t version, uint32_t id, uint32_t parentId,
                          const std::string& name, uint32_t level, bool billable, double rate,
                          bool useParentBilling, const std::string& taskId, bool useParentTaskId)
{
    b.Object("CTask").U32(version).U32(id).U32(parentId).Text(name).U32(level).Text("");
    b.U32(billable);
    if (version >= 7)
        b.F64(rate);
    else
        b.F32(float(rate));
    b.U32(useParentBilling).Text(taskId).U32(useParentTaskId).U32(0);
    b.U32(0).U32(0).Text("").U32(0);
}

// A task of versions 9 to 11 that inherits billing, task ID and contact and has no project.
inline void InheritingTask(StreamBuilder& b, uint32_t version, uint32_t id, uint32_t parentId,
                           const std::string& name, uint16_t level)
{
    b.Object("CTask").U32(version).U32(id).U32(parentId).Text(name).U16(level).Text("");
    b.U32(1).U32(1).U32(0).U32(0).U32(0).Text("").U32(0).U32(0).U32(1).U32(0);
    b.F64(0.0).F64(0.0);
    if (version >= 10)
        b.Text("");
    b.U32(0); // no activity rates
}

// A time entry of versions 5 to 8: moments as seconds since 1970.
inline void TimeEntry(StreamBuilder& b, uint32_t version, uint32_t taskId, uint32_t start,
                      uint32_t end, const std::string& note = "", uint32_t activity = 0)
{
    b.Object("CTimeEntry").U32(version).U32(taskId).OldDate(start).OldDate(end).Text(note).U32(activity);
}

// An expense entry of versions 5 to 8 (5 and 6 keep the amount as f32).
inline void Expense(StreamBuilder& b, uint32_t version, uint32_t taskId, uint32_t date, double amount)
{
    b.Object("CExpenseEntry").U32(version).U32(taskId).OldDate(date);
    if (version >= 7)
        b.F64(amount);
    else
        b.F32(float(amount));
    b.Text("note").U32(9).U32(1).U32(uint32_t(-1)).U32(42).F32(12.5f);
}

// A to-do entry of versions 6 to 8: dates as seconds, 0 for none, no imported flag.
inline void ToDo(StreamBuilder& b, uint32_t version, uint32_t taskId, const std::string& description,
                 uint32_t complete, uint32_t due)
{
    b.Object("CToDoEntry").U32(version).U32(taskId).Text(description).Text("").Text("3");
    b.OldDate(complete).OldDate(due);
}

// The head of a document of versions 5 to 8, up to the tasks.
inline void DocumentHead(StreamBuilder& b, uint32_t version, uint32_t lastTaskId, uint32_t tasks,
                         uint32_t days, uint32_t reports = 0)
{
    b.U32(version).OldDate(0);
    b.U32(lastTaskId).U32(tasks).U32(reports).U32(14).U32(0).U32(reports).U32(days);
    b.F64(0.0).F32(0.31f).IdArray({2, 1}).F64(0.0);
}

// The head of a document of versions 9 to 11, up to the tasks (no contacts or projects).
inline void CurrentHead(StreamBuilder& b, uint32_t version, uint32_t lastTaskId, uint32_t tasks,
                        uint32_t days)
{
    b.U32(version).U32(0).NullDate().U32(lastTaskId).U32(tasks);
    b.U32(0).U32(0).U32(0).U32(0).U32(0).U32(0).U32(0).U32(days);
    b.F64(0.0).F32(0.0f).IdArray({}).F64(0.0);
    b.U32(0).U32(0);
}

// What follows the days in a current document with no catalogs, up to the to-do count.
inline void CurrentTail(StreamBuilder& b) { b.U32(0).U32(0).U32(0).U32(0); }
} // namespace oldlayout
