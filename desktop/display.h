// A running display: the process, its link, and what it says. Owns the process and ends it in every case.
//
//   Display display(options, listener);   starts the process
//   display.Connect();                    or TryConnect() from time to time
//   display.Load(house);                  commands 1, 2, 3
//   while (display.Pump(timeout)) ...     frames, log lines and text commands reach the listener
//   display.End();                        orderly end, exit code looked at
#pragma once

#include "desktop/house.h"
#include "desktop/link.h"
#include "desktop/process.h"
#include "desktop/temp_folder.h"

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace desktop {

class DisplayListener {
public:
    virtual ~DisplayListener() = default;
    virtual void OnFrame(std::span<const std::uint8_t> frame) = 0; // FrameBytes long
    virtual void OnLog(const std::string& line) = 0;
    virtual void OnTextCommand(const std::string& text) = 0;
};

// How long the host waits for each answer before it calls the display dead.
struct Patience {
    std::chrono::milliseconds connect{10'000}; // also what the display is told to wait for us
    std::chrono::milliseconds send{5'000};
    std::chrono::milliseconds firstPicture{30'000}; // thousands of items in a sanitizer build take their time
    std::chrono::milliseconds end{5'000};
};

struct DisplayOptions {
    std::filesystem::path program;
    std::filesystem::path stateFolder; // empty: a private one that ends with the display
    bool userState = false; // with an empty stateFolder: where the display keeps the user's settings
    std::uint32_t logLevel = 1;
    Patience patience;
};

// The display program beside the running host program.
std::filesystem::path DefaultDisplayProgram();

class Display {
public:
    Display(const DisplayOptions& options, DisplayListener& listener); // throws Fault
    ~Display() = default;

    // Once more tries to reach the process; throws Fault when it has ended or the patience is over.
    bool TryConnect();
    void Connect(); // tries until it succeeds or throws

    void Load(const House& house);
    void Send(Command command, std::string_view payload);
    void SendRaw(std::uint32_t number, std::string_view payload);
    void Touch(TouchType type, Point screen);

    // Waits at most that long for something to come and hands on all that has. Throws Fault when the display
    // has ended or talks nonsense, Interrupted when the user stops the host.
    void Pump(std::chrono::milliseconds longest);

    // Sends command 6 and waits for the process. Throws Fault unless it ends with exit code 0.
    void End();

    int LinkDescriptor() const { return link.Descriptor(); }
    pid_t ProcessId() const { return process->Id(); }
    // Takes what has arrived, at most so many messages, so that a flood leaves time for others; throws as
    // Pump does.
    void HandleInput(int mostMessages = 1000);
    const Patience& GetPatience() const { return patience; }

private:
    void Start(const DisplayOptions& options);
    void Dispatch(const Message& message);
    void TakeLastWords();
    [[noreturn]] void ThrowEnded(const std::string& when);

    DisplayListener& listener;
    std::uint32_t logLevel = 1;
    Patience patience;
    TempFolder folder;
    std::string socketPath;
    std::unique_ptr<Process> process;
    Link link;
    std::chrono::steady_clock::time_point started;
    Message message; // its buffer is used again for each message
};

// Makes Pump and Connect of every display throw Interrupted soon; safe inside a signal handler.
void RequestStop(int signalNumber);
int StopSignal(); // 0: none yet

} // namespace desktop
