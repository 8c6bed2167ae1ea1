// A child process with its standard error caught: started, watched, ended, never left behind.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace desktop {

struct ExitStatus {
    bool bySignal = false;
    int code = 0; // exit code, or the signal's number

    bool Clean() const { return !bySignal && code == 0; }
    std::string Describe() const; // "exit code 5", "signal 11 (Segmentation fault)"
};

struct ProcessOptions {
    std::filesystem::path program;
    std::vector<std::string> arguments;                           // without the program's name
    std::vector<std::pair<std::string, std::string>> environment; // added to the host's own
};

class Process {
public:
    explicit Process(const ProcessOptions& options); // throws Fault
    ~Process();                                      // ends the child at once if it still runs
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t Id() const { return child; }

    // The status once the child has ended; empty while it runs.
    std::optional<ExitStatus> Poll();
    std::optional<ExitStatus> Wait(std::chrono::milliseconds patience);
    void Kill(); // at once, and reaped

    // The read end of the child's standard error and output, -1 after its end.
    int ErrorDescriptor() const { return errorPipe; }
    void DrainErrors();
    // The last words of the child, at most 64 KiB.
    const std::string& Errors() const { return errors; }

private:
    pid_t child = -1;
    int errorPipe = -1;
    std::string errors;
    std::optional<ExitStatus> status;
};

} // namespace desktop
