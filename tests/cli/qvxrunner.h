#pragma once

#include "platform/scratchdir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdint>
#include <string>
#include <sys/resource.h>
#include <sys/types.h>
#include <vector>

namespace qvtest
{

using Json = nlohmann::json;

struct QvxResult
{
    int exitCode = -1;
    std::string out;
    std::string err;
    // The lines written to stderr.
    std::vector<std::string> ErrLines() const;
};

// How a started qvx is set up beyond its arguments.
struct Surroundings
{
    std::string now = "2024-06-11 12:00"; // "YYYY-MM-DD HH:MM[:SS]"; empty leaves the clock running
    bool closeStdout = false;
    std::string stdoutPath; // empty: a file of its own beside the error file
    rlim_t fileSizeLimit = RLIM_INFINITY;
};

// Runs the built qvx in a scratch folder of its own: its settings file lives there
// ($XDG_CONFIG_HOME), the locale is en_US.UTF-8, standard input is not a terminal, and
// the clock stands at the moment given.
class QvxTest : public ::testing::Test
{
protected:
    void SetUp() override;

    QvxResult Run(const std::vector<std::string>& args,
                  const std::string& now = "2024-06-11 12:00");
    // Runs and expects exit code 0; returns stdout.
    std::string Ok(const std::vector<std::string>& args,
                   const std::string& now = "2024-06-11 12:00");
    Json DumpJson(const std::string& file);

    // Starts qvx without waiting for it; its output goes to the files "<tag>.out" and
    // "<tag>.err" beside the scratch folder's documents.
    pid_t Start(const std::vector<std::string>& args, const std::string& tag,
                const Surroundings& how = {});
    // Waits for a started qvx, at most `limit`: one that outlives it is killed and fails
    // the test, so that a hang shows as a failure rather than a stuck test run.
    QvxResult Finish(pid_t pid, const std::string& tag,
                     std::chrono::seconds limit = std::chrono::seconds(120));

    std::string Path(const std::string& name) const { return m_dir + "/" + name; }
    // Replaces the user's settings file with these lines of the "Settings" section.
    void WriteSettings(const std::vector<std::string>& settingsLines);
    std::vector<uint8_t> ReadBytes(const std::string& file) const;
    void WriteBytes(const std::string& file, const std::vector<uint8_t>& bytes) const;

    ScratchDir m_scratch;
    std::string m_dir;
};

// Readers of `qvx dump --json`.
const Json* FindDay(const Json& dump, const std::string& key);
// "3 09:00-10:15" (task id, start, end) for each time entry of the day; a running entry
// ends in "-".
std::vector<std::string> Spans(const Json& dump, const std::string& key);
bool HasTask(const Json& dump, const std::string& name);

} // namespace qvtest
