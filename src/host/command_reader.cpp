#include "host/command_reader.h"

#include "foundation/log.h"

namespace {

constexpr const char* kTag = "CHostCommandReader::Read";

} // namespace

// Reads on until `count` bytes are in the buffer: count, 0 when nothing more came in time, negative for a
// broken link.
int32_t CHostCommandReader::read_pipe(uint8_t* buffer, uint32_t count, uint32_t& filled) {
    while (filled < count) {
        const int32_t got = m_source.Receive(buffer + filled, count - filled);
        if (got <= 0)
            return got;
        filled += static_cast<uint32_t>(got);
        m_hasReceived = true;
    }
    return static_cast<int32_t>(count);
}

CHostCommandReader::Result CHostCommandReader::Read(uint32_t& command, CVrxByteArray& payload) {
    payload.Clear();
    const int32_t header = read_pipe(m_header, kHeaderSize, m_headerFilled);
    if (header <= 0)
        return header < 0 ? Result::Broken : Result::Idle;
    m_headerFilled = 0;
    command = ReadU32(m_header, 0);
    const uint32_t length = ReadU32(m_header, 4);
    if (length > kMaxPayloadSize) {
        Log(LogError, kTag, "command %u: payload of %u bytes is too long", command, length);
        return Result::Broken;
    }
    if (length == 0)
        return Result::Command;
    uint32_t filled = 0;
    if (!payload.SetSize(length) || read_pipe(payload.GetData(), length, filled) <= 0) {
        Log(LogError, kTag, "command %u: %u of %u payload bytes came", command, filled, length);
        return Result::Broken;
    }
    return Result::Command;
}
