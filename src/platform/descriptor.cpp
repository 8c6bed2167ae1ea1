#include "platform/descriptor.h"

#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace platform {

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    if (this != &other) {
        Close();
        m_descriptor = other.Release();
    }
    return *this;
}

int Descriptor::Release() {
    return std::exchange(m_descriptor, -1);
}

void Descriptor::Close() {
    if (IsOpen())
        close(Release());
}

WakeDescriptor::WakeDescriptor() : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
}

void WakeDescriptor::Raise() const {
    const uint64_t one = 1;
    // A full counter refuses the write and is as readable as can be.
    [[maybe_unused]] const ssize_t written = write(m_descriptor.Get(), &one, sizeof one);
}

void WakeDescriptor::Lower() const {
    uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = read(m_descriptor.Get(), &count, sizeof count);
}

} // namespace platform
