#include "foundation/utf8.h"

namespace {

constexpr uint32_t kMaxSequence = 4;

bool IsContinuation(uint8_t byte) {
    return (byte & 0xC0) == 0x80;
}

uint32_t LengthByLead(uint8_t lead) {
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        return 2;
    if (lead >= 0xE0 && lead <= 0xEF)
        return 3;
    return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

// The second byte is what rules out overlong forms, surrogates and code points that are too large.
bool IsSecondByteAllowed(uint8_t lead, uint8_t second) {
    switch (lead) {
    case 0xE0:
        return second >= 0xA0;
    case 0xED:
        return second <= 0x9F;
    case 0xF0:
        return second >= 0x90;
    case 0xF4:
        return second <= 0x8F;
    default:
        return true;
    }
}

} // namespace

uint32_t Utf8SequenceLength(const char* text, uint32_t available) {
    if (available == 0)
        return 0;
    const auto* bytes = reinterpret_cast<const uint8_t*>(text);
    const uint32_t length = LengthByLead(bytes[0]);
    if (length > available || (length > 1 && !IsSecondByteAllowed(bytes[0], bytes[1])))
        return 0;
    for (uint32_t i = 1; i < length; i++) {
        if (!IsContinuation(bytes[i]))
            return 0;
    }
    return length;
}

void ReplaceInvalidUtf8(char* text, uint32_t length) {
    for (uint32_t i = 0; i < length;) {
        const uint32_t step = Utf8SequenceLength(text + i, length - i);
        if (step == 0)
            text[i] = '?';
        i += step == 0 ? 1 : step;
    }
}

uint32_t Utf8WithoutCutEnd(const char* text, uint32_t length) {
    uint32_t lead = length;
    while (lead > 0 && length - lead < kMaxSequence) {
        lead--;
        if (!IsContinuation(static_cast<uint8_t>(text[lead])))
            return LengthByLead(static_cast<uint8_t>(text[lead])) > length - lead ? lead : length;
    }
    return length;
}
