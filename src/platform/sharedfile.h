#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace platform
{

// An open document file shared between running copies of the program.
// (Interface completed by the shared-file work.)
class SharedFile
{
public:
    virtual ~SharedFile() = default;
};

} // namespace platform
