// Array of bytes. Keeps its buffer over shrinking, except that a buffer of 1 MiB and more gives memory back
// when more than half of it would lie idle.
#pragma once

#include <cassert>
#include <cstdint>

class CVrxByteArray {
public:
    CVrxByteArray() = default;
    CVrxByteArray(const void* bytes, uint32_t count) { Assign(bytes, count); }
    CVrxByteArray(const CVrxByteArray& other);
    CVrxByteArray(CVrxByteArray&& other) noexcept;
    virtual ~CVrxByteArray();
    CVrxByteArray& operator=(const CVrxByteArray& other);
    CVrxByteArray& operator=(CVrxByteArray&& other) noexcept;

    // New bytes are zero; 0 frees the buffer. False if memory ran out: the array is empty then.
    bool SetSize(uint32_t size);

    // The bytes may be a part of this array.
    bool Assign(const void* bytes, uint32_t count);
    bool Append(const void* bytes, uint32_t count);
    void Clear() { SetSize(0); }

    // Step of growth in bytes; 0, the default, selects the automatic one.
    void SetGrowBy(uint32_t growBy) { m_growBy = growBy; }

    uint8_t* GetData() { return m_data; } // null while empty
    const uint8_t* GetData() const { return m_data; }
    uint32_t GetSize() const { return m_size; }
    uint32_t GetCapacity() const { return m_capacity; }
    bool IsEmpty() const { return m_size == 0; }

    uint8_t& operator[](uint32_t index) {
        assert(index < m_size);
        return m_data[index];
    }
    uint8_t operator[](uint32_t index) const {
        assert(index < m_size);
        return m_data[index];
    }
    uint8_t* begin() { return m_data; }
    uint8_t* end() { return m_data + m_size; }
    const uint8_t* begin() const { return m_data; }
    const uint8_t* end() const { return m_data + m_size; }

private:
    void Free();
    bool Allocate(uint32_t size);
    bool Reallocate(uint32_t capacity, uint32_t size);
    bool Grow(uint32_t size);

    uint8_t* m_data = nullptr;
    uint32_t m_size = 0;
    uint32_t m_capacity = 0;
    uint32_t m_growBy = 0;
};
