// A host for tests: starts a display process, speaks to it over its socket and watches how it ends.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

struct HostMessage {
    uint32_t command = 0;
    std::string payload;
};

// Header and payload of a command.
std::string Encode(uint32_t command, const std::string& payload = "");
std::string EncodeWords(uint32_t command, const std::vector<uint32_t>& words);

// One end of a connection to a display.
class HostConnection {
public:
    HostConnection() = default;
    explicit HostConnection(const std::string& path); // not open if nobody serves the path
    ~HostConnection() { Close(); }
    HostConnection(HostConnection&& other) noexcept;
    HostConnection& operator=(HostConnection&& other) noexcept;

    bool IsOpen() const { return m_socket >= 0; }
    void Close();

    // False if the display is gone.
    bool Send(const std::string& bytes) const;

    // Exactly count bytes; fewer if the display closes or is silent for so long.
    std::string Receive(size_t count, uint32_t timeoutMs) const;

    // The next whole message; nothing if the display closes or begins none in this time.
    std::optional<HostMessage> ReceiveMessage(uint32_t timeoutMs) const;

    // Reads on until a log line that contains the text; false if none comes in time.
    bool WaitForLog(const std::string& text, uint32_t timeoutMs) const;
    bool WaitForMessage(uint32_t command, uint32_t timeoutMs) const;

    // True once the display has closed its end.
    bool WaitForClose(uint32_t timeoutMs) const;

private:
    int m_socket = -1;
};

class DisplayProcess {
public:
    struct Options {
        std::vector<std::string> arguments; // all of them; empty: the usual three
        uint32_t timeoutMs = 10000;         // for the usual arguments
        std::string debug = "0";
        bool hasStandardStreams = true;
        bool readsErrors = true; // false: the pipe of standard error fills and stays full
    };

    explicit DisplayProcess(const std::string& program) : DisplayProcess(program, Options()) {}
    DisplayProcess(const std::string& program, const Options& options);
    // Kills what still runs.
    ~DisplayProcess();
    DisplayProcess(const DisplayProcess&) = delete;
    DisplayProcess& operator=(const DisplayProcess&) = delete;

    // Waits until the display listens and connects.
    HostConnection Connect() const;

    void Signal(int number) const;

    // The exit code; -1 if the process does not end in time, minus the number if a signal ended it.
    int WaitForExit(uint32_t timeoutMs);

    // All of standard error so far, or all of it after WaitForExit.
    std::string Errors();

    const std::string& SocketPath() const { return m_path; }
    const std::filesystem::path& StateFolder() const { return m_state; }

    // Takes over the folder of another process, to share its socket's name.
    static std::string NewFolder();

private:
    std::filesystem::path m_folder;
    std::filesystem::path m_state;
    std::string m_path;
    pid_t m_pid = -1;
    int m_errors = -1;
    bool m_readsErrors = true;
    std::string m_errorText;
    std::optional<int> m_exit;
};
