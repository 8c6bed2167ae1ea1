// How the growing arrays get their memory: the one place that knows the steps, shared by CVrxPtrArray and
// VrArray.
//
// Invariant: all slots behind the size are zero bytes, so that growing within the capacity shows empty
// elements.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace foundation {

constexpr uint32_t kMinStep = 4;
constexpr uint32_t kMaxStep = 1024;
constexpr uint32_t kRounding = 16;

// growBy if it is set, else an eighth of the size within 4..1024.
inline uint32_t GrowthStep(uint32_t size, uint32_t growBy) {
    return growBy != 0 ? growBy : std::clamp(size / 8, kMinStep, kMaxStep);
}

// Untyped growing buffer: `size` of `capacity` slots of slotBytes bytes each are in use.
struct ArrayStorage {
    void* slots = nullptr;
    uint32_t size = 0;
    uint32_t capacity = 0;
    uint32_t growBy = 0; // 0 selects the automatic step

    void Free() {
        free(slots);
        *this = ArrayStorage{};
    }

    // Amortised constant time per added slot. On failure the array stays as it was.
    bool SetSize(uint32_t count, size_t slotBytes) {
        if (count == 0) {
            Free();
            return true;
        }
        if (count > capacity && !Grow(count, slotBytes))
            return false;
        if (count < size)
            memset(At(count, slotBytes), 0, size_t{size - count} * slotBytes);
        size = count;
        return true;
    }

    void RemoveAt(uint32_t index, size_t slotBytes) {
        if (index >= size)
            return;
        memmove(At(index, slotBytes), At(index + 1, slotBytes), size_t{size - index - 1} * slotBytes);
        size--;
        memset(At(size, slotBytes), 0, slotBytes);
    }

    bool CopyFrom(const ArrayStorage& other, size_t slotBytes) {
        Free();
        growBy = other.growBy;
        if (other.size == 0)
            return true;
        if (!SetSize(other.size, slotBytes))
            return false;
        memcpy(slots, other.slots, size_t{size} * slotBytes);
        return true;
    }

    void* At(uint32_t index, size_t slotBytes) const {
        return static_cast<char*>(slots) + size_t{index} * slotBytes;
    }

private:
    bool Grow(uint32_t count, size_t slotBytes) {
        const uint64_t wanted = std::max<uint64_t>(count, uint64_t{capacity} + GrowthStep(size, growBy));
        const uint64_t rounded = (wanted + kRounding - 1) / kRounding * kRounding;
        if (rounded > UINT32_MAX || rounded > SIZE_MAX / slotBytes)
            return false;
        void* grown = slots ? realloc(slots, rounded * slotBytes) : calloc(rounded, slotBytes);
        if (!grown)
            return false;
        const bool wasEmpty = slots == nullptr;
        slots = grown;
        capacity = static_cast<uint32_t>(rounded);
        if (!wasEmpty)
            memset(At(size, slotBytes), 0, size_t{capacity - size} * slotBytes);
        return true;
    }
};

} // namespace foundation
