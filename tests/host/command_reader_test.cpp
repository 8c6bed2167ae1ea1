#include <deque>
#include <string>

#include <gtest/gtest.h>

#include "host/command_reader.h"

namespace {

using Result = CHostCommandReader::Result;

// Delivers the given pieces; an empty piece is a time-out, the end of all a broken link.
class ScriptedSource : public CHostByteSource {
public:
    int32_t Receive(void* buffer, uint32_t count) override {
        if (pieces.empty())
            return -1;
        std::string& piece = pieces.front();
        const auto size = static_cast<uint32_t>(piece.copy(static_cast<char*>(buffer), count));
        piece.erase(0, size);
        if (piece.empty())
            pieces.pop_front();
        return static_cast<int32_t>(size);
    }
    std::deque<std::string> pieces;
};

std::string Header(uint32_t command, uint32_t length) {
    const uint32_t words[] = {command, length};
    return std::string(reinterpret_cast<const char*>(words), sizeof words);
}

class CommandReaderTest : public ::testing::Test {
protected:
    Result Read() { return reader.Read(command, payload); }
    std::string Payload() const { return std::string(payload.begin(), payload.end()); }

    ScriptedSource source;
    CHostCommandReader reader{source};
    uint32_t command = 0;
    CVrxByteArray payload;
};

} // namespace

TEST_F(CommandReaderTest, CutsAStreamThatComesAsOnePieceAndAsSingleBytes) {
    const std::string stream = Header(4, 3) + "abc" + Header(8, 0) + Header(0xFFFFFFFF, 1) + "z";
    for (const size_t step : {stream.size(), size_t{1}, size_t{5}}) {
        for (size_t i = 0; i < stream.size(); i += step)
            source.pieces.push_back(stream.substr(i, step));
        ASSERT_EQ(Read(), Result::Command);
        EXPECT_EQ(command, 4u);
        EXPECT_EQ(Payload(), "abc");
        ASSERT_EQ(Read(), Result::Command);
        EXPECT_EQ(command, 8u);
        EXPECT_TRUE(payload.IsEmpty());
        ASSERT_EQ(Read(), Result::Command);
        EXPECT_EQ(command, 0xFFFFFFFF);
        EXPECT_EQ(Payload(), "z");
    }
    EXPECT_EQ(Read(), Result::Broken);
}

TEST_F(CommandReaderTest, TimeoutsWithinAHeaderLoseNothing) {
    const std::string header = Header(9, 4);
    source.pieces = {"", header.substr(0, 3), "", "", header.substr(3), "\1", std::string(3, '\0')};
    EXPECT_EQ(Read(), Result::Idle);
    EXPECT_FALSE(reader.HasReceived());
    EXPECT_EQ(Read(), Result::Idle);
    EXPECT_TRUE(reader.HasReceived());
    EXPECT_EQ(Read(), Result::Idle);
    EXPECT_EQ(Read(), Result::Command);
    EXPECT_EQ(command, 9u);
    EXPECT_EQ(payload.GetSize(), 4u);
}

TEST_F(CommandReaderTest, TimeoutWithinAPayloadEndsTheLink) {
    source.pieces = {Header(4, 3), "ab", "", "c"};
    EXPECT_EQ(Read(), Result::Broken);
}

TEST_F(CommandReaderTest, EndWithinHeaderOrPayloadEndsTheLink) {
    source.pieces = {Header(4, 3).substr(0, 5)};
    EXPECT_EQ(Read(), Result::Broken);
    source.pieces = {Header(4, 3)};
    EXPECT_EQ(Read(), Result::Broken);
}

TEST_F(CommandReaderTest, AbsurdLengthsEndTheLinkWithoutMemory) {
    for (const uint32_t length : {kMaxPayloadSize + 1, 0x80000000u, 0xFFFFFFFFu}) {
        CHostCommandReader fresh(source);
        source.pieces = {Header(11, length), "x"};
        EXPECT_EQ(fresh.Read(command, payload), Result::Broken);
        EXPECT_TRUE(payload.IsEmpty());
    }
}
