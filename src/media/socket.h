// The camera client's view of its connection: reads that end with one packet's payload, so that the thread
// above looks at its stop flag between them, and waits that another thread can end.
#pragma once

#include <cstdint>

#include "platform/descriptor.h"
#include "platform/tcp_client.h"

class CVrSocket {
public:
    static constexpr uint32_t kStreamPacket = 1448;   // bytes of payload in one packet
    static constexpr uint32_t kDatagramPacket = 1472; // likewise, with isUdp
    static constexpr uint32_t kTimeoutMs = 10000;     // of connecting, of one read and of one Send
    // What stands in the log for a read that nothing came for; other errors have the system's number.
    static constexpr int32_t kReceiveTimedOut = 10060;

    CVrSocket() = default;
    virtual ~CVrSocket() = default; // closes both sockets
    CVrSocket(const CVrSocket&) = delete;
    CVrSocket& operator=(const CVrSocket&) = delete;

    // Connects to an IPv4 address in network byte order. False, with a line in the log unless the wait was
    // interrupted: there is no connection.
    bool StartTcpClient(uint32_t address);

    // Reads until `size` bytes are there or less than a packet came at once: their number, 0 on nothing, -1
    // for a dead connection, which is closed then.
    int32_t Receive(void* buffer, uint32_t size);

    // True if all went out; otherwise the connection is closed.
    bool Send(const void* buffer, uint32_t size);

    void Close();

    // Ends the wait that another thread is in, and every later one until ClearInterrupt. Any thread.
    void Interrupt() { socket.Interrupt(); }
    void ClearInterrupt() { socket.ClearInterrupt(); }

    uint32_t port = 0;
    platform::Descriptor listenSocket; // nothing listens in this system
    platform::TcpClient socket;
    bool isUdp = false; // selects the packet size, no more
    uint32_t timeoutMs = kTimeoutMs;

private:
    uint32_t PacketSize() const { return isUdp ? kDatagramPacket : kStreamPacket; }
};
