#include "platform/pipe_writer.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sys/socket.h>

#include "platform/wait.h"

namespace platform {

namespace {

class Guard {
public:
    explicit Guard(pthread_mutex_t& mutex) : m_mutex(mutex) { pthread_mutex_lock(&m_mutex); }
    ~Guard() { pthread_mutex_unlock(&m_mutex); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    pthread_mutex_t& m_mutex;
};

void InitMonotonic(pthread_cond_t& condition) {
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&condition, &attributes);
    pthread_condattr_destroy(&attributes);
}

timespec MomentIn(uint32_t ms) {
    timespec due{};
    clock_gettime(CLOCK_MONOTONIC, &due);
    const int64_t nanoseconds = due.tv_nsec + int64_t{ms % 1000} * 1000000;
    due.tv_sec += ms / 1000 + nanoseconds / 1000000000;
    due.tv_nsec = nanoseconds % 1000000000;
    return due;
}

} // namespace

PipeWriter::PipeWriter() {
    pthread_mutex_init(&m_mutex, nullptr);
    pthread_mutex_init(&m_turn, nullptr);
    InitMonotonic(m_filled);
    InitMonotonic(m_emptied);
}

PipeWriter::~PipeWriter() {
    Stop(0);
    free(m_ring);
    pthread_cond_destroy(&m_emptied);
    pthread_cond_destroy(&m_filled);
    pthread_mutex_destroy(&m_turn);
    pthread_mutex_destroy(&m_mutex);
}

bool PipeWriter::Start(int socket) {
    Stop(0);
    Guard guard(m_mutex);
    if (!m_ring)
        m_ring = static_cast<uint8_t*>(malloc(kCapacity));
    if (!m_ring)
        return false;
    m_socket = socket;
    m_tail = 0;
    m_used = 0;
    m_isEnding = false;
    m_isStalled = false;
    m_wake.Lower();
    m_isOpen = m_thread.Start(Enter, this, "PipeWriter");
    return m_isOpen;
}

bool PipeWriter::Send(const void* header, uint32_t headerSize, const void* payload, uint32_t payloadSize,
                      uint32_t timeoutMs) {
    const uint64_t total = uint64_t{headerSize} + payloadSize;
    if (total > kCapacity)
        return false;
    Guard turn(m_turn);
    Guard guard(m_mutex);
    if (!WaitForRoom(static_cast<uint32_t>(total), timeoutMs))
        return false;
    Put(header, headerSize);
    Put(payload, payloadSize);
    pthread_cond_signal(&m_filled);
    return true;
}

bool PipeWriter::HasRoomFor(uint64_t size) {
    Guard guard(m_mutex);
    return m_isOpen && kCapacity - m_used >= size;
}

bool PipeWriter::WaitForRoom(uint32_t count, uint32_t timeoutMs) {
    const timespec due = MomentIn(timeoutMs);
    while (m_isOpen && !m_isStalled && kCapacity - m_used < count)
        m_isStalled = pthread_cond_timedwait(&m_emptied, &m_mutex, &due) == ETIMEDOUT;
    return m_isOpen && kCapacity - m_used >= count;
}

void PipeWriter::Put(const void* bytes, uint32_t count) {
    if (count == 0)
        return;
    const auto* source = static_cast<const uint8_t*>(bytes);
    const uint32_t head = (m_tail + m_used) % kCapacity;
    const uint32_t first = std::min(count, kCapacity - head);
    memcpy(m_ring + head, source, first);
    memcpy(m_ring, source + first, count - first);
    m_used += count;
}

void PipeWriter::Enter(void* self) {
    static_cast<PipeWriter*>(self)->SendLoop();
}

void PipeWriter::SendLoop() {
    Guard guard(m_mutex);
    while (!m_isEnding) {
        if (m_used == 0) {
            m_tail = 0; // a fast client keeps the ring in the same few pages
            pthread_cond_wait(&m_filled, &m_mutex);
            continue;
        }
        const uint8_t* piece = m_ring + m_tail;
        const uint32_t count = std::min(m_used, kCapacity - m_tail);
        pthread_mutex_unlock(&m_mutex);
        uint32_t sent = 0;
        const bool isAlive = SendPiece(piece, count, sent);
        pthread_mutex_lock(&m_mutex);
        m_isStalled = m_isStalled && sent == 0;
        m_tail = (m_tail + sent) % kCapacity;
        m_used -= sent;
        m_isEnding = m_isEnding || !isAlive;
        pthread_cond_broadcast(&m_emptied);
    }
    m_isOpen = false;
    m_used = 0;
    pthread_cond_broadcast(&m_emptied);
}

// Sends what the socket takes now, waiting until it takes at least one byte; false if the client is gone or
// the thread is to end.
bool PipeWriter::SendPiece(const uint8_t* bytes, uint32_t count, uint32_t& sent) {
    pollfd entries[] = {{m_socket, POLLOUT, 0}, {m_wake.Get(), POLLIN, 0}};
    if (Poll(entries, 2, Deadline(kWaitForever)) < 0 || entries[1].revents != 0)
        return false;
    const ssize_t result = send(m_socket, bytes, count, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (result < 0)
        return errno == EAGAIN || errno == EINTR;
    sent = static_cast<uint32_t>(result);
    return true;
}

void PipeWriter::Stop(uint32_t graceMs) {
    if (!m_thread.IsJoinable())
        return;
    {
        Guard guard(m_mutex);
        m_isOpen = false;
        pthread_cond_broadcast(&m_emptied);
        const timespec due = MomentIn(graceMs);
        while (m_used > 0 && pthread_cond_timedwait(&m_emptied, &m_mutex, &due) != ETIMEDOUT) {
        }
        m_isEnding = true;
        pthread_cond_signal(&m_filled);
        m_wake.Raise();
    }
    m_thread.Join();
}

} // namespace platform
