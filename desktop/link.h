// One connection to a display: a Unix stream socket that sends whole commands and hands out whole messages.
// It never blocks while reading, so that one thread can serve it together with other descriptors.
#pragma once

#include "desktop/wire.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>

namespace desktop {

// Where the socket of a display called NAME lies: a NAME that begins with "/" is the path itself, any other
// one lies in the folder for temporary files, where .NET's named pipes look too.
std::filesystem::path SocketPath(const std::string& name);

class Link {
public:
    enum class Status {
        Message, // one message was taken
        Nothing, // no whole message has arrived yet
        Closed,  // the display closed its end between two messages
        Broken,  // it closed in the middle of a message, or sent what no display sends
    };

    Link() = default;
    ~Link() { Close(); }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    // Whether a display serves the path. False when nobody does (yet).
    bool Connect(const std::filesystem::path& path);
    void Close();
    bool IsOpen() const { return socket >= 0; }
    int Descriptor() const { return socket; }

    // Writes the whole message; false when the display is gone or takes nothing for the given time.
    bool Send(std::uint32_t number, std::string_view payload, std::chrono::milliseconds patience);

    // Takes the next message out of what has arrived.
    Status Receive(Message& message);

private:
    int socket = -1;
    MessageReader reader;
};

} // namespace desktop
