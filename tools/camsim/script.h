// What a simulated camera sends to a client, byte by byte: packets as they should be, and chosen faults.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "camsim/byte_stream.h"

namespace camsim {

constexpr std::size_t kHeaderBytes = 16;

struct Step {
    Bytes bytes;
    unsigned waitMs = 0; // before it is sent
};

// What happens behind the last step.
enum class AtEnd { Close, Silence, Repeat };

struct Script {
    std::vector<Step> steps;
    AtEnd atEnd = AtEnd::Close;
    std::size_t pieceBytes = 0; // every step is sent in pieces of so many bytes; 0: at once
};

// "VRI", the type, the length in four bytes, little-endian, and eight bytes that mean nothing.
Bytes Header(char type, std::uint32_t length);
// A header and its payload.
Bytes Packet(char type, const Bytes& payload);

// Each counts packets: before every N-th one the fault happens; 0 for never.
struct Faults {
    unsigned wrongMagic = 0; // 16 bytes that are no header
    unsigned zeroLength = 0; // a header without payload
    unsigned hugeLength = 0; // a header that promises 4 GB
    unsigned audio = 0;      // a packet of audio
    unsigned pause = 0;      // silence of pauseMs
    unsigned pauseMs = 1000;
    unsigned disconnectAfter = 0; // the connection ends behind the N-th packet
    unsigned cutIn = 0;           // the connection ends in the middle of the N-th packet
};

struct StreamOptions {
    double rate = 25; // units a second; 0: as fast as the client takes them
    bool byNal = false;
    char type = 'H'; // of the video packets
    AtEnd atEnd = AtEnd::Repeat;
    std::size_t pieceBytes = 0;
    Faults faults;
};

Script ScriptOf(const Bytes& stream, const StreamOptions& options);

} // namespace camsim
