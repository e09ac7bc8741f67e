#include "cli/checkedoutput.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace cli
{

CheckedOutput::CheckedOutput(int fd) : m_fd(fd), m_lineBuffered(::isatty(fd) == 1)
{
    setp(m_buffer, m_buffer + sizeof m_buffer);
}

CheckedOutput::~CheckedOutput()
{
    if (!m_finished)
        Drain();
}

void CheckedOutput::WriteOut(const char* data, size_t size)
{
    while (size > 0 && m_error == 0)
    {
        const ssize_t n = ::write(m_fd, data, size);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
        {
            m_error = n < 0 ? errno : EIO;
            return;
        }
        data += n;
        size -= size_t(n);
    }
}

bool CheckedOutput::Drain()
{
    WriteOut(pbase(), size_t(pptr() - pbase()));
    setp(m_buffer, m_buffer + sizeof m_buffer);
    return m_error == 0;
}

CheckedOutput::int_type CheckedOutput::overflow(int_type c)
{
    if (!Drain())
        return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof()))
    {
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
        if (m_lineBuffered && c == '\n')
            Drain();
    }
    return m_error == 0 ? traits_type::not_eof(c) : traits_type::eof();
}

std::streamsize CheckedOutput::xsputn(const char* data, std::streamsize size)
{
    if (m_error != 0)
        return 0;
    const size_t n = size_t(size);
    if (n <= size_t(epptr() - pptr()))
    {
        std::memcpy(pptr(), data, n);
        pbump(int(n));
    }
    else
    {
        Drain();
        WriteOut(data, n);
    }
    if (m_lineBuffered && std::memchr(data, '\n', n))
        Drain();
    return m_error == 0 ? size : 0;
}

int CheckedOutput::sync()
{
    return Drain() ? 0 : -1;
}

int CheckedOutput::Finish()
{
    Drain();
    m_finished = true;
    if (::close(m_fd) != 0 && m_error == 0 && errno != EINTR)
        m_error = errno;
    return m_error;
}

void GuardStandardDescriptors()
{
    for (int fd = 0; fd <= 2; ++fd)
    {
        if (::fcntl(fd, F_GETFD) != -1 || errno != EBADF)
            continue;
        // open() takes the lowest free number, which is this one: the lower ones are open.
        const int standIn = ::open("/dev/null", fd == 2 ? O_WRONLY : O_RDONLY);
        if (standIn >= 0 && standIn != fd)
        {
            ::dup2(standIn, fd);
            ::close(standIn);
        }
    }
}

int RunWithCheckedOutput(const char* program, int (*run)(int, char**), int argc, char** argv)
{
    GuardStandardDescriptors();
    CheckedOutput output(STDOUT_FILENO);
    std::streambuf* const previous = std::cout.rdbuf(&output);
    int status = run(argc, argv);
    std::cout.rdbuf(previous);
    const int error = output.Finish();
    if (error != 0 && status == 0)
    {
        std::cerr << program << ": cannot write to standard output: " << std::strerror(error)
                  << "\n";
        status = 1;
    }
    return status;
}

} // namespace cli
