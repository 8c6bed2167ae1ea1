// Bump allocation from a borrowed block. Under AddressSanitizer what is not handed out is poisoned, with a
// gap behind each allocation, so that it sees into the pool as it sees into the heap.
#include "media/h264/pool.h"

#include "foundation/log.h"

#if defined(__SANITIZE_ADDRESS__)
#define WALLSLATE_POOL_POISON 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define WALLSLATE_POOL_POISON 1
#endif
#endif

#ifdef WALLSLATE_POOL_POISON
#include <sanitizer/asan_interface.h>
#endif

namespace h264 {

namespace {

constexpr u32 Alignment = 8; // of every allocation; pictures align themselves further

constexpr const char* Tag = "Ch264VideoDecoder::nH264malloc";

#ifdef WALLSLATE_POOL_POISON
constexpr u32 Gap = 32;
void Poison(const u8* from, u32 size) {
    __asan_poison_memory_region(from, size);
}
void Unpoison(const u8* from, u32 size) {
    __asan_unpoison_memory_region(from, size);
}
#else
constexpr u32 Gap = 0;
void Poison(const u8*, u32) {
}
void Unpoison(const u8*, u32) {
}
#endif

} // namespace

Pool::~Pool() {
    Unpoison(poolBase, poolSize);
}

void Pool::Attach(u8* base, u32 size) {
    Unpoison(poolBase, poolSize);
    poolBase = base;
    poolSize = base != nullptr ? size : 0;
    RewindTo(0);
}

void* Pool::nH264malloc(u32 size, PoolId id) {
    const u64 start = (u64{poolUsed} + Alignment - 1) / Alignment * Alignment;
    if (start + size + Gap > poolSize) {
        Log(LogError, Tag, "%d: out of memory %d (%d/%d)", static_cast<int>(id), static_cast<int>(size),
            static_cast<int>(poolUsed), static_cast<int>(poolSize));
        return nullptr;
    }
    u8* const result = poolBase + start;
    Unpoison(result, size);
    poolUsed = static_cast<u32>(start + size + Gap);
    Log(LogState, Tag, "%d: malloc %p %d (%d/%d)", static_cast<int>(id), static_cast<void*>(result),
        static_cast<int>(size), static_cast<int>(poolUsed), static_cast<int>(poolSize));
    return result;
}

void Pool::RewindTo(u32 mark) {
    poolUsed = mark;
    Poison(poolBase + mark, poolSize - mark);
}

} // namespace h264
