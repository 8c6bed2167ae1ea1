// One UTF-8 text. Lengths and positions are bytes. A string is either null (never assigned, cleared, or out
// of memory: no buffer, length 0) or holds a NUL-terminated buffer; both kinds read alike through CStr() and
// length.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <string_view>

class CVrxStringU {
public:
    // Longest text that Format can make, in bytes.
    static constexpr uint32_t kFormatLimit = 16384;

    CVrxStringU() = default;
    CVrxStringU(const char* text); // null gives the null state
    CVrxStringU(const char* text, int32_t maxLength) { Assign(text, maxLength); }
    CVrxStringU(const CVrxStringU& other) { Assign(other); }
    CVrxStringU(CVrxStringU&& other) noexcept;
    virtual ~CVrxStringU();

    CVrxStringU& operator=(const CVrxStringU& other);
    CVrxStringU& operator=(CVrxStringU&& other) noexcept;
    CVrxStringU& operator=(const char* text);

    // Copies at most maxLength bytes, all of the text if maxLength is negative; null clears. The text may be
    // a part of this string. The capacity is exactly length + 1 afterwards.
    void Assign(const char* text, int32_t maxLength);
    void Assign(const char* text) { Assign(text, -1); }
    void Assign(const CVrxStringU& string);

    // Any bytes, an inner NUL included.
    void AssignBytes(const void* bytes, uint32_t count);

    // Amortised constant time per byte.
    void Append(const char* text);
    void Append(const CVrxStringU& string) { AppendBytes(string.m_data, string.m_length); }
    void Append(char character) { AppendBytes(&character, 1); }
    void AppendBytes(const void* bytes, uint32_t count);
    CVrxStringU& operator+=(const char* text);
    CVrxStringU& operator+=(const CVrxStringU& string);
    CVrxStringU& operator+=(char character);

    // Refers to a text of another owner without copying it: length bytes with a NUL behind them, which stay
    // valid until this string is changed or destroyed. Copies of this string own their text; a move passes
    // the reference on.
    void Attach(char* text, uint32_t length);

    // A buffer of count zero bytes and a terminator as the text, to be filled through GetBuffer; false
    // without memory.
    bool SetZeros(uint32_t count);

    // The text for writing within its length; never null unless memory ran out. A null string gets a 2-byte
    // buffer with an empty text.
    char* GetBuffer();

    // Cuts the text to at most count bytes; the buffer stays.
    void Truncate(uint32_t count);

    // With a capacity of 3 or more the string returns to the null state; a smaller buffer is kept, emptied.
    void Clear();

    // At most count bytes from start; empty if start is negative or not below the length, or count is
    // below 1.
    CVrxStringU Mid(int32_t start, int32_t count) const;
    CVrxStringU Left(int32_t count) const;

    // printf into this string. A result above kFormatLimit leaves the string unchanged, an empty one clears
    // it. Arguments may point into this string.
    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void FormatV(const char* format, va_list arguments) __attribute__((format(printf, 2, 0)));
    static CVrxStringU Formatted(const char* format, ...) __attribute__((format(printf, 1, 2)));

    // Lower case of ASCII and of the two-byte sequences U+00C0 to U+00DE. A byte that cannot begin a sequence
    // ends the operation; what follows stays.
    void MakeLower();

    // Text to number: sign, digits, a point or a comma, digits, exponent. An exponent counts only after a
    // point or comma, so "1e5" is 1. Stops at the first character that does not fit; null is 0.
    static double ToDouble(const char* text);
    double ToDouble() const { return ToDouble(CStr()); }

    // The text, "" for a null string. Valid until the string changes.
    const char* CStr() const { return m_data ? m_data : ""; }
    std::string_view View() const { return {CStr(), m_length}; }
    uint32_t GetLength() const { return m_length; }
    int32_t GetCapacity() const { return m_capacity; }
    bool IsEmpty() const { return m_length == 0; }
    bool IsNull() const { return m_data == nullptr; }

    // The byte at index; 0 at and behind the end.
    char operator[](uint32_t index) const { return index < m_length ? m_data[index] : '\0'; }
    const char* begin() const { return CStr(); }
    const char* end() const { return CStr() + m_length; }

    // First position of the text at or behind start, -1 if there is none. An empty text is found at start.
    int32_t Find(const char* text, uint32_t start = 0) const;
    int32_t Find(char character, uint32_t start = 0) const;
    bool StartsWith(const char* text) const {
        return View().substr(0, std::string_view(text).size()) == text;
    }
    bool EndsWith(const char* text) const;

    // Below, equal to or above 0, bytewise; a null string equals an empty one.
    int Compare(const CVrxStringU& other) const { return View().compare(other.View()); }

    friend bool operator==(const CVrxStringU& a, const CVrxStringU& b) { return a.View() == b.View(); }
    friend bool operator==(const CVrxStringU& a, const char* b) { return a.View() == (b ? b : ""); }
    friend bool operator<(const CVrxStringU& a, const CVrxStringU& b) { return a.Compare(b) < 0; }

private:
    void Release();                        // to the null state
    bool Reallocate(uint32_t newCapacity); // keeps the text; on failure the string is null
    bool Owns(const void* bytes) const;
    bool IsAttached() const { return m_data && m_capacity == 0; }
    bool MakeOwn(); // before a change in place; false if memory ran out

    char* m_data = nullptr;
    int32_t m_capacity = 0; // bytes allocated, terminator included; 0: none, or the text has another owner
    uint32_t m_length = 0;  // bytes of text, terminator excluded
};

inline void CVrxStringU::Attach(char* text, uint32_t length) {
    if (m_capacity > 0)
        Release();
    m_data = text;
    m_capacity = 0;
    m_length = length;
}

CVrxStringU operator+(const CVrxStringU& a, const CVrxStringU& b);
CVrxStringU operator+(const CVrxStringU& a, const char* b);
CVrxStringU operator+(const char* a, const CVrxStringU& b);
