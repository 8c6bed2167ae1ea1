// The named endpoint that serves one client: a Unix stream socket.
//
// A name that begins with '/' is the socket's path; any other NAME is ${TMPDIR:-/tmp}/CoreFxPipe_NAME. The
// socket file has mode 0600 and goes when the server closes. A left-over socket that nobody serves is
// replaced; a served one, and anything that is no socket, is left alone. Clients of other users (but root)
// are closed at once, and so is every second client: the listening end stays open while a client is served,
// so that the name is seen to be taken.
#pragma once

#include <cstdint>
#include <sys/types.h>

#include "platform/descriptor.h"
#include "platform/places.h"
#include "platform/wait.h"

namespace platform {

// The socket's path for a name; empty if it is too long for a socket.
Path PipePath(const char* name);

// True if somebody serves this name.
bool IsPipeServed(const char* name);

class PipeServer {
public:
    enum class Creation { Done, NameTaken, Failed };
    enum class Waiting { Connected, TimedOut, StopRequested, Failed };

    static constexpr int32_t kBroken = -1;

    PipeServer() = default;
    ~PipeServer() { Close(); }
    PipeServer(const PipeServer&) = delete;
    PipeServer& operator=(const PipeServer&) = delete;

    Creation Create(const char* name);

    // Waits for the first acceptable client. A stop request (platform/stop_signal.h) ends the wait.
    Waiting WaitForClient(const Deadline& deadline);

    // Waits at most timeoutMs for bytes: their count, 0 if none came in time, kBroken if the client is gone
    // or a stop was requested. Bytes that came before the client went are delivered first.
    int32_t Receive(void* buffer, uint32_t count, uint32_t timeoutMs);

    // Why Receive said kBroken: the system's error number, 0 if the client has closed or a stop was
    // requested.
    int GetError() const { return m_error; }

    // The client's socket, for the writer; -1 without a client.
    int ClientDescriptor() const { return m_client.Get(); }

    void Disconnect() { m_client.Close(); }

    // Disconnects and removes the name.
    void Close();

private:
    bool BindAndListen();
    bool AcceptClient();
    void RefuseSecondClient();
    bool IsClientStaying() const;

    Path m_path;
    Descriptor m_listener;
    Descriptor m_client;
    int m_error = 0;
    bool m_hasReceived = false; // the client has sent something
    dev_t m_device = 0;         // identity of the socket file that was made here: nobody else's is removed
    ino_t m_inode = 0;
};

} // namespace platform
