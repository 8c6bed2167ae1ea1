#include "desktop/display.h"

#include "desktop/fault.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <poll.h>
#include <thread>

namespace desktop {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto ConnectStep = 5ms;
constexpr auto LastWordsPatience = 1s; // between the end of the link and the end of the process
constexpr auto PumpSlice = 100ms;      // how soon a stop request is seen

std::atomic<int> stopSignal = 0;

void ThrowIfStopped() {
    if (stopSignal != 0)
        throw Interrupted(stopSignal);
}

// What the exit codes of the display mean, for people who have not read the protocol.
std::string MeaningOf(const ExitStatus& status) {
    if (status.bySignal)
        return "";
    switch (status.code) {
    case 2:
        return ": another display serves the same name";
    case 3:
        return ": it could not create its socket";
    case 4:
        return ": the connection failed";
    case 5:
        return ": nobody connected in time";
    default:
        return "";
    }
}

} // namespace

void RequestStop(int signalNumber) {
    stopSignal = signalNumber;
}

int StopSignal() {
    return stopSignal;
}

std::filesystem::path DefaultDisplayProgram() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "wallslate";
}

Display::Display(const DisplayOptions& options, DisplayListener& toListener)
    : listener(toListener), logLevel(options.logLevel), patience(options.patience) {
    Start(options);
}

void Display::Start(const DisplayOptions& options) {
    ProcessOptions child;
    child.program = options.program;
    socketPath = (folder.Path() / "display").string();
    child.arguments = {"0", std::to_string(patience.connect.count()), socketPath};
    std::filesystem::path state = options.stateFolder;
    if (state.empty() && !options.userState)
        state = folder.Path() / "state";
    if (!state.empty()) {
        std::error_code error;
        std::filesystem::create_directories(state, error);
        if (error)
            throw Fault(state.string() + ": cannot be created: " + error.message());
        child.environment.emplace_back("WALLSLATE_STATE_DIR", std::filesystem::absolute(state).string());
    }
    process = std::make_unique<Process>(child);
    started = Clock::now();
}

bool Display::TryConnect() {
    ThrowIfStopped();
    if (link.Connect(socketPath))
        return true;
    process->DrainErrors();
    if (process->Poll())
        ThrowEnded("before the host could connect");
    if (Clock::now() - started >= patience.connect)
        throw Fault("the display does not open its socket");
    return false;
}

void Display::Connect() {
    while (!TryConnect())
        std::this_thread::sleep_for(ConnectStep);
}

void Display::Load(const House& house) {
    Send(Command::Create, "");
    Send(Command::LogLevel, EncodeU32(logLevel));
    Send(Command::Load, house.LoadPayload());
}

void Display::Send(Command command, std::string_view payload) {
    SendRaw(static_cast<std::uint32_t>(command), payload);
}

void Display::SendRaw(std::uint32_t number, std::string_view payload) {
    if (link.Send(number, payload, patience.send))
        return;
    if (process->Wait(LastWordsPatience))
        ThrowEnded("unexpectedly");
    throw Fault("the display does not read its commands");
}

void Display::Touch(TouchType type, Point screen) {
    Send(Command::Touch, EncodeTouch(type, screen));
}

void Display::Pump(std::chrono::milliseconds longest) {
    ThrowIfStopped();
    pollfd entries[] = {{link.Descriptor(), POLLIN, 0}, {process->ErrorDescriptor(), POLLIN, 0}};
    const auto slice = std::min<std::chrono::milliseconds>(longest, PumpSlice);
    ::poll(entries, 2, static_cast<int>(slice.count()));
    process->DrainErrors();
    HandleInput();
}

void Display::HandleInput(int mostMessages) {
    for (int i = 0; i < mostMessages; ++i) {
        switch (link.Receive(message)) {
        case Link::Status::Message:
            Dispatch(message);
            break;
        case Link::Status::Nothing:
            return;
        case Link::Status::Closed:
        case Link::Status::Broken:
            process->Wait(LastWordsPatience);
            ThrowEnded("unexpectedly");
        }
    }
}

void Display::Dispatch(const Message& received) {
    switch (static_cast<Reply>(received.number)) {
    case Reply::Log:
        listener.OnLog(received.Text());
        break;
    case Reply::Frame:
        listener.OnFrame(received.payload);
        break;
    case Reply::TextCommand:
        listener.OnTextCommand(received.Text());
        break;
    }
}

void Display::End() {
    if (link.Send(static_cast<std::uint32_t>(Command::End), "", patience.send)) {
        const auto deadline = Clock::now() + patience.end;
        while (!process->Wait(5ms) && Clock::now() < deadline)
            TakeLastWords();
    }
    const auto status = process->Wait(LastWordsPatience);
    TakeLastWords();
    link.Close();
    if (!status)
        throw Fault("the display does not end when told to; it was stopped");
    if (!status->Clean())
        ThrowEnded("badly");
}

// What was under way when the end began counts too, and left unread it would keep the display's writer busy.
void Display::TakeLastWords() {
    while (link.Receive(message) == Link::Status::Message)
        Dispatch(message);
}

void Display::ThrowEnded(const std::string& when) {
    ThrowIfStopped();
    const auto status = process->Poll();
    if (!status)
        throw Fault("the display closed the link but did not end; it was stopped");
    std::string text = "the display ended " + when + " with " + status->Describe() + MeaningOf(*status);
    if (!status->Clean() && !process->Errors().empty())
        text += "; its last words were:\n" + process->Errors();
    throw Fault(text);
}

} // namespace desktop
