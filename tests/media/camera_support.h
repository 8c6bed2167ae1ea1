// What the tests with a simulated camera share.
#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <functional>
#include <vector>

#include "camsim/camera_server.h"
#include "platform/clock.h"
#include "platform/descriptor.h"
#include "platform/wait.h"

namespace cameratest {

constexpr std::uint32_t kPatienceMs = 20000; // of a wait that should succeed
// What every stop stays below by far; a wait for the network would take ten seconds.
constexpr std::uint64_t kStopBoundMs = 3000;

inline std::uint32_t Loopback() {
    return htonl(INADDR_LOOPBACK);
}

// Whether it became true in time.
inline bool WaitUntil(const std::function<bool()>& condition) {
    const platform::Deadline deadline(kPatienceMs);
    while (!condition()) {
        if (deadline.HasPassed())
            return false;
        platform::SleepMs(1);
    }
    return true;
}

// How long something takes, in ms of the real clock.
inline std::uint64_t Duration(const std::function<void()>& act) {
    const std::uint64_t before = platform::RealTickMs();
    act();
    return platform::RealTickMs() - before;
}

// A port on which nothing answers: the queue of its listener is full.
class DeafListener {
public:
    DeafListener() : listener(NewSocket()) {
        sockaddr_in local{};
        local.sin_family = AF_INET;
        local.sin_addr.s_addr = Loopback();
        socklen_t size = sizeof local;
        bind(listener.Get(), reinterpret_cast<sockaddr*>(&local), size);
        listen(listener.Get(), 0);
        getsockname(listener.Get(), reinterpret_cast<sockaddr*>(&local), &size);
        port = ntohs(local.sin_port);
        for (int i = 0; i < 4; ++i) {
            waiting.emplace_back(NewSocket());
            // In progress for those behind the first.
            [[maybe_unused]] const int result =
                connect(waiting.back().Get(), reinterpret_cast<sockaddr*>(&local), size);
        }
    }

    std::uint16_t port = 0;

private:
    static platform::Descriptor NewSocket() {
        return platform::Descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    }
    platform::Descriptor listener;
    std::vector<platform::Descriptor> waiting;
};

} // namespace cameratest
