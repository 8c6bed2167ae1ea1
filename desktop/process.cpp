#include "desktop/process.h"

#include "desktop/fault.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace desktop {

namespace {

constexpr std::size_t MaxErrorBytes = 64 * 1024;
constexpr std::chrono::milliseconds PollStep{2};

// The spawn attributes: default signal handling and nothing blocked, whatever the host itself does, and a
// process group of its own, so that Ctrl-C in the terminal reaches the host alone.
class SpawnSetup {
public:
    explicit SpawnSetup(int errorPipe) {
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setflags(&attributes,
                                 POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, errorPipe, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, errorPipe, STDERR_FILENO);
    }
    ~SpawnSetup() {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;

    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
};

std::vector<std::string> EnvironmentWith(const std::vector<std::pair<std::string, std::string>>& added) {
    std::vector<std::string> result;
    for (const auto& [name, value] : added)
        result.push_back(name + "=" + value);
    for (char** entry = environ; *entry; ++entry) {
        const std::string text = *entry;
        const std::string name = text.substr(0, text.find('='));
        bool replaced = false;
        for (const auto& pair : added)
            replaced = replaced || pair.first == name;
        if (!replaced)
            result.push_back(text);
    }
    return result;
}

std::vector<char*> PointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

std::string ExitStatus::Describe() const {
    if (!bySignal)
        return "exit code " + std::to_string(code);
    return "signal " + std::to_string(code) + " (" + ::strsignal(code) + ")";
}

Process::Process(const ProcessOptions& options) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw Fault(std::string("no pipe to be had: ") + std::strerror(errno));
    errorPipe = ends[0];
    ::fcntl(errorPipe, F_SETFL, O_NONBLOCK);

    std::vector<std::string> arguments = {options.program.string()};
    arguments.insert(arguments.end(), options.arguments.begin(), options.arguments.end());
    std::vector<std::string> environment = EnvironmentWith(options.environment);
    SpawnSetup setup(ends[1]);
    const int error = ::posix_spawn(&child, options.program.c_str(), &setup.actions, &setup.attributes,
                                    PointersTo(arguments).data(), PointersTo(environment).data());
    ::close(ends[1]);
    if (error != 0) {
        child = -1;
        ::close(errorPipe);
        throw Fault(options.program.string() + " cannot be started: " + std::strerror(error));
    }
}

Process::~Process() {
    Kill();
    if (errorPipe >= 0)
        ::close(errorPipe);
}

std::optional<ExitStatus> Process::Poll() {
    int raw = 0;
    if (!status && ::waitpid(child, &raw, WNOHANG) == child)
        status = WIFSIGNALED(raw) ? ExitStatus{true, WTERMSIG(raw)} : ExitStatus{false, WEXITSTATUS(raw)};
    return status;
}

std::optional<ExitStatus> Process::Wait(std::chrono::milliseconds patience) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!Poll() && std::chrono::steady_clock::now() < deadline) {
        DrainErrors(); // a child that writes much must not stand still in front of a full pipe
        std::this_thread::sleep_for(PollStep);
    }
    DrainErrors();
    return status;
}

void Process::Kill() {
    if (Poll())
        return;
    ::kill(child, SIGKILL);
    int raw = 0;
    while (::waitpid(child, &raw, 0) < 0 && errno == EINTR) {
    }
    status = ExitStatus{true, SIGKILL};
}

void Process::DrainErrors() {
    char buffer[4096];
    while (errorPipe >= 0) {
        const ssize_t count = ::read(errorPipe, buffer, sizeof buffer);
        if (count > 0) {
            errors.append(buffer, static_cast<std::size_t>(count));
            if (errors.size() > MaxErrorBytes)
                errors.erase(0, errors.size() - MaxErrorBytes);
        } else if (count < 0 && errno == EINTR) {
            continue;
        } else {
            if (count == 0) {
                ::close(errorPipe);
                errorPipe = -1;
            }
            return;
        }
    }
}

} // namespace desktop
