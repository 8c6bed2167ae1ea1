#include "foundation/string_array.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "foundation/array_storage.h"

CVrxStringArray::CVrxStringArray(const CVrxStringArray& other) {
    CVrxStringArray::Append(other);
}

CVrxStringArray::CVrxStringArray(CVrxStringArray&& other) noexcept {
    Swap(other);
}

CVrxStringArray::~CVrxStringArray() {
    DeleteFrom(0);
    free(m_slots);
}

CVrxStringArray& CVrxStringArray::operator=(const CVrxStringArray& other) {
    if (this != &other) {
        Clear();
        Append(other);
    }
    return *this;
}

CVrxStringArray& CVrxStringArray::operator=(CVrxStringArray&& other) noexcept {
    Swap(other);
    if (this != &other)
        other.Clear();
    return *this;
}

void CVrxStringArray::Swap(CVrxStringArray& other) noexcept {
    std::swap(m_slots, other.m_slots);
    std::swap(m_size, other.m_size);
    std::swap(m_capacity, other.m_capacity);
    std::swap(m_growBy, other.m_growBy);
}

void CVrxStringArray::DeleteFrom(int32_t index) {
    for (int32_t i = index; i < m_size; i++) {
        delete m_slots[i];
        m_slots[i] = nullptr;
    }
}

bool CVrxStringArray::SetSize(int32_t count, uint32_t growBy) {
    if (growBy != 0)
        m_growBy = growBy;
    if (count <= 0) {
        DeleteFrom(0);
        free(m_slots);
        m_slots = nullptr;
        m_size = 0;
        m_capacity = 0;
        return true;
    }
    if (count > m_capacity && !Grow(count))
        return false;
    DeleteFrom(count);
    m_size = count;
    return true;
}

bool CVrxStringArray::Grow(int32_t count) {
    const uint64_t step = foundation::GrowthStep(static_cast<uint32_t>(m_size), m_growBy);
    const auto wanted =
        std::max<uint64_t>(static_cast<uint64_t>(count), static_cast<uint64_t>(m_capacity) + step);
    if (wanted > INT32_MAX)
        return false;
    auto* grown = static_cast<CVrxStringU**>(realloc(m_slots, wanted * sizeof(CVrxStringU*)));
    if (!grown)
        return false;
    m_slots = grown;
    m_capacity = static_cast<int32_t>(wanted);
    memset(m_slots + m_size, 0, static_cast<size_t>(m_capacity - m_size) * sizeof(CVrxStringU*));
    return true;
}

int32_t CVrxStringArray::Add(const char* text) {
    return AddCopy(CVrxStringU(text));
}

int32_t CVrxStringArray::Add(const CVrxStringU& string) {
    const int32_t index = m_size;
    SetAt(index, string);
    return m_size > index ? index : -1;
}

int32_t CVrxStringArray::AddCopy(const CVrxStringU& string) {
    auto* copy = new (std::nothrow) CVrxStringU(string); // before the array grows: it may be an element
    if (!copy || m_size == INT32_MAX || !SetSize(m_size + 1)) {
        delete copy;
        return -1;
    }
    m_slots[m_size - 1] = copy;
    return m_size - 1;
}

int32_t CVrxStringArray::AddUnique(const CVrxStringU& string) {
    const int32_t present = Find(string);
    return present >= 0 ? present : Add(string);
}

int32_t CVrxStringArray::Append(const CVrxStringArray& other) {
    const int32_t formerSize = m_size;
    const int32_t count = other.m_size;
    if (count == 0 || count > INT32_MAX - formerSize || !SetSize(formerSize + count))
        return formerSize;
    for (int32_t i = 0; i < count; i++)
        m_slots[formerSize + i] = new (std::nothrow) CVrxStringU(other.TextAt(i));
    return formerSize;
}

CVrxStringU CVrxStringArray::GetAt(int32_t index) const {
    const bool isThere = index >= 0 && index < m_size && m_slots[index];
    return isThere ? *m_slots[index] : CVrxStringU();
}

const char* CVrxStringArray::TextAt(int32_t index) const {
    return index >= 0 && index < m_size && m_slots[index] ? m_slots[index]->CStr() : "";
}

CVrxStringU& CVrxStringArray::ElementAt(int32_t index) {
    assert(index >= 0 && index < m_size);
    if (!m_slots[index])
        m_slots[index] = new CVrxStringU;
    return *m_slots[index];
}

void CVrxStringArray::SetAt(int32_t index, const CVrxStringU& string) {
    if (index < 0 || index == INT32_MAX)
        return;
    auto* copy = new (std::nothrow) CVrxStringU(string);
    if (!copy || (index >= m_size && !SetSize(index + 1))) {
        delete copy;
        return;
    }
    delete m_slots[index];
    m_slots[index] = copy;
}

int32_t CVrxStringArray::Find(const CVrxStringU& string) const {
    for (int32_t i = 0; i < m_size; i++) {
        if (m_slots[i] ? *m_slots[i] == string : string.IsEmpty())
            return i;
    }
    return -1;
}
