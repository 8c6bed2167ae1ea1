#include "media/socket.h"

#include <algorithm>

#include "foundation/log.h"

namespace {

constexpr const char* kConnectTag = "CVrSocket::StartTcpClient";
constexpr const char* kReceiveTag = "CVrSocket::Receive";
constexpr const char* kSendTag = "CVrSocket::Send";

int32_t ErrorNumber(int32_t error) {
    return error == platform::TcpClient::kTimedOut ? CVrSocket::kReceiveTimedOut : error;
}

} // namespace

bool CVrSocket::StartTcpClient(uint32_t address) {
    using Connection = platform::TcpClient::Connection;
    const Connection result = socket.Connect(address, static_cast<uint16_t>(port), timeoutMs);
    if (result == Connection::Done) {
        const auto* part = reinterpret_cast<const uint8_t*>(&address);
        Log(LogState, kConnectTag, "Connected to %d.%d.%d.%d", part[0], part[1], part[2], part[3]);
        return true;
    }
    if (socket.GetError() != platform::TcpClient::kInterrupted)
        Log(LogError, kConnectTag, "%s",
            result == Connection::NoSocket ? "Create socket error" : "Connect fail!");
    Close();
    return false;
}

int32_t CVrSocket::Receive(void* buffer, uint32_t size) {
    if (!socket.IsOpen() || size == 0)
        return 0;
    uint32_t count = 0;
    for (;;) {
        const int32_t got = socket.Receive(static_cast<uint8_t*>(buffer) + count,
                                           std::min(size - count, PacketSize()), timeoutMs);
        if (got < 0) {
            const int32_t error = socket.GetError();
            if (error == platform::TcpClient::kInterrupted)
                return static_cast<int32_t>(count);
            Log(LogError, kReceiveTag, "%d Receive error(%d)", got, ErrorNumber(error));
            if (error == platform::TcpClient::kTimedOut)
                return static_cast<int32_t>(count);
            Close();
            return -1;
        }
        if (got == 0) {
            Log(LogState, kReceiveTag, "Socket shutdown.\n");
            Close();
            return -1;
        }
        count += static_cast<uint32_t>(got);
        if (static_cast<uint32_t>(got) < PacketSize() || count == size)
            return static_cast<int32_t>(count);
    }
}

bool CVrSocket::Send(const void* buffer, uint32_t size) {
    if (!socket.IsOpen())
        return size == 0;
    const uint32_t sent = socket.Send(buffer, size, timeoutMs);
    if (sent == size)
        return true;
    Log(LogError, kSendTag, "%d send error(%d)", -1, ErrorNumber(socket.GetError()));
    Close();
    return false;
}

void CVrSocket::Close() {
    socket.Close();
    listenSocket.Close();
}
