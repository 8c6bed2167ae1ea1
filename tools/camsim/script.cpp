#include "camsim/script.h"

#include <cmath>

namespace camsim {

namespace {

constexpr char kAudio = 'A';
constexpr std::size_t kAudioBytes = 320; // 20 ms of 8,000 samples a second, 16 bits
constexpr std::uint32_t kHugeLength = 0xFFFFFFF0;
constexpr double kMsPerSecond = 1000;

bool IsDue(unsigned every, std::size_t packet) {
    return every != 0 && packet % every == 0;
}

void AddFaults(const Faults& faults, std::size_t packet, char type, Script* script) {
    if (IsDue(faults.pause, packet))
        script->steps.push_back({{}, faults.pauseMs});
    if (IsDue(faults.wrongMagic, packet))
        script->steps.push_back({Bytes(kHeaderBytes, 'x')});
    if (IsDue(faults.zeroLength, packet))
        script->steps.push_back({Header(type, 0)});
    if (IsDue(faults.hugeLength, packet))
        script->steps.push_back({Header(type, kHugeLength)});
    if (IsDue(faults.audio, packet))
        script->steps.push_back({Packet(kAudio, Bytes(kAudioBytes))});
}

} // namespace

Bytes Header(char type, std::uint32_t length) {
    Bytes header = {'V', 'R', 'I', static_cast<std::uint8_t>(type)};
    for (unsigned shift = 0; shift < 32; shift += 8)
        header.push_back(static_cast<std::uint8_t>(length >> shift));
    header.resize(kHeaderBytes);
    return header;
}

Bytes Packet(char type, const Bytes& payload) {
    Bytes packet = Header(type, static_cast<std::uint32_t>(payload.size()));
    packet.insert(packet.end(), payload.begin(), payload.end());
    return packet;
}

Script ScriptOf(const Bytes& stream, const StreamOptions& options) {
    Script script;
    script.atEnd = options.atEnd;
    script.pieceBytes = options.pieceBytes;
    const double period = options.rate > 0 ? kMsPerSecond / options.rate : 0;
    const auto units = options.byNal ? SplitNalUnits(stream) : SplitAccessUnits(stream);
    for (std::size_t i = 0; i < units.size(); ++i) {
        const std::size_t packet = i + 1; // counted from 1
        AddFaults(options.faults, packet, options.type, &script);
        // Whole milliseconds whose sum does not run away from the rate.
        const double wait =
            std::floor(period * static_cast<double>(packet)) - std::floor(period * static_cast<double>(i));
        script.steps.push_back({Packet(options.type, units[i]), static_cast<unsigned>(wait)});
        const bool cut = packet == options.faults.cutIn;
        if (cut)
            script.steps.back().bytes.resize(script.steps.back().bytes.size() / 2);
        if (cut || packet == options.faults.disconnectAfter) {
            script.atEnd = AtEnd::Close;
            break;
        }
    }
    return script;
}

} // namespace camsim
