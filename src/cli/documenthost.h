#pragma once

#include <string>

class CTimeKeeperApp;
class CTimeKeeperDoc;

namespace cli
{

// A program that keeps a document open and runs qvx command lines on it in-process (the
// desktop program). While a HostScope is alive, a command that names the host's file works
// on the open document instead of opening the file, with the host's settings and clock, and
// no question is ever asked on a terminal. One command line at a time, on the host's thread.
struct DocumentHost
{
    CTimeKeeperDoc& doc;
    CTimeKeeperApp& app;
    // Absolute path of the document, links resolved.
    std::string path;
};

class HostScope
{
public:
    explicit HostScope(DocumentHost& host);
    ~HostScope();
    HostScope(const HostScope&) = delete;
    HostScope& operator=(const HostScope&) = delete;

private:
    DocumentHost* m_previous;
};

// The host of the running command line, or nullptr.
DocumentHost* CurrentHost();
// The host when `path` names its document, else nullptr.
DocumentHost* HostFor(const std::string& path);
// Absolute path with links resolved; the path made absolute when it does not exist.
std::string CanonicalPath(const std::string& path);
// A program holding a document offers it on the session bus, so that qvx can find it.
inline constexpr const char* kBusName = "org.halvery.Quorvane";
inline constexpr const char* kInstanceNamePrefix = "org.halvery.Quorvane.Instance";
inline constexpr const char* kDocumentInterface = "org.halvery.Quorvane.Document";
inline constexpr const char* kDocumentPathPrefix = "/org/halvery/Quorvane/Document/";
// How long qvx waits for a program that holds the document: to say which file it holds,
// and to run a command line.
inline constexpr int kLookupTimeoutMs = 2000;
inline constexpr int kRunTimeoutMs = 4000;

// The object path of the document at `canonicalPath` ("/org/halvery/Quorvane/Document/d"
// and 16 hex digits of a hash of the path), the same in qvx and in the program.
std::string DocumentObjectPath(const std::string& canonicalPath);

// A question may be asked on the terminal: standard input is one and no host runs the command.
bool CanAskOnTerminal();

} // namespace cli
