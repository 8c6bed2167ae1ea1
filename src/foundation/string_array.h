// Array of strings that it owns. A slot may be null, which reads as an empty string.
#pragma once

#include <cstdint>

#include "foundation/string.h"

class CVrxStringArray {
public:
    CVrxStringArray() = default;
    CVrxStringArray(const CVrxStringArray& other);
    CVrxStringArray(CVrxStringArray&& other) noexcept;
    virtual ~CVrxStringArray();
    CVrxStringArray& operator=(const CVrxStringArray& other);
    CVrxStringArray& operator=(CVrxStringArray&& other) noexcept;

    // A non-zero growBy is kept as the step of growth. New slots are null; 0 frees all. False if memory ran
    // out; the array then stays as it was.
    virtual bool SetSize(int32_t count, uint32_t growBy = 0);

    // Each appends a copy and returns its index, -1 if memory ran out.
    virtual int32_t Add(const char* text);
    virtual int32_t Add(const CVrxStringU& string);
    virtual int32_t AddCopy(const CVrxStringU& string);

    // Index of an equal element, else of the appended copy.
    virtual int32_t AddUnique(const CVrxStringU& string);

    // Appends copies of all strings of other, which may be this array; returns the former size.
    virtual int32_t Append(const CVrxStringArray& other);

    // A copy; an empty string for an index out of range or a null slot.
    CVrxStringU GetAt(int32_t index) const;

    // The string itself; a null slot is filled with an empty one first. The index must be within the size.
    CVrxStringU& ElementAt(int32_t index);
    CVrxStringU& operator[](int32_t index) { return ElementAt(index); }

    // The text without a copy; "" for an index out of range or a null slot. Valid until the slot changes.
    const char* TextAt(int32_t index) const;

    // Grows the array to index + 1 if necessary. A negative index is ignored.
    void SetAt(int32_t index, const CVrxStringU& string);

    // First index with an equal text, -1 if there is none. An empty element equals an empty text.
    int32_t Find(const CVrxStringU& string) const;

    void Clear() { SetSize(0); }
    int32_t GetSize() const { return m_size; }
    int32_t GetCapacity() const { return m_capacity; }
    bool IsEmpty() const { return m_size == 0; }

private:
    bool Grow(int32_t count);
    void DeleteFrom(int32_t index);
    void Swap(CVrxStringArray& other) noexcept;

    CVrxStringU** m_slots = nullptr;
    int32_t m_size = 0;
    int32_t m_capacity = 0;
    uint32_t m_growBy = 0;
};
