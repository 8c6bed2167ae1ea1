// A display without a picture of a house: serves the socket as the real one does and misbehaves on demand.
// The environment variable FAKE_DISPLAY names the fault (see Faults below), FAKE_PID_FILE where to leave our
// process id.
//
// Well-behaved, it sends two frames for command 3 (black, then grey), a new grey for each finger that goes
// down, a text command with the coordinates for each that goes up, and a log line for all else.
#include "desktop/link.h"
#include "desktop/wire.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using namespace desktop;

std::string fault;

bool Faulty(const char* name) {
    return fault == name;
}

[[noreturn]] void SleepForEver() {
    for (;;)
        ::pause();
}

void WriteAll(int socket, const void* bytes, std::size_t count) {
    const char* at = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t sent = ::send(socket, at, count, MSG_NOSIGNAL);
        if (sent <= 0)
            std::exit(0); // the host has gone, as at the end of every run
        at += sent;
        count -= static_cast<std::size_t>(sent);
    }
}

void SendMessage(int socket, Reply reply, const std::string& payload) {
    const std::string bytes = EncodeMessage(static_cast<std::uint32_t>(reply), payload);
    WriteAll(socket, bytes.data(), bytes.size());
}

void SendText(int socket, Reply reply, const std::string& text) {
    SendMessage(socket, reply, text + std::string(1, '\0'));
}

// The screen in one grey inside the border's grey; the alpha bytes are odd on purpose.
void SendFrame(int socket, unsigned char grey) {
    std::string frame(FrameBytes, '\x32');
    for (int y = 0; y < ScreenPixels; ++y) {
        const std::size_t start =
            (static_cast<std::size_t>(y + BorderPixels) * FramePixels + BorderPixels) * PixelBytes;
        std::memset(frame.data() + start, grey, std::size_t{ScreenPixels} * PixelBytes);
        frame[start] = '\x10'; // blue of the first pixel of each row
    }
    SendMessage(socket, Reply::Frame, frame);
}

bool ReadAll(int socket, void* bytes, std::size_t count) {
    char* at = static_cast<char*>(bytes);
    while (count > 0) {
        const ssize_t got = ::recv(socket, at, count, 0);
        if (got <= 0)
            return false;
        at += got;
        count -= static_cast<std::size_t>(got);
    }
    return true;
}

std::uint32_t U32At(const std::string& payload, std::size_t offset) {
    std::uint32_t value = 0;
    std::memcpy(&value, payload.data() + offset, sizeof value);
    return value;
}

void OnLoad(int socket, const std::string& payload) {
    if (Faulty("exit-on-load"))
        std::exit(9);
    if (Faulty("crash-on-load")) {
        std::cerr << "the roof fell in" << std::endl;
        std::raise(SIGKILL);
    }
    if (Faulty("mute"))
        return;
    SendText(socket, Reply::Log,
             "1ms RK Fake::Load: " + std::to_string(payload.size()) + " bytes, state in " +
                 (std::getenv("WALLSLATE_STATE_DIR") ? "its own folder" : "the user's folder"));
    SendFrame(socket, 0);
    if (Faulty("cut-frame")) {
        const std::string frame = EncodeMessage(102, std::string(FrameBytes, 'x'));
        WriteAll(socket, frame.data(), frame.size() / 2);
        std::exit(0);
    }
    if (Faulty("nonsense"))
        WriteAll(socket, "\x65\0\0\0\xFF\xFF\xFF\xFF", 8);
    if (Faulty("vanish")) {
        ::close(socket);
        SleepForEver();
    }
    SendFrame(socket, 0x80);
}

void OnTouch(int socket, const std::string& payload) {
    static unsigned char grey = 0x80;
    const std::string where = std::to_string(U32At(payload, 4)) + "," + std::to_string(U32At(payload, 8));
    switch (U32At(payload, 0)) {
    case 1:
        SendFrame(socket, ++grey);
        break;
    case 2:
        SendText(socket, Reply::Log, "2ms RK Fake::Move: " + where);
        break;
    default:
        SendText(socket, Reply::TextCommand, "{\"at\":[" + where + "]}");
    }
}

// False at the end of the link.
bool HandleMessage(int socket) {
    char header[HeaderBytes];
    if (!ReadAll(socket, header, sizeof header))
        return false;
    const std::string head(header, sizeof header);
    std::string payload(U32At(head, 4), '\0');
    if (!ReadAll(socket, payload.data(), payload.size()))
        return false;
    switch (U32At(head, 0)) {
    case 3:
        OnLoad(socket, payload);
        return true;
    case 5:
        OnTouch(socket, payload);
        return true;
    case 6:
        return Faulty("undying");
    default:
        SendText(socket, Reply::Log,
                 "3ms RK Fake::Message: " + std::to_string(U32At(head, 0)) + " with " +
                     std::to_string(payload.size()) + " bytes " + payload.c_str());
        return true;
    }
}

int Serve(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return 3;
    ::listen(listener, 1);
    const int socket = ::accept(listener, nullptr, nullptr);
    if (Faulty("deaf"))
        SleepForEver();
    while (HandleMessage(socket)) {
    }
    if (Faulty("undying"))
        SleepForEver();
    ::unlink(path.c_str());
    return Faulty("bad-exit") ? 7 : 0;
}

} // namespace

int main(int count, char** arguments) {
    if (const char* name = std::getenv("FAKE_DISPLAY"))
        fault = name;
    if (const char* file = std::getenv("FAKE_PID_FILE"))
        std::ofstream(file) << ::getpid();
    if (count < 4)
        return 2;
    if (Faulty("exit-at-start"))
        return 5;
    if (Faulty("no-socket"))
        SleepForEver();
    return Serve(SocketPath(arguments[3]));
}
