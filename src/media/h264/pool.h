// The one memory of the decoder: a fixed block that is handed out from front to back and freed only as a
// whole. The block itself belongs to whoever attached it.
#pragma once

#include "media/h264/types.h"

namespace h264 {

// Names of the allocations, for the log only.
enum class PoolId : u32 {
    SeqParamSet = 1,
    OffsetForRefFrame = 2,
    PicParamSet = 3,
    SliceGroupId = 4,
    Macroblocks = 10,
    SliceMap = 11,
    PictureTable = 12,
    PictureBuffer = 13,
    RefList = 14,
    OutputList = 15,
    MacroblockWorkArea = 50
};

class Pool {
public:
    Pool() = default;
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    ~Pool();

    // Borrows `size` bytes at `base` (aligned to 16) and starts empty. The block must outlive the pool, or
    // another Attach.
    void Attach(u8* base, u32 size);

    // The next `size` bytes, aligned to 8, or null when they do not fit. `id` is for the log.
    void* nH264malloc(u32 size, PoolId id);

    u32 Used() const { return poolUsed; }
    u32 Size() const { return poolSize; }

    // Takes back everything that was handed out since `Used()` was `mark`; for an attempt that failed
    // half-way and that nobody points into.
    void RewindTo(u32 mark);

private:
    u8* poolBase = nullptr; // borrowed
    u32 poolSize = 0;       // bytes
    u32 poolUsed = 0;       // bytes
};

// An array in the pool that keeps its place when it is filled again, so that what a stream repeats for ever
// costs its memory once. It only grows; the old place is lost to the pool then.
template <class T>
struct PoolArray {
    T* data = nullptr;
    u32 capacity = 0; // elements

    // Makes room for `count` elements, whose content is undefined. False leaves the array as it was.
    bool Reserve(Pool& pool, u32 count, PoolId id) {
        if (count <= capacity)
            return true;
        if (count > UINT32_MAX / sizeof(T))
            return false;
        void* fresh = pool.nH264malloc(static_cast<u32>(count * sizeof(T)), id);
        if (fresh == nullptr)
            return false;
        data = static_cast<T*>(fresh);
        capacity = count;
        return true;
    }

    T& operator[](size_t index) { return data[index]; }
    const T& operator[](size_t index) const { return data[index]; }
};

} // namespace h264
