#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace cli
{

// A command-line mistake: reported as one line on stderr, exit code 2.
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// A failure of the command itself (file unreadable, refusal): one line, exit code 1.
class CommandError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Positional arguments and "--name value" / "--flag" options of one command.
class Args
{
public:
    // `flags` are the options that take no value; every other "--name" takes one.
    Args(const std::vector<std::string>& argv, const std::vector<std::string>& flags);

    size_t Count() const { return m_positional.size(); }
    const std::string& At(size_t i, const char* what) const;
    std::optional<std::string> Option(const std::string& name) const;
    bool Flag(const std::string& name) const;
    // Fails on any option not in `known` (flags included).
    void Expect(size_t minPositional, size_t maxPositional,
                const std::vector<std::string>& known) const;
    const std::vector<std::string>& Positional() const { return m_positional; }

private:
    std::vector<std::string> m_positional;
    std::map<std::string, std::string> m_options;
    std::vector<std::string> m_flags;
};

// Parsers that refuse bad values with a message naming the option and the accepted form.
// A whole number: digits with an optional leading minus.
int ParseInt(const std::string& text, const char* what);
// Money, rates, estimates and multipliers: decimal notation only (digits with an optional
// leading minus and one point: "12.50", "-3", ".5"), below one trillion either way. No
// exponent, hexadecimal, infinity or not-a-number, no blanks and no thousands separators.
double ParseDouble(const std::string& text, const char* what);
// The same, and not below 0: rates, estimates, the mileage rate.
double ParseNonNegative(const std::string& text, const char* what);
// A distance in whole miles (or km), from 0 to kMaxDistance.
int ParseDistance(const std::string& text, const char* what);
bool ParseYesNo(const std::string& text, const char* what);
// qvx's --wait: whole or decimal seconds from 0 to one day.
std::chrono::milliseconds ParseWaitSeconds(const std::string& text);

} // namespace cli
