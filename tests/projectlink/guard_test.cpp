#include "fakes.h"
#include "projectlink/guardedcomponent.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace
{

using namespace projectlink;

// A plan whose reading throws where a component with a bug, or without memory, would.
class ThrowingComponent : public qvtest::FakeComponent
{
public:
    HRESULT Open(const std::string&, bool) override { throw std::bad_alloc(); }
    HRESULT GetTaskCount(int32_t&) override { throw std::runtime_error("outline level -3"); }
    HRESULT GetProjectName(std::string&) override { throw 42; }
};

TEST(GuardedComponent, ThrownExceptionsBecomeFailuresWithADescription)
{
    auto inner = std::make_unique<ThrowingComponent>();
    inner->tasks.push_back({1, 0, "Design"});
    inner->failTaskIndex = 2;
    CGuardedComponent guarded(std::move(inner));

    EXPECT_EQ(guarded.Open("plan.xml", true), E_FAIL);
    EXPECT_EQ(guarded.ErrorDescription(), "The project component ran out of memory.");
    int32_t count = 0;
    EXPECT_EQ(guarded.GetTaskCount(count), E_FAIL);
    EXPECT_EQ(guarded.ErrorDescription(), "The project component failed: outline level -3");
    std::string name;
    EXPECT_EQ(guarded.GetProjectName(name), E_FAIL);
    EXPECT_EQ(guarded.ErrorDescription(), "The project component failed.");

    // Calls that return pass their results and the component's own description through.
    int32_t id = 0, parent = 0, todo = 0;
    std::string second;
    double work = 0, cost = 0, date = 0;
    EXPECT_EQ(guarded.GetTask(1, 0, id, parent, name, second, todo, work, cost, date), S_OK);
    EXPECT_EQ(name, "Design");
    EXPECT_EQ(guarded.GetTask(2, 0, id, parent, name, second, todo, work, cost, date), E_FAIL);
    EXPECT_EQ(guarded.ErrorDescription(), "Task 2 is unreadable.");
}

} // namespace
