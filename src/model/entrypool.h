#pragma once

#include <cstddef>

// Storage for the entry and day records. A large document holds millions of small entries;
// carving them out of big chunks (advised for huge pages) instead of asking the heap
// for each one makes reading such a document several times faster. Freed slots are
// reused for later entries; the chunks themselves are kept for the life of the process.
namespace entrypool
{
void* Allocate(std::size_t size);
void Release(void* p, std::size_t size) noexcept;
} // namespace entrypool
