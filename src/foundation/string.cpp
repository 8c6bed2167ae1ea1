#include "foundation/string.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

constexpr uint32_t kMaxLength = INT32_MAX - 2; // the capacity is a signed 32-bit number
constexpr int32_t kKeptCapacity = 2;           // Clear keeps buffers up to this size
constexpr int32_t kEmptyCapacity = 2;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsDecimalSeparator(char c) {
    return c == '.' || c == ',';
}

// Sign of the number at p, which is moved behind it.
bool TakeMinus(const char*& p) {
    if (*p != '+' && *p != '-')
        return false;
    return *p++ == '-';
}

double ParseFraction(const char*& p) {
    double sum = 0;
    for (double scale = 10; IsDigit(*p); p++, scale *= 10)
        sum += (*p - '0') / scale;
    return sum;
}

// Multiplies or divides step by step. A value that a step no longer changes (0, infinite) ends the walk, so
// that an absurd exponent costs nothing.
double ApplyExponent(double value, const char* p) {
    constexpr int32_t kLimit = 100000;
    const bool isNegative = TakeMinus(p);
    int32_t exponent = 0;
    for (; IsDigit(*p); p++)
        exponent = std::min(exponent * 10 + (*p - '0'), kLimit);
    for (; exponent > 0; exponent--) {
        const double next = isNegative ? value / 10 : value * 10;
        if (next == value)
            break;
        value = next;
    }
    return value;
}

} // namespace

CVrxStringU::CVrxStringU(const char* text) {
    Assign(text, -1);
}

CVrxStringU::CVrxStringU(CVrxStringU&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)),
      m_capacity(std::exchange(other.m_capacity, 0)),
      m_length(std::exchange(other.m_length, 0)) {
}

CVrxStringU::~CVrxStringU() {
    Release();
}

CVrxStringU& CVrxStringU::operator=(const CVrxStringU& other) {
    Assign(other);
    return *this;
}

CVrxStringU& CVrxStringU::operator=(CVrxStringU&& other) noexcept {
    std::swap(m_data, other.m_data);
    std::swap(m_capacity, other.m_capacity);
    std::swap(m_length, other.m_length);
    if (this != &other)
        other.Release();
    return *this;
}

CVrxStringU& CVrxStringU::operator=(const char* text) {
    Assign(text, -1);
    return *this;
}

void CVrxStringU::Release() {
    if (!IsAttached())
        free(m_data);
    m_data = nullptr;
    m_capacity = 0;
    m_length = 0;
}

bool CVrxStringU::Reallocate(uint32_t newCapacity) {
    const bool wasAttached = IsAttached();
    char* former = wasAttached ? nullptr : m_data;
    char* grown = newCapacity <= INT32_MAX ? static_cast<char*>(realloc(former, newCapacity)) : nullptr;
    if (grown && wasAttached)
        memcpy(grown, m_data, std::min(m_length + 1, newCapacity));
    if (!grown) {
        Release();
        return false;
    }
    m_data = grown;
    m_capacity = static_cast<int32_t>(newCapacity);
    return true;
}

// Never for an attached text: that stays valid whatever becomes of this string.
bool CVrxStringU::Owns(const void* bytes) const {
    const auto* p = static_cast<const char*>(bytes);
    return m_data && p >= m_data && p < m_data + m_capacity;
}

void CVrxStringU::Assign(const char* text, int32_t maxLength) {
    if (!text) {
        Clear();
        return;
    }
    const size_t length = maxLength < 0 ? strlen(text) : strnlen(text, static_cast<size_t>(maxLength));
    if (length > kMaxLength)
        Release();
    else
        AssignBytes(text, static_cast<uint32_t>(length));
}

void CVrxStringU::Assign(const CVrxStringU& string) {
    if (this == &string)
        return;
    if (string.IsNull())
        Clear();
    else
        AssignBytes(string.m_data, string.m_length);
}

void CVrxStringU::AssignBytes(const void* bytes, uint32_t count) {
    if (count > kMaxLength) {
        Release();
        return;
    }
    if (IsAttached()) // also a part of this text is the other owner's, who keeps it
        m_data = nullptr;
    if (Owns(bytes)) { // a part of this text: bring it to the front before the buffer shrinks
        memmove(m_data, bytes, count);
        if (!Reallocate(count + 1))
            return;
    } else {
        if (m_capacity != static_cast<int32_t>(count + 1) && !Reallocate(count + 1))
            return;
        if (count > 0)
            memcpy(m_data, bytes, count);
    }
    m_data[count] = '\0';
    m_length = count;
}

void CVrxStringU::Append(const char* text) {
    if (text)
        AppendBytes(text, static_cast<uint32_t>(std::min<size_t>(strlen(text), kMaxLength)));
}

void CVrxStringU::AppendBytes(const void* bytes, uint32_t count) {
    if (count == 0)
        return;
    const uint64_t needed = uint64_t{m_length} + count + 1;
    if (needed > kMaxLength) {
        Release();
        return;
    }
    const bool isOwn = Owns(bytes);
    const auto ownOffset = isOwn ? static_cast<const char*>(bytes) - m_data : 0;
    if (needed > static_cast<uint64_t>(m_capacity)) {
        const uint64_t grown = std::max(needed, std::min<uint64_t>(needed + needed / 2, kMaxLength));
        if (!Reallocate(static_cast<uint32_t>(grown)))
            return;
    }
    memmove(m_data + m_length, isOwn ? m_data + ownOffset : bytes, count);
    m_length += count;
    m_data[m_length] = '\0';
}

CVrxStringU& CVrxStringU::operator+=(const char* text) {
    Append(text);
    return *this;
}

CVrxStringU& CVrxStringU::operator+=(const CVrxStringU& string) {
    Append(string);
    return *this;
}

CVrxStringU& CVrxStringU::operator+=(char character) {
    Append(character);
    return *this;
}

bool CVrxStringU::SetZeros(uint32_t count) {
    if (count > kMaxLength || !Reallocate(count + 1)) {
        Release();
        return false;
    }
    memset(m_data, 0, count + 1);
    m_length = count;
    return true;
}

bool CVrxStringU::MakeOwn() {
    return !IsAttached() || Reallocate(m_length + 1);
}

char* CVrxStringU::GetBuffer() {
    if (!MakeOwn())
        return nullptr;
    if (!m_data) {
        if (Reallocate(kEmptyCapacity))
            m_data[0] = '\0';
        return m_data;
    }
    if (m_length == static_cast<uint32_t>(m_capacity) && Reallocate(m_length + 2))
        m_data[m_length] = '\0';
    return m_data;
}

void CVrxStringU::Truncate(uint32_t count) {
    if (count >= m_length || !MakeOwn())
        return;
    m_length = count;
    m_data[count] = '\0';
}

void CVrxStringU::Clear() {
    if (m_capacity > kKeptCapacity || IsAttached())
        Release();
    else
        Truncate(0);
}

CVrxStringU CVrxStringU::Mid(int32_t start, int32_t count) const {
    CVrxStringU part;
    if (!m_data || start < 0 || static_cast<uint32_t>(start) >= m_length || count < 1)
        return part;
    const uint32_t rest = m_length - static_cast<uint32_t>(start);
    part.AssignBytes(m_data + start, std::min(rest, static_cast<uint32_t>(count)));
    return part;
}

CVrxStringU CVrxStringU::Left(int32_t count) const {
    return Mid(0, count);
}

void CVrxStringU::Format(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    FormatV(format, arguments);
    va_end(arguments);
}

void CVrxStringU::FormatV(const char* format, va_list arguments) {
    // On the heap: callers may run on small stacks. One byte more than the limit, for the terminator.
    char* scratch = static_cast<char*>(malloc(kFormatLimit + 1));
    if (!scratch)
        return;
    const int length = vsnprintf(scratch, kFormatLimit + 1, format, arguments);
    if (length == 0) {
        Clear();
    } else if (length > 0 && static_cast<uint32_t>(length) <= kFormatLimit) {
        const auto size = static_cast<uint32_t>(length);
        if (m_capacity > length || Reallocate(size + 2)) {
            memcpy(m_data, scratch, size + 1);
            m_length = size;
        }
    }
    free(scratch);
}

CVrxStringU CVrxStringU::Formatted(const char* format, ...) {
    CVrxStringU text;
    va_list arguments;
    va_start(arguments, format);
    text.FormatV(format, arguments);
    va_end(arguments);
    return text;
}

void CVrxStringU::MakeLower() {
    constexpr uint32_t kFirstCapital = 0xC380; // U+00C0
    constexpr uint32_t kLastCapital = 0xC39E;  // U+00DE
    constexpr uint8_t kToLower = 32;
    if (!MakeOwn())
        return;
    auto* bytes = reinterpret_cast<uint8_t*>(m_data);
    for (uint32_t i = 0; i < m_length;) {
        const uint8_t lead = bytes[i];
        if (lead < 0x80) {
            if (lead >= 'A' && lead <= 'Z')
                bytes[i] = static_cast<uint8_t>(lead + kToLower);
            i += 1;
        } else if (lead >= 0xC0 && lead <= 0xDF) {
            if (i + 1 >= m_length)
                return;
            const uint32_t value = lead * 256u + bytes[i + 1];
            if (value >= kFirstCapital && value <= kLastCapital)
                bytes[i + 1] = static_cast<uint8_t>(bytes[i + 1] + kToLower);
            i += 2;
        } else if (lead >= 0xE0 && lead <= 0xF7) {
            i += lead <= 0xEF ? 3 : 4;
        } else {
            return;
        }
    }
}

double CVrxStringU::ToDouble(const char* text) {
    if (!text)
        return 0;
    const char* p = text;
    const bool isNegative = TakeMinus(p);
    double value = 0;
    for (; IsDigit(*p); p++)
        value = value * 10 + (*p - '0');
    if (IsDecimalSeparator(*p)) {
        p++;
        value += ParseFraction(p);
        if (*p == 'e' || *p == 'E')
            value = ApplyExponent(value, p + 1);
    }
    return isNegative && value != 0 ? -value : value; // no negative zero: it would be shown as "-0"
}

int32_t CVrxStringU::Find(const char* text, uint32_t start) const {
    const size_t found = text ? View().find(text, start) : std::string_view::npos;
    return found == std::string_view::npos ? -1 : static_cast<int32_t>(found);
}

int32_t CVrxStringU::Find(char character, uint32_t start) const {
    const size_t found = View().find(character, start);
    return found == std::string_view::npos ? -1 : static_cast<int32_t>(found);
}

bool CVrxStringU::EndsWith(const char* text) const {
    return View().ends_with(text);
}

CVrxStringU operator+(const CVrxStringU& a, const CVrxStringU& b) {
    CVrxStringU sum(a);
    sum.Append(b);
    return sum;
}

CVrxStringU operator+(const CVrxStringU& a, const char* b) {
    CVrxStringU sum(a);
    sum.Append(b);
    return sum;
}

CVrxStringU operator+(const char* a, const CVrxStringU& b) {
    CVrxStringU sum(a);
    sum.Append(b);
    return sum;
}
