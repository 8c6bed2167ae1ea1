// The outgoing side of the pipe: a ring of bytes and one thread that empties it into the client's socket.
//
// A message is taken whole or not at all, so that a slow client never sees a part of one followed by another:
// Send waits a limited time for room, copies and returns; nothing of the caller's memory is referenced
// afterwards.
#pragma once

#include <cstdint>
#include <pthread.h>

#include "platform/descriptor.h"
#include "platform/thread.h"

namespace platform {

class PipeWriter {
public:
    static constexpr uint32_t kCapacity = 16777216; // bytes

    PipeWriter();
    ~PipeWriter();
    PipeWriter(const PipeWriter&) = delete;
    PipeWriter& operator=(const PipeWriter&) = delete;

    // Begins to send to the socket, which must not block and must stay open until Stop; false if there is no
    // memory or no thread.
    bool Start(int socket);

    // Queues header and payload as one message. False, and nothing of it queued, if there is no room within
    // timeoutMs, the message is larger than the ring, or the writer is stopped or has lost its client. From
    // any thread; senders that wait are served one after the other. Once one has waited in vain, nobody waits
    // again until the client has taken a byte: a client that reads nothing must not slow every line of the
    // log down.
    bool Send(const void* header, uint32_t headerSize, const void* payload, uint32_t payloadSize,
              uint32_t timeoutMs);

    // Whether a message of this size, header included, would find room now. From any thread.
    bool HasRoomFor(uint64_t size);

    // Refuses new messages, gives the queued ones at most graceMs to leave and ends the thread.
    void Stop(uint32_t graceMs);

private:
    static void Enter(void* self);
    void SendLoop();
    bool SendPiece(const uint8_t* bytes, uint32_t count, uint32_t& sent);
    bool WaitForRoom(uint32_t count, uint32_t timeoutMs);
    void Put(const void* bytes, uint32_t count);

    pthread_mutex_t m_mutex;
    pthread_cond_t m_filled;  // for the writer thread: bytes came, or the end
    pthread_cond_t m_emptied; // for senders and Stop: room came, or the end
    pthread_mutex_t m_turn;   // held by the sender that waits for room, so that the order is kept

    // Below: guarded by m_mutex. The writer thread reads [m_tail, m_tail + m_used) without it, which nobody
    // changes.
    uint8_t* m_ring = nullptr;
    uint32_t m_tail = 0; // first byte to be sent
    uint32_t m_used = 0;
    bool m_isOpen = false;    // takes messages
    bool m_isEnding = false;  // the thread ends
    bool m_isStalled = false; // a sender has waited in vain and the client has taken nothing since

    int m_socket = -1;
    WakeDescriptor m_wake; // ends the thread's wait for the socket
    NativeThread m_thread;
};

} // namespace platform
