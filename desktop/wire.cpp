#include "desktop/wire.h"

namespace desktop {

namespace {

void AppendU32(std::string& out, std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8)
        out.push_back(static_cast<char>((value >> shift) & 0xFF));
}

std::uint32_t ReadU32(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
           std::uint32_t{bytes[3]} << 24;
}

} // namespace

std::string EncodeMessage(std::uint32_t number, std::string_view payload) {
    std::string out;
    out.reserve(HeaderBytes + payload.size());
    AppendU32(out, number);
    AppendU32(out, static_cast<std::uint32_t>(payload.size()));
    out.append(payload);
    return out;
}

std::string EncodeU32(std::uint32_t value) {
    std::string out;
    AppendU32(out, value);
    return out;
}

std::string EncodeTouch(TouchType type, Point screen) {
    std::string out;
    AppendU32(out, static_cast<std::uint32_t>(type));
    AppendU32(out, static_cast<std::uint32_t>(screen.x + BorderPixels));
    AppendU32(out, static_cast<std::uint32_t>(screen.y + BorderPixels));
    return out;
}

std::string Message::Text() const {
    std::string text(payload.begin(), payload.end());
    return text.substr(0, text.find('\0'));
}

std::span<std::uint8_t> MessageReader::Space() {
    if (headerFilled < HeaderBytes)
        return std::span(header).subspan(headerFilled);
    return std::span(current.payload).subspan(payloadFilled);
}

MessageReader::State MessageReader::Commit(std::size_t count) {
    if (headerFilled < HeaderBytes) {
        headerFilled += count;
        return headerFilled < HeaderBytes ? State::NeedsMore : BeginPayload();
    }
    payloadFilled += count;
    return payloadFilled < current.payload.size() ? State::NeedsMore : State::HasMessage;
}

MessageReader::State MessageReader::BeginPayload() {
    const std::uint32_t length = ReadU32(header + 4);
    current.number = ReadU32(header);
    const bool isFrame = current.number == static_cast<std::uint32_t>(Reply::Frame);
    if (length > MaxReplyBytes || (isFrame && length != FrameBytes))
        return State::Broken;
    current.payload.resize(length);
    payloadFilled = 0;
    return length == 0 ? State::HasMessage : State::NeedsMore;
}

void MessageReader::Take(Message& message) {
    std::swap(message, current);
    headerFilled = 0;
}

} // namespace desktop
