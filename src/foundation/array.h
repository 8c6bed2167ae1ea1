// Array of plain values: elements are copied as bytes, new ones are zero bytes. Growing is amortised constant
// time per element, RemoveAt linear. References and iterators are valid until the next change of size.
#pragma once

#include <cassert>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "foundation/array_storage.h"

template <typename T>
class VrArray {
    static_assert(std::is_trivially_copyable_v<T>, "elements are copied as bytes");

public:
    VrArray() = default;
    VrArray(const VrArray& other) { m_storage.CopyFrom(other.m_storage, sizeof(T)); }
    VrArray(VrArray&& other) noexcept : m_storage(std::exchange(other.m_storage, {})) {}
    virtual ~VrArray() { m_storage.Free(); }

    VrArray& operator=(const VrArray& other) {
        if (this != &other)
            m_storage.CopyFrom(other.m_storage, sizeof(T));
        return *this;
    }
    VrArray& operator=(VrArray&& other) noexcept {
        std::swap(m_storage, other.m_storage);
        if (this != &other)
            other.m_storage.Free();
        return *this;
    }

    // 0 frees the buffer. False if memory ran out; the array then stays as it was.
    bool SetSize(uint32_t count) {
        const uint32_t growBy = m_storage.growBy;
        const bool isDone = m_storage.SetSize(count, sizeof(T));
        m_storage.growBy = growBy;
        return isDone;
    }

    // False, and nothing added, if memory ran out. The value may be an element of this array.
    bool Add(const T& value) {
        const T copy = value;
        if (m_storage.size == UINT32_MAX || !SetSize(m_storage.size + 1))
            return false;
        (*this)[m_storage.size - 1] = copy;
        return true;
    }

    // Nothing for an index that is not below the size.
    void RemoveAt(uint32_t index) { m_storage.RemoveAt(index, sizeof(T)); }

    // Empties the array but keeps the buffer for the next filling.
    void Reset() {
        if (m_storage.size > 0)
            memset(m_storage.slots, 0, size_t{m_storage.size} * sizeof(T));
        m_storage.size = 0;
    }
    void Clear() { SetSize(0); }

    // Step of growth in elements; 0, the default, selects the automatic one.
    void SetGrowBy(uint32_t growBy) { m_storage.growBy = growBy; }

    T& operator[](uint32_t index) {
        assert(index < m_storage.size);
        return GetData()[index];
    }
    const T& operator[](uint32_t index) const {
        assert(index < m_storage.size);
        return GetData()[index];
    }
    T& Last() { return (*this)[m_storage.size - 1]; }
    const T& Last() const { return (*this)[m_storage.size - 1]; }

    T* GetData() { return static_cast<T*>(m_storage.slots); }
    const T* GetData() const { return static_cast<const T*>(m_storage.slots); }
    uint32_t GetSize() const { return m_storage.size; }
    uint32_t GetCapacity() const { return m_storage.capacity; }
    bool IsEmpty() const { return m_storage.size == 0; }

    T* begin() { return GetData(); }
    T* end() { return GetData() + m_storage.size; }
    const T* begin() const { return GetData(); }
    const T* end() const { return GetData() + m_storage.size; }

private:
    foundation::ArrayStorage m_storage;
};
