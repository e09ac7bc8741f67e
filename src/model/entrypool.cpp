#include "model/entrypool.h"

#include <cstdlib>
#include <mutex>
#include <new>
#include <vector>

#include <sys/mman.h>

#if defined(__SANITIZE_ADDRESS__)
#define QV_ENTRY_POOL 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
#define QV_ENTRY_POOL 0
#endif
#endif
#ifndef QV_ENTRY_POOL
#define QV_ENTRY_POOL 1
#endif

namespace entrypool
{
namespace
{
constexpr std::size_t kGranule = 16;
constexpr std::size_t kLargest = 256;
constexpr std::size_t kChunk = std::size_t(2) << 20;

struct SizeClass
{
    void* freeList = nullptr;
    char* next = nullptr;
    char* end = nullptr;
};

struct Pool
{
    std::mutex mutex;
    SizeClass classes[kLargest / kGranule + 1];
    std::vector<void*> chunks; // kept reachable: the pool never gives memory back
};

Pool& ThePool()
{
    // Never destroyed: entries of a document destroyed at exit may still come back.
    static Pool* pool = new Pool;
    return *pool;
}

void NewChunk(Pool& pool, SizeClass& c)
{
    void* chunk = std::aligned_alloc(kChunk, kChunk);
    if (!chunk)
        throw std::bad_alloc();
    madvise(chunk, kChunk, MADV_HUGEPAGE);
    pool.chunks.push_back(chunk);
    c.next = static_cast<char*>(chunk);
    c.end = c.next + kChunk;
}
} // namespace

void* Allocate(std::size_t size)
{
    if (!QV_ENTRY_POOL || size > kLargest)
        return ::operator new(size);
    const std::size_t slot = (size + kGranule - 1) & ~(kGranule - 1);
    Pool& pool = ThePool();
    SizeClass& c = pool.classes[slot / kGranule];
    std::lock_guard<std::mutex> lock(pool.mutex);
    if (c.freeList)
    {
        void* p = c.freeList;
        c.freeList = *static_cast<void**>(p);
        return p;
    }
    if (std::size_t(c.end - c.next) < slot)
        NewChunk(pool, c);
    void* p = c.next;
    c.next += slot;
    return p;
}

void Release(void* p, std::size_t size) noexcept
{
    if (!p)
        return;
    if (!QV_ENTRY_POOL || size > kLargest)
    {
        ::operator delete(p);
        return;
    }
    const std::size_t slot = (size + kGranule - 1) & ~(kGranule - 1);
    Pool& pool = ThePool();
    SizeClass& c = pool.classes[slot / kGranule];
    std::lock_guard<std::mutex> lock(pool.mutex);
    *static_cast<void**>(p) = c.freeList;
    c.freeList = p;
}
} // namespace entrypool
