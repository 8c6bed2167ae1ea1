// The decoder of compressed icons: tokens by hand, and random and damaged streams against the letter of the
// format.
#include "foundation/decompressor.h"

#include <gtest/gtest.h>

#include <random>

#include "foundation/stream_text.h"

using namespace stream_text;

namespace {

uint32_t Below(uint32_t limit, std::mt19937& random) {
    return static_cast<uint32_t>(random() % limit);
}

// Tokens at random with all lengths, some flushes, and every third stream cut or with flipped bits.
std::vector<uint8_t> RandomStream(std::mt19937& random) {
    static constexpr uint8_t kHeaders[] = {0x58, 0x58, 0x58, 0x40, 0x38, 0x00, 0x5C, 0x18};
    Stream stream(kHeaders[Below(8, random)]);
    for (uint32_t i = Below(60, random); i > 0; i--) {
        uint32_t kind = Below(16, random);
        if (kind == 0)
            stream.Flush();
        else if (kind < 8)
            stream.Literal(static_cast<char>(random()));
        else
            stream.Match(Below(1012, random), 2 + Below(14, random));
    }
    std::vector<uint8_t> bytes = stream.Bytes();
    if (Below(3, random) == 0)
        bytes.resize(Below(static_cast<uint32_t>(bytes.size() + 1), random));
    if (Below(3, random) == 0 && bytes.size() > 1)
        bytes[1 + Below(static_cast<uint32_t>(bytes.size() - 1), random)] ^=
            static_cast<uint8_t>(1 << Below(8, random));
    return bytes;
}

} // namespace

TEST(DecompressorTest, LiteralsAndMatchesFillTheWindowFromItsStart) {
    std::vector<uint8_t> stream = Stream().Literals("abcdefgh").Match(2, 5).Match(7, 6).Bytes();
    // Behind the 8 literals and the first match, window positions 7 to 12 hold h and that match.
    EXPECT_EQ(DecodeFast(stream, 19), (Decoded{0, "abcdefghcdefghcdefg"}));
}

TEST(DecompressorTest, TheFirstMatchReadsTheCharactersThatTheWindowBeginsWith) {
    std::string window = FreshWindow();
    std::vector<uint8_t> stream = Stream().Match(0, 15).Match(1009, 15).Match(500, 2).Bytes();
    // 15 bytes have overwritten positions 0 to 14 with themselves.
    EXPECT_EQ(DecodeFast(stream, 32),
              (Decoded{0, window.substr(0, 15) + window.substr(1009, 15) + window.substr(500, 2)}));
}

TEST(DecompressorTest, AMatchThatOverlapsTheWritePositionReadsTheOldBytes) {
    std::string window = FreshWindow();
    std::vector<uint8_t> stream = Stream().Literals("ab").Match(1, 8).Bytes();
    EXPECT_EQ(DecodeFast(stream, 10).text, "abb" + window.substr(2, 7));
}

TEST(DecompressorTest, AFlushSkipsTheRestOfItsByte) {
    std::vector<uint8_t> stream =
        Stream().Literals("abc").Flush().Literals("d").Flush().Flush().Literals("e").Bytes();
    EXPECT_EQ(DecodeFast(stream, 5), (Decoded{0, "abcde"}));
}

TEST(DecompressorTest, HeadersThatAreRefusedHaveTheirOwnCodes) {
    EXPECT_EQ(DecodeFast({}, 10).code, 2u);
    EXPECT_EQ(DecodeFast({0x5A}, 10).code, 253u);
    EXPECT_EQ(DecodeFast({0x59}, 10).code, 253u);
    EXPECT_EQ(DecodeFast({0x78}, 10).code, 254u); // W = 11
    EXPECT_EQ(DecodeFast({0xF8}, 10).code, 254u);
    EXPECT_EQ(DecodeFast({0x58}, 10), (Decoded{0, ""}));
    EXPECT_EQ(DecodeFast(Stream(0x5C).Literals("a").Bytes(), 1), (Decoded{0, "a"})); // bit 2 is not used
}

TEST(DecompressorTest, MatchesReachTheEndOfTheWindowAndNotBeyond) {
    EXPECT_EQ(DecodeFast(Stream().Match(1022, 2).Bytes(), 99).code, 0u);
    EXPECT_EQ(DecodeFast(Stream().Match(1023, 2).Bytes(), 99).code, 255u);
    EXPECT_EQ(DecodeFast(Stream().Match(1009, 15).Bytes(), 99).code, 0u);
    EXPECT_EQ(DecodeFast(Stream().Match(1010, 15).Bytes(), 99).code, 255u);
}

TEST(DecompressorTest, AnOutputOneByteTooSmallLeavesInput) {
    std::vector<uint8_t> endsInLiteral = Stream().Literals("abc").Bytes();
    EXPECT_EQ(DecodeFast(endsInLiteral, 2), (Decoded{1, "ab"}));
    std::vector<uint8_t> endsInMatch = Stream().Literals("abc").Match(0, 3).Bytes();
    EXPECT_EQ(DecodeFast(endsInMatch, 5), (Decoded{1, "abcab"}));
    EXPECT_EQ(DecodeFast(endsInMatch, 0), (Decoded{1, ""}));
}

TEST(DecompressorTest, TheSkipCountTellsHowMuchOfAMatchFitted) {
    std::vector<uint8_t> stream = Stream().Literals("abcdef").Match(0, 6).Bytes();
    uint8_t output[10];
    CVrDecompressState state;
    EXPECT_EQ(Decompress(state, output, 10, stream.data(), static_cast<uint32_t>(stream.size())),
              DecompressOutputFull);
    EXPECT_EQ(state.skipCount, 4);
    EXPECT_EQ(state.total, 10u);
}

TEST(DecompressorTest, EveryCutOfAStreamEndsWithTheTextSoFar) {
    std::vector<uint8_t> stream = Stream().Literals("abcd").Match(0, 4).Match(100, 9).Literals("xyz").Bytes();
    std::string whole = DecodeFast(stream, 99).text;
    for (size_t size = 1; size < stream.size(); size++) {
        Decoded cut = DecodeFast({stream.begin(), stream.begin() + static_cast<long>(size)}, 99);
        EXPECT_TRUE(cut.code == 0 || cut.code == 2) << size;
        EXPECT_EQ(cut.text, whole.substr(0, cut.text.size())) << size;
        EXPECT_LT(cut.text.size(), whole.size()) << size;
    }
    stream.pop_back(); // inside the last literal
    EXPECT_EQ(DecodeFast(stream, 99).code, 2u);
}

TEST(DecompressorTest, RandomStreamsDecodeAsTheFormatSays) {
    std::mt19937 random(5);
    for (int i = 0; i < 20000; i++) {
        std::vector<uint8_t> stream = RandomStream(random);
        size_t outputSize = random() % 700;
        Decoded fast = DecodeFast(stream, outputSize);
        Decoded expected = DecodeByTheLetter(stream, outputSize);
        ASSERT_EQ(fast.code, expected.code) << "stream " << i;
        ASSERT_EQ(fast.text, expected.text) << "stream " << i;
    }
}
