#include "foundation/stream_text.h"

#include <map>

namespace stream_text {
namespace {

const std::map<std::string, int> kCodes = {
    {"0", 0},         {"11", 1},        {"1000", 2},      {"1011", 3},    {"10100", 4},
    {"100100", 5},    {"100110", 6},    {"101011", 7},    {"1001011", 8}, {"1010100", 9},
    {"10010100", 10}, {"10010101", 11}, {"10101010", 12}, {"100111", 13}, {"10101011", -1},
};

class Reference {
public:
    Reference(const std::vector<uint8_t>& input, size_t outputSize) : m_outputSize(outputSize) {
        for (size_t i = 1; i < input.size(); i++) {
            for (int bit = 7; bit >= 0; bit--)
                m_bits += input[i] >> bit & 1 ? '1' : '0';
        }
    }

    Decoded Run(const std::vector<uint8_t>& input) {
        if (input.empty())
            return {2, ""};
        if (input[0] & 3)
            return {253, ""};
        m_windowBits = (input[0] >> 5) + 8u;
        m_literalBits = (input[0] >> 3 & 3) + 5u;
        if (m_windowBits > 10)
            return {254, ""};
        m_window = FreshWindow(size_t{1} << m_windowBits);
        uint32_t code = kGoOn;
        while (code == kGoOn)
            code = Token();
        return {code, m_output};
    }

private:
    static constexpr uint32_t kGoOn = 1000;

    size_t Left() const { return m_bits.size() - m_at; }

    uint32_t Token() {
        if (Left() == 0)
            return 0;
        bool isLiteral = m_bits[m_at] == '1';
        if (m_output.size() == m_outputSize)
            return isLiteral || Left() >= 9 ? 1 : 0;
        if (isLiteral)
            return Literal();
        if (Left() < 9)
            return 0;
        return Match();
    }

    uint32_t Literal() {
        if (Left() < 1 + m_literalBits)
            return 2;
        Emit(static_cast<char>(Number(m_at + 1, m_literalBits)));
        m_at += 1 + m_literalBits;
        return kGoOn;
    }

    uint32_t Match() {
        size_t at = m_at + 1;
        std::string code;
        while (!kCodes.contains(code))
            code += m_bits[at++];
        if (kCodes.at(code) < 0) {
            m_at = (at + 7) / 8 * 8;
            return kGoOn;
        }
        if (m_bits.size() - at < m_windowBits)
            return 2;
        size_t position = Number(at, m_windowBits);
        size_t length = static_cast<size_t>(kCodes.at(code)) + (m_windowBits > 2 * m_literalBits ? 3 : 2);
        if (position + length > m_window.size())
            return 255;
        std::string text = m_window.substr(position, length);
        if (m_output.size() + length > m_outputSize) {
            m_output += text.substr(0, m_outputSize - m_output.size());
            return 1;
        }
        for (char character : text)
            Emit(character);
        m_at = at + m_windowBits;
        return kGoOn;
    }

    void Emit(char character) {
        m_window[m_written++ % m_window.size()] = character;
        m_output += character;
    }

    size_t Number(size_t at, size_t count) const { return std::stoul(m_bits.substr(at, count), nullptr, 2); }

    size_t m_outputSize;
    std::string m_bits;
    size_t m_at = 0;
    size_t m_windowBits = 0;
    size_t m_literalBits = 0;
    std::string m_window;
    size_t m_written = 0;
    std::string m_output;
};

} // namespace

Decoded DecodeFast(const std::vector<uint8_t>& input, size_t outputSize) {
    // A guard behind the output shows writes beyond it without a sanitizer too.
    constexpr uint8_t kGuard = 0xA5;
    std::vector<uint8_t> output(outputSize + 16, kGuard);
    CVrDecompressState state;
    uint32_t code = Decompress(state, output.data(), static_cast<uint32_t>(outputSize), input.data(),
                               static_cast<uint32_t>(input.size()));
    for (size_t i = state.total; i < output.size(); i++) {
        if (output[i] != kGuard)
            return {code, "wrote behind its output"};
    }
    return {code, {output.begin(), output.begin() + state.total}};
}

Decoded DecodeByTheLetter(const std::vector<uint8_t>& input, size_t outputSize) {
    return Reference(input, outputSize).Run(input);
}

std::string FreshWindow(size_t size) {
    const std::string symbols{" \0000ei>to<ans\nr/.", 16};
    std::string window;
    uint32_t x = 0xE0000498;
    while (window.size() < size) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        for (uint32_t rest = x, k = 0; k < 8; k++, rest >>= 4)
            window += symbols[rest & 15];
    }
    return window;
}

} // namespace stream_text
