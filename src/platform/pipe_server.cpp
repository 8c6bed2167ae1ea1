#include "platform/pipe_server.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/clock.h"
#include "platform/stop_signal.h"

namespace platform {

namespace {

constexpr const char* kPathPrefix = "CoreFxPipe_";
constexpr mode_t kOwnerOnly = 0600;
constexpr int kBacklog = 8;
constexpr uint32_t kLockPatienceMs = 1000;
constexpr uint32_t kLockRetryMs = 5;
constexpr uint32_t kErrorPauseMs = 10;
constexpr uint32_t kProbeMs = 20; // how long a starting server may hold the name it looks at

sockaddr_un AddressOf(const Path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    memcpy(address.sun_path, path.text, strnlen(path.text, sizeof address.sun_path - 1));
    return address;
}

Descriptor NewSocket() {
    return Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

// A refused connection means that the file has no server; a full backlog means that it has one.
bool IsPathServed(const Path& path) {
    const Descriptor probe = NewSocket();
    const sockaddr_un address = AddressOf(path);
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    return connect(probe.Get(), generic, sizeof address) == 0 || errno == EAGAIN || errno == EACCES;
}

bool RemoveStaleSocket(const Path& path) {
    struct stat status {};
    if (lstat(path.text, &status) != 0)
        return errno == ENOENT;
    return S_ISSOCK(status.st_mode) && unlink(path.text) == 0;
}

// Keeps two starting servers from taking each other's new socket for a left-over one. The folder itself is
// locked, so that no file is left behind. Somebody else's lock is waited for with limited patience.
class FolderLock {
public:
    explicit FolderLock(const Path& path) {
        Path folder = path;
        if (char* slash = strrchr(folder.text, '/'))
            slash[slash == folder.text ? 1 : 0] = '\0';
        m_folder = Descriptor(open(folder.text, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        const Deadline deadline(kLockPatienceMs);
        while (flock(m_folder.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK && !deadline.HasPassed())
            SleepMs(kLockRetryMs);
    }

private:
    Descriptor m_folder; // closing it gives the lock back
};

bool IsPeerAllowed(int client) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(client, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           (peer.uid == geteuid() || peer.uid == 0);
}

} // namespace

Path PipePath(const char* name) {
    Path path;
    const char* folder = getenv("TMPDIR");
    const int length = *name == '/' ? snprintf(path.text, kPathSize, "%s", name)
                                    : snprintf(path.text, kPathSize, "%s/%s%s",
                                               folder && *folder ? folder : "/tmp", kPathPrefix, name);
    if (length < 0 || static_cast<size_t>(length) >= sizeof(sockaddr_un::sun_path))
        path.text[0] = '\0';
    return path;
}

bool IsPipeServed(const char* name) {
    const Path path = PipePath(name);
    return !path.IsEmpty() && IsPathServed(path);
}

PipeServer::Creation PipeServer::Create(const char* name) {
    Close();
    m_path = PipePath(name);
    if (m_path.IsEmpty())
        return Creation::Failed;
    const FolderLock lock(m_path);
    if (IsPathServed(m_path))
        return Creation::NameTaken;
    return RemoveStaleSocket(m_path) && BindAndListen() ? Creation::Done : Creation::Failed;
}

bool PipeServer::BindAndListen() {
    Descriptor listener = NewSocket();
    const sockaddr_un address = AddressOf(m_path);
    // The mode of the socket becomes the mode of its file; nobody can connect before listen.
    fchmod(listener.Get(), kOwnerOnly);
    if (bind(listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return false;
    struct stat status {};
    if (lstat(m_path.text, &status) != 0 || listen(listener.Get(), kBacklog) != 0) {
        unlink(m_path.text);
        return false;
    }
    m_device = status.st_dev;
    m_inode = status.st_ino;
    m_listener = static_cast<Descriptor&&>(listener);
    return true;
}

PipeServer::Waiting PipeServer::WaitForClient(const Deadline& deadline) {
    Disconnect();
    for (;;) {
        pollfd entries[] = {{m_listener.Get(), POLLIN, 0}, {StopDescriptor(), POLLIN, 0}};
        const int ready = Poll(entries, 2, deadline);
        if (ready < 0)
            return Waiting::Failed;
        if (IsStopRequested())
            return Waiting::StopRequested;
        if (ready == 0)
            return Waiting::TimedOut;
        if (AcceptClient())
            return Waiting::Connected;
        if (deadline.HasPassed())
            return Waiting::TimedOut;
    }
}

bool PipeServer::AcceptClient() {
    Descriptor client(accept4(m_listener.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!client.IsOpen()) {
        // Out of descriptors or memory: the client stays in the queue, and the wait must not spin.
        if (errno != EAGAIN && errno != ECONNABORTED && errno != EINTR)
            SleepMs(kErrorPauseMs);
        return false;
    }
    if (!IsPeerAllowed(client.Get()))
        return false;
    m_client = static_cast<Descriptor&&>(client);
    m_hasReceived = false;
    m_error = 0;
    return true;
}

void PipeServer::RefuseSecondClient() {
    const Descriptor second(accept4(m_listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!second.IsOpen() && errno != EAGAIN)
        SleepMs(kErrorPauseMs);
}

// A client that has not sent anything yet may be a starting server that only looks whether the name is taken:
// the one behind it is turned away only if the first one stays.
bool PipeServer::IsClientStaying() const {
    pollfd entry{m_client.Get(), POLLIN, 0};
    return m_hasReceived || Poll(&entry, 1, Deadline(kProbeMs)) == 0;
}

int32_t PipeServer::Receive(void* buffer, uint32_t count, uint32_t timeoutMs) {
    const Deadline deadline(timeoutMs);
    for (;;) {
        pollfd entries[] = {
            {m_client.Get(), POLLIN, 0}, {m_listener.Get(), POLLIN, 0}, {StopDescriptor(), POLLIN, 0}};
        const int ready = Poll(entries, 3, deadline);
        if (ready < 0 || !m_client.IsOpen() || IsStopRequested())
            return kBroken;
        if (ready == 0)
            return 0;
        if (entries[0].revents != 0) {
            const ssize_t got = recv(m_client.Get(), buffer, count, 0);
            m_hasReceived = m_hasReceived || got > 0;
            if (got > 0)
                return static_cast<int32_t>(got);
            if (got == 0 || (errno != EAGAIN && errno != EINTR)) {
                m_error = got == 0 ? 0 : errno;
                return kBroken;
            }
        } else if (entries[1].revents != 0 && IsClientStaying()) {
            RefuseSecondClient();
        }
        if (deadline.HasPassed())
            return 0;
    }
}

void PipeServer::Close() {
    Disconnect();
    if (!m_listener.IsOpen())
        return;
    struct stat status {};
    if (lstat(m_path.text, &status) == 0 && status.st_dev == m_device && status.st_ino == m_inode)
        unlink(m_path.text);
    m_listener.Close();
}

} // namespace platform
