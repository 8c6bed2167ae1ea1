// A simulated camera: listens on TCP and plays a script to one client after the other, each from the start.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "camsim/script.h"
#include "platform/descriptor.h"
#include "platform/wait.h"

namespace camsim {

class CameraServer {
public:
    // Listens at once, on a free port for port 0; throws std::runtime_error with the reason if it cannot.
    // `report` is told what happens, in the server's thread.
    explicit CameraServer(Script played, const std::string& address = "127.0.0.1", std::uint16_t port = 0,
                          std::function<void(const std::string&)> report = {});
    // Cuts the connection and waits for the server's thread.
    ~CameraServer();
    CameraServer(const CameraServer&) = delete;
    CameraServer& operator=(const CameraServer&) = delete;

    std::uint16_t Port() const { return listenPort; }
    // Clients that have sent a whole hello so far, and the last one's hello.
    unsigned Greeted() const { return greeted; }
    Bytes Hello() const;
    // Packets and faults sent so far, to all clients.
    unsigned StepsSent() const { return stepsSent; }

private:
    void Serve();
    void ServeClient(int client);
    bool ReceiveHello(int client);
    bool PlayStep(int client, const Step& step, std::uint64_t dueMs);
    bool SendPiece(int client, const std::uint8_t* bytes, std::size_t count);
    bool WaitFor(int descriptor, short events, const platform::Deadline& deadline, bool* timedOut = nullptr);
    bool Sleep(int client, std::uint64_t untilMs);
    void Report(const std::string& text) const;

    const Script script;
    const std::function<void(const std::string&)> reporter;
    platform::Descriptor listener;
    platform::WakeDescriptor stop;
    std::uint16_t listenPort = 0;
    std::atomic<unsigned> greeted{0};
    std::atomic<unsigned> stepsSent{0};
    mutable std::mutex helloMutex;
    Bytes hello; // guarded by helloMutex
    std::thread thread;
};

} // namespace camsim
