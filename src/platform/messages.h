#pragma once

#include <string>

namespace platform
{

// The system's numbered texts (messages, questions, labels), looked up by number.
// Unknown numbers give an empty text.
std::string LoadString(unsigned id);

// Replaces "%1", "%2", ... in a text.
std::string FormatMessage(const std::string& text, const std::string& arg1,
                          const std::string& arg2 = std::string());

// printf-style "%s" / "%u" / "%d" substitution of the numbered texts that use them.
std::string FormatPrintf(const char* picture, const std::string& arg);

} // namespace platform
