#pragma once

#include "json.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace qvtest
{

struct QvxResult
{
    int exitCode = -1;
    std::string out;
    std::string err;
    // The lines written to stderr.
    std::vector<std::string> ErrLines() const;
};

// Runs the built qvx in a scratch folder of its own: its settings file lives there
// ($XDG_CONFIG_HOME), the locale is en_US.UTF-8, standard input is not a terminal, and
// the clock stands at the moment given to Run.
class QvxTest : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    // `now` is "YYYY-MM-DD HH:MM[:SS]"; empty leaves the clock running.
    QvxResult Run(const std::vector<std::string>& args,
                  const std::string& now = "2024-06-11 12:00");
    // Runs and expects exit code 0; returns stdout.
    std::string Ok(const std::vector<std::string>& args,
                   const std::string& now = "2024-06-11 12:00");
    Json DumpJson(const std::string& file);

    std::string Path(const std::string& name) const { return m_dir + "/" + name; }
    // Replaces the user's settings file with these lines of the "Settings" section.
    void WriteSettings(const std::vector<std::string>& settingsLines);
    std::vector<uint8_t> ReadBytes(const std::string& file) const;
    void WriteBytes(const std::string& file, const std::vector<uint8_t>& bytes) const;

    std::string m_dir;
};

} // namespace qvtest
