// Loads a document from arbitrary bytes, the way opening a file does.
//
// Any input must either load or fail with a message: no crash, no undefined behaviour,
// no leak, no hang. What loads must save, and the saved bytes must load again and save
// to the very same bytes: a value the reader accepts but the writer cannot reproduce
// would change a user's file on its first save.

#include "model/timekeeperdoc.h"
#include "platform/prompter.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{

// Converting an older layout is answered with yes, so that the converters run too.
class FuzzPrompter : public platform::Prompter
{
public:
    void ShowMessage(const std::string&, platform::Icon) override {}
    platform::Answer AskYesNo(const std::string&, platform::Icon) override { return platform::Answer::yes; }
    platform::Answer AskYesNoCancel(const std::string&, platform::Icon) override { return platform::Answer::yes; }
};

void Check(bool condition, const char* what, const std::string& detail = std::string())
{
    if (condition)
        return;
    std::fprintf(stderr, "fuzz_load: %s%s%s\n", what, detail.empty() ? "" : ": ", detail.c_str());
    std::abort();
}

// A stand-in for the rounded current time, so that running entries do not depend on
// the clock.
CDateTime FixedNow() { return CDateTime::FromDate(2024, 3, 15, 12, 0); }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzPrompter prompter;
    CTimeKeeperDoc doc;
    doc.m_roundedNow = FixedNow;
    const LoadResult result = doc.LoadFromBytes(data, size, prompter);
    if (result.status != LoadResult::loaded)
    {
        Check(doc.m_tasks.empty() && doc.m_days.empty(), "a failed load left records behind");
        Check(result.status != LoadResult::failed || !result.error.empty(), "a failed load gave no reason");
        return 0;
    }
    Check(doc.GetRootTask() != nullptr, "a loaded document has no root task");

    const std::vector<uint8_t> saved = doc.SaveToBytes();
    CTimeKeeperDoc again;
    again.m_roundedNow = FixedNow;
    const LoadResult reread = again.LoadFromBytes(saved.data(), saved.size(), prompter);
    Check(reread.status == LoadResult::loaded, "a saved document does not load", reread.error);
    Check(again.SaveToBytes() == saved, "a saved document does not save to the same bytes");
    return 0;
}
