// Decoder of the compressed blocks of icon archives: an LZ coder for short XML-like texts. It needs no heap,
// and its window is full of the characters of such texts before the first token.
//
// A stream is one header byte and then tokens, the most significant bit of each byte first:
//
//   header   bits 7 to 5: W - 8, bits 4 and 3: L - 5, bit 2 not used, bits 1 and 0 zero
//   literal  1, L bits: the byte
//   match    0, match code of the length, W bits: position in the window
//   flush    0, kFlushCode: the rest of the current byte is skipped
//
// A position counts from the start of the window, not back from the write position; a match never wraps.
#pragma once

#include <cstdint>

namespace icon_stream {

constexpr uint8_t kHeader = 0x58; // W = 10, L = 8: what our packer writes
constexpr uint32_t kLiteralBits = 8;
constexpr uint32_t kWindowBits = 10;
constexpr uint32_t kWindowSize = 1u << kWindowBits; // bytes; the largest that is decoded

struct MatchCode {
    uint8_t bits;
    uint8_t length; // in bits
};

// The length of a match is its symbol, the index here, plus the shortest match.
constexpr uint32_t kMatchSymbols = 14;
constexpr MatchCode kMatchCodes[kMatchSymbols] = {
    {0b0, 1},        {0b11, 2},       {0b1000, 4},     {0b1011, 4},    {0b10100, 5},
    {0b100100, 6},   {0b100110, 6},   {0b101011, 6},   {0b1001011, 7}, {0b1010100, 7},
    {0b10010100, 8}, {0b10010101, 8}, {0b10101010, 8}, {0b100111, 6},
};
constexpr MatchCode kFlushCode = {0b10101011, 8};
constexpr uint32_t kLongestCode = 8; // bits

// Length of a match with symbol 0.
constexpr uint32_t ShortestMatch(uint32_t windowBits, uint32_t literalBits) {
    return windowBits > 2 * literalBits ? 3 : 2;
}
constexpr uint32_t kShortestMatch = ShortestMatch(kWindowBits, kLiteralBits);
constexpr uint32_t kLongestMatch = kMatchSymbols - 1 + kShortestMatch;

// Writes what a window holds before the first token; size is a multiple of 8.
void FillWindow(uint8_t* window, uint32_t size);

} // namespace icon_stream

enum CVrDecompressCode : uint32_t {
    DecompressDone = 0,             // the input is used up, at the end of the output or not
    DecompressOutputFull = 1,       // and input is left
    DecompressInputEnded = 2,       // inside a token, or the input is empty
    DecompressBadHeader = 253,      // a bit that must be 0 is set
    DecompressWindowTooLarge = 254, // W above 10
    DecompressBadMatch = 255,       // a match reaches beyond the window
};

// All that the decoder keeps, about 1 KB for the caller's stack. Fresh for each call of Decompress.
struct CVrDecompressState {
    uint8_t window[icon_stream::kWindowSize] = {};
    uint32_t bitBuffer = 0; // the next bit of the stream is the highest
    uint32_t bitCount = 0;  // valid bits in it, from the highest on
    uint32_t shortestMatch = 0;
    uint32_t windowPosition = 0; // where the next byte goes
    uint16_t skipCount = 0;      // bytes of the pending match that were written before the output ended
    uint32_t total = 0;          // bytes produced
    uint8_t scratch[icon_stream::kLongestMatch + 1] = {};
};

// Decodes input into output, and leaves the number of bytes produced in state.total. Any input is safe: never
// more than outputSize bytes are written, nor more than inputSize read.
CVrDecompressCode Decompress(CVrDecompressState& state, uint8_t* output, uint32_t outputSize,
                             const uint8_t* input, uint32_t inputSize);
