// The numbers of the byte stream between host and display; docs/protocol.md describes the stream for authors
// of hosts. All integers are little-endian; every message is an 8-byte header (command number, payload
// length) and the payload.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

static_assert(std::endian::native == std::endian::little, "the stream's integers are copied as they are");

// From the host.
enum HostCommand : uint32_t {
    CommandCreate = 1,   // creates the application
    CommandLogLevel = 2, // u32
    CommandLoad = 3,     // four NUL-terminated texts: categories, rooms, symbols, configuration
    CommandText = 4,     // text
    CommandTouch = 5,    // three u32: type, x and y in frame coordinates
    CommandEnd = 6,
    CommandSettings = 7, // JSON text
    CommandRest = 8,     // optional u32
    CommandNight = 9,    // u32
    CommandRuntime = 10, // JSON text
};

// To the host.
enum HostMessage : uint32_t {
    MessageLog = 101,   // text
    MessageFrame = 102, // 784 x 784 pixels
    MessageText = 103,  // text command to the central controller
};

constexpr uint32_t kHeaderSize = 8;             // bytes
constexpr uint32_t kMaxPayloadSize = 64u << 20; // bytes; a longer one ends the link before any allocation
constexpr uint32_t kTouchPayloadSize = 12;      // bytes
constexpr uint32_t kTouchMove = 2;              // touch type; 1 is down, 4 is up
constexpr uint32_t kPieceTimeoutMs = 100;       // between two pieces of a message, and for room to send

// The u32 at an offset within bytes that are known to reach that far.
inline uint32_t ReadU32(const uint8_t* bytes, uint32_t offset) {
    uint32_t value = 0;
    memcpy(&value, bytes + offset, sizeof value);
    return value;
}
