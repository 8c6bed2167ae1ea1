// Cuts the host's byte stream into commands.
//
// Bytes of a header that came before a time-out are kept for the next call, so that a quiet host is never out
// of step. Within a payload a time-out is the end: the host has kPieceTimeoutMs between two pieces.
#pragma once

#include <cstdint>

#include "foundation/byte_array.h"
#include "host/protocol.h"

class CHostByteSource {
public:
    virtual ~CHostByteSource() = default;

    // At most count bytes: their number, 0 if none came within kPieceTimeoutMs, negative for a broken link.
    virtual int32_t Receive(void* buffer, uint32_t count) = 0;
};

class CHostCommandReader {
public:
    enum class Result {
        Command, // a whole command has been read
        Idle,    // nothing to do now
        Broken,  // the link has ended
    };

    explicit CHostCommandReader(CHostByteSource& source) : m_source(source) {}

    // The payload is emptied first.
    Result Read(uint32_t& command, CVrxByteArray& payload);

    // Whether any byte has ever come.
    bool HasReceived() const { return m_hasReceived; }

private:
    int32_t read_pipe(uint8_t* buffer, uint32_t count, uint32_t& filled);

    CHostByteSource& m_source;
    uint8_t m_header[kHeaderSize] = {};
    uint32_t m_headerFilled = 0; // bytes of m_header that have come
    bool m_hasReceived = false;
};
