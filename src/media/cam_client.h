// Receives a door station's camera stream over one TCP connection and keeps it, unit by unit, in a ring from
// which the decoder thread takes.
//
// The wire, all integers little-endian: headers of 16 bytes, each followed by its payload.
//
//     0  "VRI"    3  type, a letter    4  u32 payload length    8  8 bytes
//
//     'C'  client to server  the hello, without payload; bytes 8 to 15 are two random numbers
//     'A'  server to client  audio
//     any other letter       one H.264 byte stream unit, kept whole; bytes 8 to 15 are ignored
//
// The ring. One thread writes and one reads; they meet in two indices. The slot at readIndex is the reader's
// until it releases it, the slot at writeIndex is being filled, what lies between waits. A unit for which the
// ring has no place once it is complete is dropped whole, and its slot is filled again: the reader never sees
// a slot change. So seven units are held at most, that of the reader included.
//
// A stream that gets out of step (16 bytes that are no header, a length that no unit can have) is searched
// byte by byte for the next header.
//
// The owner sets `address`, calls Start, and later RequestStop, which ends a connect or a read at once.
#pragma once

#include <atomic>
#include <cstdint>

#include "foundation/byte_array.h"
#include "foundation/thread.h"
#include "media/audio_ring.h"
#include "media/socket.h"

class CCamClient : public CVrThread {
public:
    static constexpr uint16_t kPort = 1818;
    static constexpr uint32_t kHeaderBytes = 16;
    static constexpr uint32_t kRingSlots = 8;
    static constexpr uint32_t kFirstUnitBytes = 65536;
    // Longest payload; no picture that fits the decoder's memory needs as much, even coded raw.
    static constexpr uint32_t kMaxPayload = 2097152;

    // Values of `streamState`.
    enum StreamState : uint32_t { NotConnected = 0, Connected = 1, StreamEnded = 2 };

    CCamClient();
    ~CCamClient() override;

    // Waits for a former run that was asked to stop, empties both rings, starts.
    bool Start(uint32_t threadPriority = 0, uint32_t threadStackSize = 0) override;
    void MainLoop() override;
    void Wakeup() override;

    // ---- The reader's side of the ring ----

    struct Unit {
        uint8_t* bytes = nullptr; // null only with a size of 0
        uint32_t size = 0;
    };
    // The oldest unit, which is the reader's, to change as it likes, until it calls ReleaseUnit. False: the
    // ring is empty.
    bool PeekUnit(Unit* unit);
    void ReleaseUnit();

    CVrSocket net;
    uint32_t timeoutSec = 0; // of a read, once connected
    uint32_t address = 0;    // the server's IPv4 address in network byte order
    std::atomic<uint32_t> streamState{NotConnected};
    CVrxByteArray scratch;   // a packet of audio on its way to the ring
    CVrxByteArray outHeader; // for sending; nothing sends it in this system
    CVrxByteArray frames[kRingSlots];
    uint32_t frameSizes[kRingSlots] = {};
    uint32_t fill = 0; // bytes received of the unit now arriving
    std::atomic<uint32_t> readIndex{0};
    std::atomic<uint32_t> writeIndex{0};
    CVrAudioRing audioIn;
    CVrAudioRing audioOut;
    uint8_t inHeader[kHeaderBytes] = {}; // the header being handled
    uint8_t hello[kHeaderBytes] = {};

protected:
    // One step of the loop: a header, or a piece of a payload. False: the connection is dead.
    bool ReceivePass();

    // Where the bytes come from and what happens behind a unit, for a test that has no network and no time.
    virtual int32_t ReceiveBytes(uint8_t* buffer, uint32_t size) { return net.Receive(buffer, size); }
    virtual void PauseAfterUnit();

private:
    bool ReceiveHeader();
    bool ReceiveAudio();
    bool ReceiveVideo();
    void SearchHeader();
    bool BeginPayload();
    bool LoseStep();
    void PublishUnit();
    bool SendHello();
    char Type() const { return static_cast<char>(inHeader[3]); }

    uint32_t headerFill = 0;  // bytes of inHeader that are there
    uint32_t payloadLeft = 0; // bytes of the payload still to come
    bool isInStep = true;     // the last 16 bytes looked at were a header
    bool isDropping = false;  // the last unit found no place in the ring
};
