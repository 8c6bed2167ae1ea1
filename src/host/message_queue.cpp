#include "host/message_queue.h"

#include <utility>

bool CHostMessageQueue::Push(uint32_t command, CVrxByteArray&& payload) {
    CVrScopeLock lock(m_mutex);
    if (m_messages.size() >= kMaxCount || m_bytes + payload.GetSize() > kMaxBytes)
        return false;
    m_bytes += payload.GetSize();
    m_messages.push_back({command, std::move(payload)});
    return true;
}

bool CHostMessageQueue::Pop(Message& message) {
    CVrScopeLock lock(m_mutex);
    if (m_messages.empty())
        return false;
    message = std::move(m_messages.front());
    m_messages.pop_front();
    m_bytes -= message.payload.GetSize();
    return true;
}
