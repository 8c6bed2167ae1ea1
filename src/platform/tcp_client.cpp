#include "platform/tcp_client.h"

#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include "platform/wait.h"

namespace platform {

namespace {

int PendingError(int socket) {
    int error = 0;
    socklen_t size = sizeof error;
    return getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

} // namespace

TcpClient::Connection TcpClient::Connect(uint32_t address, uint16_t port, uint32_t timeoutMs) {
    m_socket = Descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!m_socket.IsOpen()) {
        m_error = errno;
        return Connection::NoSocket;
    }
    const int noDelay = 1;
    setsockopt(m_socket.Get(), IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);

    sockaddr_in target{};
    target.sin_family = AF_INET;
    target.sin_port = htons(port);
    target.sin_addr.s_addr = address;
    m_error = 0;
    if (connect(m_socket.Get(), reinterpret_cast<const sockaddr*>(&target), sizeof target) != 0) {
        m_error = errno;
        if (m_error == EINPROGRESS && WaitFor(POLLOUT, timeoutMs))
            m_error = PendingError(m_socket.Get());
    }
    if (m_error == 0)
        return Connection::Done;
    Close();
    return Connection::Failed;
}

bool TcpClient::WaitFor(short events, uint32_t timeoutMs) {
    pollfd entries[] = {{m_socket.Get(), events, 0}, {m_interrupt.Get(), POLLIN, 0}};
    const int ready = Poll(entries, 2, Deadline(timeoutMs));
    if (ready < 0)
        m_error = errno;
    else if (ready == 0)
        m_error = kTimedOut;
    else if (entries[1].revents != 0)
        m_error = kInterrupted;
    else
        return true;
    return false;
}

int32_t TcpClient::Receive(void* buffer, uint32_t count, uint32_t timeoutMs) {
    for (;;) {
        if (!WaitFor(POLLIN, timeoutMs))
            return -1;
        const ssize_t got = recv(m_socket.Get(), buffer, count, 0);
        if (got >= 0)
            return static_cast<int32_t>(got);
        m_error = errno;
        if (m_error != EAGAIN && m_error != EINTR)
            return -1;
    }
}

uint32_t TcpClient::Send(const void* buffer, uint32_t count, uint32_t timeoutMs) {
    const auto* bytes = static_cast<const uint8_t*>(buffer);
    const Deadline deadline(timeoutMs);
    uint32_t total = 0;
    while (total < count && WaitFor(POLLOUT, deadline.RemainingMs())) {
        const ssize_t sent = send(m_socket.Get(), bytes + total, count - total, MSG_NOSIGNAL);
        if (sent >= 0) {
            total += static_cast<uint32_t>(sent);
            continue;
        }
        m_error = errno;
        if (m_error != EAGAIN && m_error != EINTR)
            break;
    }
    return total;
}

} // namespace platform
