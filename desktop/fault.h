// The one kind of failure that ends what the host is doing: its text is the clear line that the user reads.
#pragma once

#include <stdexcept>
#include <string>

namespace desktop {

class Fault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The user ended the run (Ctrl-C, SIGTERM). Unwinds like a fault, so that nothing is left running.
class Interrupted : public Fault {
public:
    explicit Interrupted(int signalNumber) : Fault("stopped by a signal"), signal(signalNumber) {}
    int signal = 0;
};

} // namespace desktop
