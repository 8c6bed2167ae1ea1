#include "foundation/byte_array.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

constexpr uint32_t kGiveBackFrom = 1048576; // capacity in bytes
constexpr uint32_t kMinStep = 32;
constexpr uint32_t kMaxStep = 1024;

} // namespace

CVrxByteArray::CVrxByteArray(const CVrxByteArray& other) : m_growBy(other.m_growBy) {
    Assign(other.m_data, other.m_size);
}

CVrxByteArray::CVrxByteArray(CVrxByteArray&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)),
      m_size(std::exchange(other.m_size, 0)),
      m_capacity(std::exchange(other.m_capacity, 0)),
      m_growBy(other.m_growBy) {
}

CVrxByteArray::~CVrxByteArray() {
    free(m_data);
}

CVrxByteArray& CVrxByteArray::operator=(const CVrxByteArray& other) {
    if (this != &other)
        Assign(other.m_data, other.m_size);
    return *this;
}

CVrxByteArray& CVrxByteArray::operator=(CVrxByteArray&& other) noexcept {
    std::swap(m_data, other.m_data);
    std::swap(m_size, other.m_size);
    std::swap(m_capacity, other.m_capacity);
    if (this != &other)
        other.Free();
    return *this;
}

void CVrxByteArray::Free() {
    free(m_data);
    m_data = nullptr;
    m_size = 0;
    m_capacity = 0;
}

bool CVrxByteArray::SetSize(uint32_t size) {
    if (size == 0) {
        Free();
        return true;
    }
    if (!m_data)
        return Allocate(size);
    if (size > m_capacity)
        return Grow(size);
    if (m_capacity >= kGiveBackFrom && size <= m_capacity / 2)
        return Reallocate(size, size);
    if (size > m_size)
        memset(m_data + m_size, 0, size - m_size);
    m_size = size;
    return true;
}

bool CVrxByteArray::Allocate(uint32_t size) {
    m_data = static_cast<uint8_t*>(calloc(size, 1));
    m_size = m_data ? size : 0;
    m_capacity = m_size;
    return m_data != nullptr;
}

bool CVrxByteArray::Grow(uint32_t size) {
    const uint32_t step = m_growBy != 0 ? m_growBy : std::clamp(m_size / 4, kMinStep, kMaxStep);
    const uint64_t stepped = std::min<uint64_t>(uint64_t{m_capacity} + step, UINT32_MAX);
    return Reallocate(std::max(size, static_cast<uint32_t>(stepped)), size);
}

bool CVrxByteArray::Reallocate(uint32_t capacity, uint32_t size) {
    auto* moved = static_cast<uint8_t*>(realloc(m_data, capacity));
    if (!moved) {
        Free();
        return false;
    }
    m_data = moved;
    m_capacity = capacity;
    if (size > m_size)
        memset(m_data + m_size, 0, size - m_size);
    m_size = size;
    return true;
}

bool CVrxByteArray::Assign(const void* bytes, uint32_t count) {
    const auto* source = static_cast<const uint8_t*>(bytes);
    if (m_data && source >= m_data && source < m_data + m_size) {
        memmove(m_data, source, count);
        return SetSize(count);
    }
    if (!SetSize(count))
        return false;
    if (count > 0)
        memcpy(m_data, bytes, count);
    return true;
}

bool CVrxByteArray::Append(const void* bytes, uint32_t count) {
    if (count == 0)
        return true;
    const auto* source = static_cast<const uint8_t*>(bytes);
    const bool isOwn = m_data && source >= m_data && source < m_data + m_size;
    const size_t ownOffset = isOwn ? static_cast<size_t>(source - m_data) : 0;
    const uint32_t oldSize = m_size;
    if (count > UINT32_MAX - oldSize || !SetSize(oldSize + count))
        return false;
    memcpy(m_data + oldSize, isOwn ? m_data + ownOffset : source, count);
    return true;
}
