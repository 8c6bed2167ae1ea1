// The byte format between host and display: message numbers, header, frame geometry, and the cutting of a
// byte stream into messages. docs/protocol.md describes the same for authors of other hosts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace desktop {

enum class Command : std::uint32_t {
    Create = 1,
    LogLevel = 2,
    Load = 3,
    Text = 4,
    Touch = 5,
    End = 6,
    Settings = 7,
    Rest = 8,
    Night = 9,
    Runtime = 10,
};

enum class Reply : std::uint32_t { Log = 101, Frame = 102, TextCommand = 103 };

enum class TouchType : std::uint32_t { Down = 1, Move = 2, Up = 4 };

constexpr std::size_t HeaderBytes = 8;
constexpr int ScreenPixels = 720;                            // width and height of the display
constexpr int BorderPixels = 32;                             // on each side of the screen
constexpr int FramePixels = ScreenPixels + 2 * BorderPixels; // 784, width and height of a frame
constexpr int PixelBytes = 4;                                // blue, green, red, alpha
constexpr std::size_t FrameBytes = std::size_t{FramePixels} * FramePixels * PixelBytes;
constexpr std::uint32_t MaxReplyBytes = 16u << 20; // what the display sends is a frame or a short text
constexpr std::size_t MaxCommandBytes = 64u << 20; // the display ends the link above this

struct Point {
    int x = 0; // screen pixels, 0 at the left
    int y = 0; // screen pixels, 0 at the top
    bool operator==(const Point&) const = default;
};

// Header and payload, ready to be written in one piece.
std::string EncodeMessage(std::uint32_t number, std::string_view payload);
std::string EncodeU32(std::uint32_t value);
std::string EncodeTouch(TouchType type, Point screen); // payload; adds the border

struct Message {
    std::uint32_t number = 0;
    std::vector<std::uint8_t> payload;

    // The payload of a log line or text command without its terminating NUL.
    std::string Text() const;
};

// Cuts a byte stream into messages. The caller reads straight into Space() and reports with Commit(), so that
// a frame is copied once, by the kernel.
class MessageReader {
public:
    enum class State { NeedsMore, HasMessage, Broken };

    std::span<std::uint8_t> Space(); // never empty
    State Commit(std::size_t count); // count bytes of Space() are filled

    // After HasMessage: swaps the message out; the buffer handed in is used for the next one.
    void Take(Message& message);

    // Whether the stream may end here without cutting a message in two.
    bool AtBoundary() const { return headerFilled == 0; }

private:
    State BeginPayload();

    std::uint8_t header[HeaderBytes] = {};
    std::size_t headerFilled = 0;
    std::size_t payloadFilled = 0;
    Message current;
};

} // namespace desktop
