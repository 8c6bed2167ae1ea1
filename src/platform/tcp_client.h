// One outgoing TCP connection with bounded waits. Interrupt ends a wait from another thread.
#pragma once

#include <cstdint>

#include "platform/descriptor.h"

namespace platform {

class TcpClient {
public:
    // Values of GetError besides the system's own error numbers.
    static constexpr int32_t kTimedOut = -1;
    static constexpr int32_t kInterrupted = -2;

    enum class Connection { Done, NoSocket, Failed };

    TcpClient() = default;
    TcpClient(const TcpClient&) = delete;
    TcpClient& operator=(const TcpClient&) = delete;

    // address: IPv4 in network byte order. Closes a former connection.
    Connection Connect(uint32_t address, uint16_t port, uint32_t timeoutMs);

    // At most count bytes, waited for at most timeoutMs: their number, 0 if the peer has closed, -1 on an
    // error, which GetError tells.
    int32_t Receive(void* buffer, uint32_t count, uint32_t timeoutMs);

    // Bytes sent, less than count only on an error, which GetError tells. timeoutMs holds for the whole.
    uint32_t Send(const void* buffer, uint32_t count, uint32_t timeoutMs);

    void Close() { m_socket.Close(); }
    bool IsOpen() const { return m_socket.IsOpen(); }
    int32_t GetError() const { return m_error; }

    // Ends a wait that another thread is in, and every later one until ClearInterrupt. The one operation that
    // any thread may call.
    void Interrupt() { m_interrupt.Raise(); }
    void ClearInterrupt() { m_interrupt.Lower(); }

private:
    bool WaitFor(short events, uint32_t timeoutMs);

    Descriptor m_socket;
    WakeDescriptor m_interrupt;
    int32_t m_error = 0;
};

} // namespace platform
