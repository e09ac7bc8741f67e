#pragma once

#include <cstdint>
#include <string>

namespace projectlink
{

// The numbered texts of the project link (the rest of the system's texts come from
// platform::LoadString, which this falls back to).
std::string ProjectString(unsigned id);

// "0x%X" of a result code.
std::string HexCode(int32_t code);

constexpr unsigned kCancelQuestion = 41038;

} // namespace projectlink
