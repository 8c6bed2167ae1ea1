// Owner of a file descriptor, and a descriptor that other threads can raise to end a wait.
#pragma once

namespace platform {

class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : m_descriptor(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_descriptor; }
    bool IsOpen() const { return m_descriptor >= 0; }
    int Release();
    void Close();

private:
    int m_descriptor = -1;
};

// Stays raised, that is readable for poll, until it is lowered. Raise is safe in a signal handler.
class WakeDescriptor {
public:
    WakeDescriptor();

    void Raise() const;
    void Lower() const;
    int Get() const { return m_descriptor.Get(); }

private:
    Descriptor m_descriptor;
};

} // namespace platform
