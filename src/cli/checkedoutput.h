#pragma once

#include <streambuf>
#include <string>

namespace cli
{

// Standard output that notices when it cannot be written. It stands in for std::cout's
// buffer for the whole run, writes straight to the descriptor, remembers the first
// failure (a full disk, a closed descriptor) and drops what comes after it, so that the
// run can end with one error line and exit status 1 instead of a silent success.
class CheckedOutput : public std::streambuf
{
public:
    explicit CheckedOutput(int fd);
    ~CheckedOutput() override;
    CheckedOutput(const CheckedOutput&) = delete;
    CheckedOutput& operator=(const CheckedOutput&) = delete;

    // Writes what is buffered and closes the descriptor (its last chance to report a
    // failure). Returns the errno value of the first failure, 0 when all went out.
    int Finish();

protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* data, std::streamsize size) override;
    int sync() override;

private:
    bool Drain();
    void WriteOut(const char* data, size_t size);

    int m_fd;
    int m_error = 0;
    bool m_lineBuffered = false;
    bool m_finished = false;
    char m_buffer[1 << 14];
};

// Gives each of the standard descriptors 0, 1 and 2 that is closed a stand-in, so that a
// file the command opens never takes the number of standard output and receives its text.
// A stand-in for standard output refuses writes (EBADF): they fail as they would have.
void GuardStandardDescriptors();

// Runs a whole qvx invocation with standard output checked: `run` gives the exit status;
// a failed write of its output turns success into one error line (naming `program`) and 1.
int RunWithCheckedOutput(const char* program, int (*run)(int, char**), int argc, char** argv);

} // namespace cli
