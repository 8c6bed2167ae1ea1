#include "desktop/link.h"

#include "desktop/fault.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace desktop {

namespace {

using Clock = std::chrono::steady_clock;

sockaddr_un AddressOf(const std::filesystem::path& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string text = path.string();
    if (text.size() >= sizeof address.sun_path)
        throw Fault("the socket path is too long: " + text);
    std::memcpy(address.sun_path, text.data(), text.size());
    return address;
}

// Waits until the socket takes bytes again; false at the deadline.
bool WaitWritable(int socket, Clock::time_point deadline) {
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            return false;
        pollfd entry = {socket, POLLOUT, 0};
        const int ready = poll(&entry, 1, static_cast<int>(left));
        if (ready > 0)
            return true;
        if (ready < 0 && errno != EINTR)
            return false;
    }
}

} // namespace

std::filesystem::path SocketPath(const std::string& name) {
    if (!name.empty() && name.front() == '/')
        return name;
    const char* temporary = std::getenv("TMPDIR");
    const std::filesystem::path folder = temporary && *temporary ? temporary : "/tmp";
    return folder / ("CoreFxPipe_" + name);
}

bool Link::Connect(const std::filesystem::path& path) {
    const sockaddr_un address = AddressOf(path);
    Close();
    socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0)
        throw Fault(std::string("no socket to be had: ") + std::strerror(errno));
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return true;
    Close();
    return false;
}

void Link::Close() {
    if (socket >= 0)
        ::close(socket);
    socket = -1;
    reader = MessageReader();
}

bool Link::Send(std::uint32_t number, std::string_view payload, std::chrono::milliseconds patience) {
    const std::string bytes = EncodeMessage(number, payload);
    const auto deadline = Clock::now() + patience;
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t sent = ::send(socket, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
        if (sent > 0)
            done += static_cast<std::size_t>(sent);
        else if (errno != EAGAIN && errno != EINTR)
            return false;
        else if (!WaitWritable(socket, deadline))
            return false;
    }
    return true;
}

Link::Status Link::Receive(Message& message) {
    for (;;) {
        const std::span<std::uint8_t> space = reader.Space();
        const ssize_t count = ::recv(socket, space.data(), space.size(), 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno == EAGAIN)
            return Status::Nothing;
        if (count <= 0)
            return reader.AtBoundary() ? Status::Closed : Status::Broken;
        switch (reader.Commit(static_cast<std::size_t>(count))) {
        case MessageReader::State::NeedsMore:
            break;
        case MessageReader::State::HasMessage:
            reader.Take(message);
            return Status::Message;
        case MessageReader::State::Broken:
            return Status::Broken;
        }
    }
}

} // namespace desktop
