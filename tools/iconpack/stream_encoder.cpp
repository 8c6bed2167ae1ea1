#include "stream_encoder.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "foundation/decompressor.h"

namespace iconpack {
namespace {

using namespace icon_stream;

// The longest text of the window that is also the next text; length 0 if not even the shortest match is
// there.
struct Match {
    uint32_t position = 0;
    uint32_t length = 0;
};

class BitWriter {
public:
    void Put(uint32_t bits, uint32_t count) {
        while (count-- > 0) {
            if (m_used % 8 == 0)
                m_bytes.push_back(0);
            if (bits >> count & 1)
                m_bytes.back() |= static_cast<uint8_t>(0x80 >> m_used % 8);
            m_used++;
        }
    }
    std::vector<uint8_t> Take() { return std::move(m_bytes); }

private:
    std::vector<uint8_t> m_bytes;
    size_t m_used = 0; // bits
};

// Finds matches, with the window as it is when the decoder stands at a position. Positions are visited in
// order.
class MatchFinder {
public:
    explicit MatchFinder(std::span<const uint8_t> text) : m_text(text) {
        FillWindow(m_window.data(), kWindowSize);
    }

    Match Find(size_t at) const {
        Match best;
        uint32_t limit = static_cast<uint32_t>(std::min<size_t>(kLongestMatch, m_text.size() - at));
        const uint8_t* begin = m_window.data();
        const uint8_t* end = begin + kWindowSize;
        for (const uint8_t* candidate = begin; best.length < limit && candidate != end; candidate++) {
            size_t rest = static_cast<size_t>(end - candidate);
            candidate = static_cast<const uint8_t*>(memchr(candidate, m_text[at], rest));
            if (!candidate)
                break;
            uint32_t position = static_cast<uint32_t>(candidate - begin);
            uint32_t length = CommonLength(position, at, std::min(limit, kWindowSize - position));
            if (length >= kShortestMatch && length > best.length)
                best = {position, length};
        }
        return best;
    }

    void Advance(size_t at) { m_window[at % kWindowSize] = m_text[at]; }

private:
    uint32_t CommonLength(uint32_t position, size_t at, uint32_t limit) const {
        uint32_t length = 0;
        while (length < limit && m_window[position + length] == m_text[at + length])
            length++;
        return length;
    }

    std::span<const uint8_t> m_text;
    std::array<uint8_t, kWindowSize> m_window = {};
};

constexpr uint32_t kLiteralCost = 1 + kLiteralBits;

uint32_t MatchCost(uint32_t length) {
    return 1u + kMatchCodes[length - kShortestMatch].length + kWindowBits;
}

// For each position the length of its token on the cheapest way to the end: 1 is a literal. A part of a match
// is a match too, and the code lengths are not in order, so all lengths up to the longest are tried.
std::vector<uint32_t> ChooseTokens(const std::vector<Match>& matches) {
    std::vector<uint32_t> chosen(matches.size(), 1);
    std::vector<uint32_t> cost(matches.size() + 1, 0); // bits from a position to the end
    for (size_t i = matches.size(); i-- > 0;) {
        cost[i] = kLiteralCost + cost[i + 1];
        for (uint32_t length = kShortestMatch; length <= matches[i].length; length++) {
            uint32_t candidate = MatchCost(length) + cost[i + length];
            if (candidate < cost[i]) {
                cost[i] = candidate;
                chosen[i] = length;
            }
        }
    }
    return chosen;
}

} // namespace

std::vector<uint8_t> EncodeStream(std::span<const uint8_t> text) {
    MatchFinder finder(text);
    std::vector<Match> matches;
    for (size_t i = 0; i < text.size(); i++) {
        matches.push_back(finder.Find(i));
        finder.Advance(i);
    }
    std::vector<uint32_t> tokens = ChooseTokens(matches);

    BitWriter writer;
    writer.Put(kHeader, 8);
    for (size_t i = 0; i < text.size(); i += tokens[i]) {
        bool isMatch = tokens[i] > 1;
        writer.Put(!isMatch, 1);
        if (isMatch) {
            MatchCode code = kMatchCodes[tokens[i] - kShortestMatch];
            writer.Put(code.bits, code.length);
            writer.Put(matches[i].position, kWindowBits);
        } else {
            writer.Put(text[i], kLiteralBits);
        }
    }
    return writer.Take();
}

} // namespace iconpack
