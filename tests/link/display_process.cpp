#include "link/display_process.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

constexpr uint32_t kStartPatienceMs = 20000; // sanitizers on a busy machine start slowly
constexpr uint32_t kRestPatienceMs = 20000;  // for the rest of a message that has begun
constexpr auto kStep = std::chrono::milliseconds(2);

Clock::time_point In(uint32_t ms) {
    return Clock::now() + std::chrono::milliseconds(ms);
}

int RemainingMs(Clock::time_point due) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(due - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

} // namespace

std::string Encode(uint32_t command, const std::string& payload) {
    const uint32_t header[] = {command, static_cast<uint32_t>(payload.size())};
    return std::string(reinterpret_cast<const char*>(header), sizeof header) + payload;
}

std::string EncodeWords(uint32_t command, const std::vector<uint32_t>& words) {
    return Encode(command,
                  std::string(reinterpret_cast<const char*>(words.data()), words.size() * sizeof(uint32_t)));
}

HostConnection::HostConnection(const std::string& path)
    : m_socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    if (connect(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        Close();
}

HostConnection::HostConnection(HostConnection&& other) noexcept
    : m_socket(std::exchange(other.m_socket, -1)) {
}

HostConnection& HostConnection::operator=(HostConnection&& other) noexcept {
    std::swap(m_socket, other.m_socket);
    return *this;
}

void HostConnection::Close() {
    if (m_socket >= 0)
        close(std::exchange(m_socket, -1));
}

bool HostConnection::Send(const std::string& bytes) const {
    size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t result = send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (result <= 0)
            return false;
        sent += static_cast<size_t>(result);
    }
    return true;
}

std::string HostConnection::Receive(size_t count, uint32_t timeoutMs) const {
    std::string bytes(count, '\0');
    size_t filled = 0;
    const auto due = In(timeoutMs);
    while (filled < count) {
        pollfd entry{m_socket, POLLIN, 0};
        if (poll(&entry, 1, RemainingMs(due)) <= 0)
            break;
        const ssize_t got = recv(m_socket, bytes.data() + filled, count - filled, 0);
        if (got <= 0)
            break;
        filled += static_cast<size_t>(got);
    }
    bytes.resize(filled);
    return bytes;
}

std::optional<HostMessage> HostConnection::ReceiveMessage(uint32_t timeoutMs) const {
    pollfd entry{m_socket, POLLIN, 0};
    if (poll(&entry, 1, static_cast<int>(timeoutMs)) <= 0)
        return std::nullopt;
    const std::string header = Receive(8, kRestPatienceMs);
    if (header.size() < 8)
        return std::nullopt;
    uint32_t words[2];
    memcpy(words, header.data(), sizeof words);
    if (words[1] > 16u << 20)
        throw std::runtime_error("a message of " + std::to_string(words[1]) + " bytes: the framing is lost");
    HostMessage message{words[0], Receive(words[1], kRestPatienceMs)};
    return message.payload.size() == words[1] ? std::optional(message) : std::nullopt;
}

bool HostConnection::WaitForLog(const std::string& text, uint32_t timeoutMs) const {
    const auto due = In(timeoutMs);
    while (const auto message = ReceiveMessage(static_cast<uint32_t>(RemainingMs(due)))) {
        if (message->command == 101 && message->payload.find(text) != std::string::npos)
            return true;
    }
    return false;
}

bool HostConnection::WaitForMessage(uint32_t command, uint32_t timeoutMs) const {
    const auto due = In(timeoutMs);
    while (const auto message = ReceiveMessage(static_cast<uint32_t>(RemainingMs(due)))) {
        if (message->command == command)
            return true;
    }
    return false;
}

bool HostConnection::WaitForClose(uint32_t timeoutMs) const {
    const auto due = In(timeoutMs);
    char bytes[65536];
    for (;;) {
        pollfd entry{m_socket, POLLIN, 0};
        if (poll(&entry, 1, RemainingMs(due)) <= 0)
            return false;
        if (recv(m_socket, bytes, sizeof bytes, 0) <= 0)
            return true;
    }
}

std::string DisplayProcess::NewFolder() {
    std::string pattern = (fs::temp_directory_path() / "wallslate-link-XXXXXX").string();
    return mkdtemp(pattern.data());
}

DisplayProcess::DisplayProcess(const std::string& program, const Options& options)
    : m_folder(NewFolder()),
      m_state(m_folder / "state"),
      m_path((m_folder / "socket").string()),
      m_readsErrors(options.readsErrors) {
    fs::create_directories(m_state);
    std::vector<std::string> arguments = options.arguments;
    if (arguments.empty())
        arguments = {options.debug, std::to_string(options.timeoutMs), m_path};
    if (arguments.size() > 2)
        m_path = arguments[2];
    arguments.insert(arguments.begin(), program);
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    setenv("WALLSLATE_STATE_DIR", m_state.c_str(), 1);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    for (int stream = 0; stream <= STDERR_FILENO && !options.hasStandardStreams; stream++)
        posix_spawn_file_actions_addclose(&actions, stream);
    if (posix_spawn(&m_pid, program.c_str(), &actions, nullptr, argv.data(), environ) != 0)
        throw std::runtime_error("cannot start " + program);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    m_errors = ends[0];
    fcntl(m_errors, F_SETFL, O_NONBLOCK);
}

DisplayProcess::~DisplayProcess() {
    if (!m_exit) {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
    close(m_errors);
    std::error_code ignored;
    fs::remove_all(m_folder, ignored);
}

HostConnection DisplayProcess::Connect() const {
    const auto due = In(kStartPatienceMs);
    for (;;) {
        HostConnection connection(m_path);
        if (connection.IsOpen() || Clock::now() > due)
            return connection;
        std::this_thread::sleep_for(kStep);
    }
}

void DisplayProcess::Signal(int number) const {
    kill(m_pid, number);
}

int DisplayProcess::WaitForExit(uint32_t timeoutMs) {
    const auto due = In(timeoutMs);
    while (!m_exit) {
        if (m_readsErrors)
            Errors();
        int status = 0;
        if (waitpid(m_pid, &status, WNOHANG) == m_pid)
            m_exit = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
        else if (Clock::now() > due)
            return -1;
        else
            std::this_thread::sleep_for(kStep);
    }
    return *m_exit;
}

std::string DisplayProcess::Errors() {
    char bytes[65536];
    for (ssize_t got = 0; (got = read(m_errors, bytes, sizeof bytes)) > 0;)
        m_errorText.append(bytes, static_cast<size_t>(got));
    return m_errorText;
}
