// Bump allocation from a borrowed block.
#include "media/h264/pool.h"

#include "media/h264/log.h"

namespace h264 {

namespace {

constexpr u32 Alignment = 8; // of every allocation; pictures align themselves further

constexpr const char* Tag = "Ch264VideoDecoder::nH264malloc";

} // namespace

void Pool::Attach(u8* base, u32 size) {
    poolBase = base;
    poolSize = base != nullptr ? size : 0;
    poolUsed = 0;
}

void* Pool::nH264malloc(u32 size, PoolId id) {
    const u64 start = (u64{poolUsed} + Alignment - 1) / Alignment * Alignment;
    if (start + size > poolSize) {
        Log(LogError, Tag, "%d: out of memory %d (%d/%d)", static_cast<int>(id), static_cast<int>(size),
            static_cast<int>(poolUsed), static_cast<int>(poolSize));
        return nullptr;
    }
    void* result = poolBase + start;
    poolUsed = static_cast<u32>(start + size);
    Log(LogLifeCycle, Tag, "%d: malloc %p %d (%d/%d)", static_cast<int>(id), result, static_cast<int>(size),
        static_cast<int>(poolUsed), static_cast<int>(poolSize));
    return result;
}

} // namespace h264
