#include "foundation/ptr_array.h"

#include <cstring>
#include <utility>

CVrxPtrArray::CVrxPtrArray(const CVrxPtrArray& other) {
    m_storage.CopyFrom(other.m_storage, sizeof(void*));
}

CVrxPtrArray::CVrxPtrArray(CVrxPtrArray&& other) noexcept : m_storage(std::exchange(other.m_storage, {})) {
}

CVrxPtrArray& CVrxPtrArray::operator=(const CVrxPtrArray& other) {
    if (this != &other)
        m_storage.CopyFrom(other.m_storage, sizeof(void*));
    return *this;
}

CVrxPtrArray& CVrxPtrArray::operator=(CVrxPtrArray&& other) noexcept {
    std::swap(m_storage, other.m_storage);
    if (this != &other)
        other.m_storage.Free();
    return *this;
}

bool CVrxPtrArray::SetSize(uint32_t count) {
    return m_storage.SetSize(count, sizeof(void*));
}

int32_t CVrxPtrArray::Add(void* pointer) {
    if (m_storage.size >= INT32_MAX || !SetSize(m_storage.size + 1))
        return -1;
    Slots()[m_storage.size - 1] = pointer;
    return static_cast<int32_t>(m_storage.size - 1);
}

int32_t CVrxPtrArray::AddUnique(void* pointer) {
    const int32_t present = Find(pointer);
    return present >= 0 ? present : Add(pointer);
}

int32_t CVrxPtrArray::Find(const void* pointer) const {
    for (uint32_t i = 0; i < m_storage.size; i++) {
        if (Slots()[i] == pointer)
            return static_cast<int32_t>(i);
    }
    return -1;
}

bool CVrxPtrArray::Remove(const void* pointer) {
    const int32_t index = Find(pointer);
    if (index < 0)
        return false;
    RemoveAt(static_cast<uint32_t>(index));
    return true;
}

bool CVrxPtrArray::InsertAt(uint32_t index, void* pointer) {
    const uint32_t oldSize = m_storage.size;
    if (index > oldSize || Add(pointer) < 0)
        return false;
    memmove(Slots() + index + 1, Slots() + index, size_t{oldSize - index} * sizeof(void*));
    Slots()[index] = pointer;
    return true;
}

CVrSimplePtrArray::~CVrSimplePtrArray() {
    FreeOwn();
}

bool CVrSimplePtrArray::SetSize(uint32_t count) {
    if (IsAttached() && count <= m_size) {
        m_size = count; // the slots behind belong to their owner and stay as they are
        return true;
    }
    if (count > m_capacity && !Grow(count))
        return false;
    if (count < m_size)
        memset(m_slots + count, 0, size_t{m_size - count} * sizeof(void*));
    m_size = count;
    return true;
}

bool CVrSimplePtrArray::Grow(uint32_t count) {
    const uint64_t capacity = m_capacity + (uint64_t{count} - m_capacity + kStep - 1) / kStep * kStep;
    auto* grown = capacity <= UINT32_MAX ? static_cast<void**>(calloc(capacity, sizeof(void*))) : nullptr;
    if (!grown)
        return false;
    if (m_size > 0)
        memcpy(grown, m_slots, size_t{m_size} * sizeof(void*));
    FreeOwn();
    m_slots = grown;
    m_capacity = static_cast<uint32_t>(capacity);
    return true;
}

int32_t CVrSimplePtrArray::Add(void* pointer) {
    if (m_size >= INT32_MAX || !SetSize(m_size + 1))
        return -1;
    m_slots[m_size - 1] = pointer;
    return static_cast<int32_t>(m_size - 1);
}
