#include "camsim/camera_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace camsim {

namespace {

constexpr int kBacklog = 4;
constexpr std::uint32_t kHelloPatienceMs = 10000;

[[noreturn]] void Fail(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

} // namespace

CameraServer::CameraServer(Script played, const std::string& address, std::uint16_t port,
                           std::function<void(const std::string&)> report)
    : script(std::move(played)), reporter(std::move(report)) {
    sockaddr_in local{};
    local.sin_family = AF_INET;
    local.sin_port = htons(port);
    if (inet_pton(AF_INET, address.c_str(), &local.sin_addr) != 1)
        throw std::runtime_error(address + " is no IPv4 address");
    listener = platform::Descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!listener.IsOpen())
        Fail("no socket");
    const int reuse = 1;
    setsockopt(listener.Get(), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    socklen_t size = sizeof local;
    if (bind(listener.Get(), reinterpret_cast<sockaddr*>(&local), size) != 0 ||
        listen(listener.Get(), kBacklog) != 0)
        Fail("cannot listen on " + address + ":" + std::to_string(port));
    getsockname(listener.Get(), reinterpret_cast<sockaddr*>(&local), &size);
    listenPort = ntohs(local.sin_port);
    thread = std::thread([this] { Serve(); });
}

CameraServer::~CameraServer() {
    stop.Raise();
    thread.join();
}

Bytes CameraServer::Hello() const {
    const std::lock_guard lock(helloMutex);
    return hello;
}

void CameraServer::Report(const std::string& text) const {
    if (reporter)
        reporter(text);
}

// ---- The server's thread ----

void CameraServer::Serve() {
    while (WaitFor(listener.Get(), POLLIN, platform::Deadline(platform::kWaitForever))) {
        const platform::Descriptor client(
            accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!client.IsOpen())
            continue;
        const int noDelay = 1;
        setsockopt(client.Get(), IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
        Report("client connected");
        ServeClient(client.Get());
        Report("connection closed");
    }
}

void CameraServer::ServeClient(int client) {
    if (!ReceiveHello(client))
        return;
    std::uint64_t dueMs = platform::RealTickMs();
    do {
        for (const Step& step : script.steps) {
            dueMs = std::max(dueMs + step.waitMs, platform::RealTickMs());
            if (!PlayStep(client, step, dueMs))
                return;
        }
    } while (script.atEnd == AtEnd::Repeat && !script.steps.empty());
    if (script.atEnd == AtEnd::Silence)
        Sleep(client, UINT64_MAX);
}

bool CameraServer::ReceiveHello(int client) {
    Bytes received;
    const platform::Deadline deadline(kHelloPatienceMs);
    while (received.size() < kHeaderBytes) {
        if (!WaitFor(client, POLLIN, deadline))
            return false;
        std::uint8_t buffer[kHeaderBytes];
        const ssize_t got = recv(client, buffer, kHeaderBytes - received.size(), 0);
        if (got <= 0)
            return false;
        received.insert(received.end(), buffer, buffer + got);
    }
    const std::lock_guard lock(helloMutex);
    hello = received;
    ++greeted;
    return true;
}

bool CameraServer::PlayStep(int client, const Step& step, std::uint64_t dueMs) {
    if (!Sleep(client, dueMs))
        return false;
    const std::size_t piece = script.pieceBytes != 0 ? script.pieceBytes : step.bytes.size();
    for (std::size_t at = 0; at < step.bytes.size(); at += piece) {
        if (!SendPiece(client, step.bytes.data() + at, std::min(piece, step.bytes.size() - at)))
            return false;
    }
    ++stepsSent;
    return true;
}

bool CameraServer::SendPiece(int client, const std::uint8_t* bytes, std::size_t count) {
    while (count > 0) {
        if (!WaitFor(client, POLLOUT, platform::Deadline(platform::kWaitForever)))
            return false;
        const ssize_t sent = send(client, bytes, count, MSG_NOSIGNAL);
        if (sent < 0 && errno != EAGAIN && errno != EINTR)
            return false;
        const auto taken = static_cast<std::size_t>(std::max<ssize_t>(sent, 0));
        bytes += taken;
        count -= taken;
    }
    return true;
}

// False: the server is to stop, the time is over, or waiting failed.
bool CameraServer::WaitFor(int descriptor, short events, const platform::Deadline& deadline, bool* timedOut) {
    pollfd entries[] = {{descriptor, events, 0}, {stop.Get(), POLLIN, 0}};
    const int ready = platform::Poll(entries, 2, deadline);
    if (timedOut != nullptr)
        *timedOut = ready == 0;
    return ready > 0 && entries[1].revents == 0;
}

// False: the server is to stop, or the client has hung up. What the client says is ignored.
bool CameraServer::Sleep(int client, std::uint64_t untilMs) {
    for (;;) {
        const std::uint64_t now = platform::RealTickMs();
        if (now >= untilMs)
            return true;
        const auto left = static_cast<std::uint32_t>(std::min<std::uint64_t>(untilMs - now, 1U << 30));
        bool timedOut = false;
        if (!WaitFor(client, POLLIN, platform::Deadline(left), &timedOut)) {
            if (timedOut)
                continue;
            return false;
        }
        std::uint8_t ignored[kHeaderBytes];
        const ssize_t got = recv(client, ignored, sizeof ignored, 0);
        if (got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR))
            return false;
    }
}

} // namespace camsim
