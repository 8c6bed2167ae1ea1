// Arrays of untyped pointers that do not own what they point to. VrPtrs<T> is the typed view that spares the
// casts.
#pragma once

#include <cassert>
#include <cstdint>

#include "foundation/array_storage.h"

// Growing is amortised constant time, AddUnique, Find and RemoveAt are linear. Slots behind the size are
// always null.
class CVrxPtrArray {
public:
    CVrxPtrArray() = default;
    CVrxPtrArray(const CVrxPtrArray& other);
    CVrxPtrArray(CVrxPtrArray&& other) noexcept;
    virtual ~CVrxPtrArray() { m_storage.Free(); }
    CVrxPtrArray& operator=(const CVrxPtrArray& other);
    CVrxPtrArray& operator=(CVrxPtrArray&& other) noexcept;

    // 0 frees the buffer. False if memory ran out; the array then stays as it was.
    bool SetSize(uint32_t count);

    // Index of the new slot, -1 if memory ran out.
    int32_t Add(void* pointer);

    // Index of the pointer that is there already, else of the new slot.
    int32_t AddUnique(void* pointer);

    // First index of the pointer, -1 if it is not there.
    int32_t Find(const void* pointer) const;

    // Moves the tail down; nothing for an index that is not below the size.
    void RemoveAt(uint32_t index) { m_storage.RemoveAt(index, sizeof(void*)); }

    // Removes the first slot with this pointer; false if there is none.
    bool Remove(const void* pointer);

    // Moves the slots from index on (at most the size) up and puts the pointer there.
    bool InsertAt(uint32_t index, void* pointer);

    void Clear() { SetSize(0); }
    void SetGrowBy(uint32_t growBy) { m_storage.growBy = growBy; }

    void*& operator[](uint32_t index) {
        assert(index < m_storage.size);
        return Slots()[index];
    }
    void* operator[](uint32_t index) const {
        assert(index < m_storage.size);
        return Slots()[index];
    }
    // The pointer at index, null at and behind the end.
    void* GetAt(uint32_t index) const { return index < m_storage.size ? Slots()[index] : nullptr; }

    uint32_t GetSize() const { return m_storage.size; }
    uint32_t GetCapacity() const { return m_storage.capacity; }
    bool IsEmpty() const { return m_storage.size == 0; }

    void** begin() { return Slots(); }
    void** end() { return Slots() + m_storage.size; }
    void* const* begin() const { return Slots(); }
    void* const* end() const { return Slots() + m_storage.size; }

private:
    void** Slots() const { return static_cast<void**>(m_storage.slots); }

    foundation::ArrayStorage m_storage;
};

// Grows by exactly 64 slots at a time.
class CVrSimplePtrArray {
public:
    static constexpr uint32_t kStep = 64;

    CVrSimplePtrArray() = default;
    CVrSimplePtrArray(const CVrSimplePtrArray&) = delete;
    CVrSimplePtrArray& operator=(const CVrSimplePtrArray&) = delete;
    virtual ~CVrSimplePtrArray();

    // False if memory ran out; the array then stays as it was. The buffer never shrinks.
    bool SetSize(uint32_t count);
    int32_t Add(void* pointer); // index of the new slot, -1 if memory ran out

    // Shows count slots of another owner, which stay valid until this array grows or is destroyed.
    void Attach(void** slots, uint32_t count) {
        FreeOwn();
        m_slots = slots;
        m_size = count;
        m_capacity = 0;
    }

    void*& operator[](uint32_t index) {
        assert(index < m_size);
        return m_slots[index];
    }
    void* operator[](uint32_t index) const {
        assert(index < m_size);
        return m_slots[index];
    }
    uint32_t GetSize() const { return m_size; }
    uint32_t GetCapacity() const { return m_capacity; }
    bool IsEmpty() const { return m_size == 0; }

    void** begin() { return m_slots; }
    void** end() { return m_slots + m_size; }
    void* const* begin() const { return m_slots; }
    void* const* end() const { return m_slots + m_size; }

private:
    bool IsAttached() const { return m_capacity == 0 && m_slots; }
    bool Grow(uint32_t count);
    void FreeOwn() {
        if (m_capacity > 0)
            free(m_slots);
    }

    void** m_slots = nullptr;
    uint32_t m_size = 0;
    uint32_t m_capacity = 0; // 0: no buffer, or one of another owner
};

// A CVrxPtrArray whose slots are all T*. Still does not own the pointees.
template <typename T>
class VrPtrs : public CVrxPtrArray {
public:
    class Iterator {
    public:
        explicit Iterator(void* const* slot) : m_slot(slot) {}
        T* operator*() const { return static_cast<T*>(*m_slot); }
        Iterator& operator++() {
            ++m_slot;
            return *this;
        }
        bool operator==(const Iterator& other) const = default;

    private:
        void* const* m_slot;
    };

    T* operator[](uint32_t index) const { return static_cast<T*>(CVrxPtrArray::operator[](index)); }
    T* GetAt(uint32_t index) const { return static_cast<T*>(CVrxPtrArray::GetAt(index)); }
    void SetAt(uint32_t index, T* pointer) { CVrxPtrArray::operator[](index) = pointer; }
    int32_t Add(T* pointer) { return CVrxPtrArray::Add(pointer); }
    int32_t AddUnique(T* pointer) { return CVrxPtrArray::AddUnique(pointer); }
    bool InsertAt(uint32_t index, T* pointer) { return CVrxPtrArray::InsertAt(index, pointer); }

    Iterator begin() const { return Iterator(CVrxPtrArray::begin()); }
    Iterator end() const { return Iterator(CVrxPtrArray::end()); }
};
