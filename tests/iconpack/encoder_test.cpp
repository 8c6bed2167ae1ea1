#include "stream_encoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "foundation/stream_text.h"

using namespace iconpack;
using namespace stream_text;

namespace {

std::vector<uint8_t> Encode(const std::string& text) {
    return EncodeStream({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

void ExpectRoundTrip(const std::string& text) {
    std::vector<uint8_t> stream = Encode(text);
    EXPECT_EQ(stream[0], 0x58);
    EXPECT_EQ(DecodeFast(stream, text.size()), (Decoded{0, text}));
    EXPECT_EQ(DecodeFast(stream, text.size() + 1), (Decoded{0, text})) << "the padding is no token";
    EXPECT_EQ(DecodeByTheLetter(stream, text.size()), (Decoded{0, text}));
}

std::string RandomText(std::mt19937& random, size_t size, uint32_t symbols) {
    std::string text;
    for (size_t i = 0; i < size; i++)
        text += static_cast<char>(random() % symbols);
    return text;
}

// The fewest bits for a text, by trying every position and every token.
size_t FewestBits(const std::string& text, const std::string& window, size_t at, std::vector<size_t>& known) {
    if (at == text.size() || known[at])
        return known[at];
    std::string next = window;
    next[at] = text[at];
    size_t best = 9 + FewestBits(text, next, at + 1, known);
    for (size_t length = 2; length <= 15 && at + length <= text.size(); length++) {
        if (window.find(text.substr(at, length)) == std::string::npos)
            break;
        next = window;
        next.replace(at, length, text, at, length);
        best = std::min(best, 11 + icon_stream::kMatchCodes[length - 2].length +
                                  FewestBits(text, next, at + length, known));
    }
    return known[at] = best;
}

} // namespace

TEST(EncoderTest, TextsOfAllKindsComeBack) {
    std::mt19937 random(7);
    ExpectRoundTrip("");
    ExpectRoundTrip("a");
    ExpectRoundTrip(std::string(5000, 'a'));
    ExpectRoundTrip(FreshWindow() + FreshWindow());
    for (uint32_t symbols : {1u, 2u, 16u, 256u}) {
        for (size_t size : {2u, 15u, 1023u, 1024u, 1025u, 3000u})
            ExpectRoundTrip(RandomText(random, size, symbols));
    }
}

TEST(EncoderTest, NoStreamIsShorter) {
    std::mt19937 random(9);
    const std::string phrases[] = {"<path d=\"", "M12 3", "v18", "\" />\n  ", "a2 2 0 0 1-2 2", " 0 0 1"};
    for (int i = 0; i < 20; i++) {
        std::string text;
        while (text.size() < 150)
            text +=
                random() % 4 ? phrases[random() % 6] : std::string(1, static_cast<char>('0' + random() % 10));
        std::vector<size_t> known(text.size() + 1);
        size_t bits = FewestBits(text, FreshWindow(), 0, known);
        EXPECT_EQ(Encode(text).size(), 1 + (bits + 7) / 8) << text;
    }
}
