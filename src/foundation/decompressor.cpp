#include "foundation/decompressor.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace icon_stream {

void FillWindow(uint8_t* window, uint32_t size) {
    static constexpr char kSymbols[16] = {' ', '\0', '0', 'e', 'i',  '>', 't', 'o',
                                          '<', 'a',  'n', 's', '\n', 'r', '/', '.'};
    uint32_t random = 0xE0000498;
    for (uint32_t i = 0; i < size; i += 8) {
        random ^= random << 13;
        random ^= random >> 17;
        random ^= random << 5;
        for (uint32_t k = 0; k < 8; k++)
            window[i + k] = static_cast<uint8_t>(kSymbols[random >> (4 * k) & 15]);
    }
}

} // namespace icon_stream

namespace {

using namespace icon_stream;

constexpr uint32_t kFlushSymbol = 15;

struct CodeEntry {
    uint8_t symbol = 0;
    uint8_t length = 0; // bits; 0: no code, which a complete set of codes has nowhere
};
using CodeTable = std::array<CodeEntry, 1u << kLongestCode>;

constexpr void AddCode(CodeTable& table, MatchCode code, uint32_t symbol) {
    uint32_t spare = kLongestCode - code.length;
    for (uint32_t i = 0; i < 1u << spare; i++)
        table[(static_cast<uint32_t>(code.bits) << spare) + i] = {static_cast<uint8_t>(symbol), code.length};
}

// Indexed by the next kLongestCode bits of the stream.
constexpr CodeTable MakeCodeTable() {
    CodeTable table{};
    for (uint32_t symbol = 0; symbol < kMatchSymbols; symbol++)
        AddCode(table, kMatchCodes[symbol], symbol);
    AddCode(table, kFlushCode, kFlushSymbol);
    return table;
}
constexpr CodeTable kCodeTable = MakeCodeTable();
static_assert(std::all_of(kCodeTable.begin(), kCodeTable.end(),
                          [](CodeEntry entry) { return entry.length != 0; }),
              "every run of bits is the start of a code");

class Decoder {
public:
    Decoder(CVrDecompressState& state, uint8_t* output, uint32_t outputSize, const uint8_t* input,
            uint32_t inputSize)
        : m_state(state),
          m_output(output),
          m_outputSize(outputSize),
          m_input(input),
          m_inputEnd(input + inputSize) {}

    CVrDecompressCode Run() {
        if (m_input == m_inputEnd)
            return DecompressInputEnded;
        m_result = ReadHeader();
        if (m_result != DecompressDone)
            return m_result;
        FillWindow(m_state.window, m_windowSize);
        while (DecodeToken()) {
        }
        return m_result;
    }

private:
    CVrDecompressCode ReadHeader() {
        uint8_t header = *m_input++;
        if (header & 0b11)
            return DecompressBadHeader;
        m_windowBits = (header >> 5) + 8u;
        m_literalBits = (header >> 3 & 0b11) + 5u;
        m_windowSize = 1u << m_windowBits;
        m_state.shortestMatch = ShortestMatch(m_windowBits, m_literalBits);
        return m_windowSize > kWindowSize ? DecompressWindowTooLarge : DecompressDone;
    }

    // False at the end, with m_result set.
    bool DecodeToken() {
        Refill();
        if (m_state.bitCount == 0)
            return End(DecompressDone);
        if (m_state.total == m_outputSize)
            return End(TokenIsLeft() ? DecompressOutputFull : DecompressDone);
        return NextBitIsSet() ? DecodeLiteral() : DecodeMatch();
    }

    bool DecodeLiteral() {
        if (m_state.bitCount < 1 + m_literalBits)
            return End(DecompressInputEnded);
        TakeBits(1);
        uint8_t byte = static_cast<uint8_t>(TakeBits(m_literalBits));
        m_output[m_state.total++] = byte;
        PutInWindow(byte);
        return true;
    }

    bool DecodeMatch() {
        // Too short for a code: the bits that fill up the last byte. The buffer is that low only without
        // input.
        if (m_state.bitCount < 1 + kLongestCode)
            return End(DecompressDone);
        CodeEntry entry = kCodeTable[(m_state.bitBuffer << 1) >> (32 - kLongestCode)];
        uint32_t prefixBits = 1u + entry.length;
        if (entry.symbol == kFlushSymbol) {
            TakeBits(prefixBits);
            TakeBits(m_state.bitCount % 8);
            return true;
        }
        if (m_state.bitCount < prefixBits + m_windowBits)
            return End(DecompressInputEnded);
        uint32_t position = (m_state.bitBuffer << prefixBits) >> (32 - m_windowBits);
        uint32_t length = entry.symbol + m_state.shortestMatch;
        if (position + length > m_windowSize)
            return End(DecompressBadMatch);
        if (!CopyMatch(position, length))
            return End(DecompressOutputFull);
        TakeBits(prefixBits + m_windowBits);
        return true;
    }

    // False if the output ended before the match; the token then stays unread, and skipCount tells how far it
    // came.
    bool CopyMatch(uint32_t position, uint32_t length) {
        uint32_t room = m_outputSize - m_state.total;
        uint32_t copied = std::min(length, room);
        memcpy(m_output + m_state.total, m_state.window + position, copied);
        m_state.total += copied;
        m_state.skipCount = static_cast<uint16_t>(copied == length ? 0 : copied);
        if (copied < length)
            return false;
        // Source and destination may overlap in the window, and it is the old bytes that count.
        memcpy(m_state.scratch, m_state.window + position, length);
        for (uint32_t i = 0; i < length; i++)
            PutInWindow(m_state.scratch[i]);
        return true;
    }

    void PutInWindow(uint8_t byte) {
        m_state.window[m_state.windowPosition] = byte;
        m_state.windowPosition = (m_state.windowPosition + 1) & (m_windowSize - 1);
    }

    void Refill() {
        while (m_state.bitCount <= 24 && m_input != m_inputEnd) {
            m_state.bitBuffer |= static_cast<uint32_t>(*m_input++) << (24 - m_state.bitCount);
            m_state.bitCount += 8;
        }
    }

    bool NextBitIsSet() const { return m_state.bitBuffer >> 31; }

    // Whether what is left can be more than the bits that fill up the last byte.
    bool TokenIsLeft() const {
        return m_input != m_inputEnd || NextBitIsSet() || m_state.bitCount >= 1 + kLongestCode;
    }

    // At most 24 bits, no more than there are.
    uint32_t TakeBits(uint32_t count) {
        if (count == 0)
            return 0;
        uint32_t bits = m_state.bitBuffer >> (32 - count);
        m_state.bitBuffer <<= count;
        m_state.bitCount -= count;
        return bits;
    }

    bool End(CVrDecompressCode result) {
        m_result = result;
        return false;
    }

    CVrDecompressState& m_state;
    uint8_t* m_output;
    uint32_t m_outputSize;
    const uint8_t* m_input;
    const uint8_t* m_inputEnd;
    uint32_t m_windowBits = 0;
    uint32_t m_windowSize = 0;
    uint32_t m_literalBits = 0;
    CVrDecompressCode m_result = DecompressDone;
};

} // namespace

CVrDecompressCode Decompress(CVrDecompressState& state, uint8_t* output, uint32_t outputSize,
                             const uint8_t* input, uint32_t inputSize) {
    return Decoder(state, output, outputSize, input, inputSize).Run();
}
