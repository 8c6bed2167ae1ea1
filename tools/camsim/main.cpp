// camsim FILE.264: serves a byte stream as a door station's camera does. See --help.
#include <cctype>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>

#include <CLI/CLI.hpp>

#include "camsim/camera_server.h"

namespace {

constexpr const char* kDescription =
    "Serves an H.264 byte stream on TCP as a door station's camera does: to one client after the other, "
    "each\n"
    "from the start, in packets with headers of 16 bytes, one picture a packet.\n";
constexpr const char* kFooter = "\nFaults count packets: --zero-length 10 sends an empty packet before every "
                                "tenth. They may be combined.\n"
                                "The program ends with Ctrl-C.\n";

constexpr std::uint16_t kCameraPort = 1818;

struct Options {
    std::string file;
    std::string listen = "127.0.0.1:" + std::to_string(kCameraPort);
    camsim::StreamOptions stream;
    bool once = false;
    bool quiet = false;
};

struct Endpoint {
    std::string address;
    std::uint16_t port = kCameraPort;
};

// "ADDR:PORT", "ADDR" or ":PORT"; throws for a port that is none.
Endpoint ParseEndpoint(const std::string& text) {
    const std::size_t colon = text.find(':');
    Endpoint endpoint{text.substr(0, colon), kCameraPort};
    if (endpoint.address.empty())
        endpoint.address = "127.0.0.1";
    if (colon == std::string::npos)
        return endpoint;
    const std::string digits = text.substr(colon + 1);
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, endpoint.port);
    if (error != std::errc() || stop != end)
        throw std::runtime_error(digits + " is no port");
    return endpoint;
}

void AddFaults(CLI::App& app, camsim::Faults& faults) {
    const auto add = [&app](const std::string& name, unsigned& value, const std::string& help) {
        return app.add_option(name, value, help)->type_name("N")->group("Faults");
    };
    add("--wrong-magic", faults.wrongMagic, "16 bytes that are no header before every N-th packet");
    add("--zero-length", faults.zeroLength, "a header without payload before every N-th packet");
    add("--huge-length", faults.hugeLength, "a header that promises 4 GB before every N-th packet");
    add("--audio", faults.audio, "20 ms of audio before every N-th packet");
    add("--pause", faults.pause, "silence before every N-th packet");
    add("--pause-ms", faults.pauseMs, "how long the silence is, 1000 by default")->type_name("MS");
    add("--disconnect", faults.disconnectAfter, "the connection ends behind the N-th packet");
    add("--cut", faults.cutIn, "the connection ends in the middle of the N-th packet");
}

// The exit code if the program ends here.
std::optional<int> ParseOptions(int argc, char** argv, Options* options) {
    CLI::App app(kDescription, "camsim");
    app.footer(kFooter);
    app.add_option("FILE", options->file, "byte stream (.264)")->required()->check(CLI::ExistingFile);
    app.add_option("--listen", options->listen,
                   "address and port, 127.0.0.1:1818 by default; port 0: a free one")
        ->type_name("ADDR:PORT");
    app.add_option("--rate", options->stream.rate,
                   "packets a second, 25 by default; 0: as fast as they are taken")
        ->check(CLI::Range(0.0, 1000.0))
        ->type_name("N");
    app.add_flag("--nal", options->stream.byNal, "one NAL unit a packet, not one picture");
    app.add_option("--type", options->stream.type, "letter of the video packets, H by default; not A")
        ->check([](const std::string& text) {
            const bool isLetter = text.size() == 1 && std::isalpha(static_cast<unsigned char>(text[0])) != 0;
            return isLetter && text != "A" ? std::string() : text + " is no letter of video";
        })
        ->type_name("LETTER");
    app.add_option("--split", options->stream.pieceBytes, "send in pieces of so many bytes")
        ->type_name("BYTES");
    app.add_flag("--once", options->once,
                 "close the connection at the end of the file; otherwise begin again");
    app.add_flag("-q,--quiet", options->quiet, "say nothing");
    AddFaults(app, options->stream.faults);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    }
    if (options->once)
        options->stream.atEnd = camsim::AtEnd::Close;
    return std::nullopt;
}

camsim::Bytes ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void Say(const std::string& text) {
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
}

void Run(const Options& options, const sigset_t& endSignals) {
    const Endpoint endpoint = ParseEndpoint(options.listen);
    camsim::Script script = camsim::ScriptOf(ReadFile(options.file), options.stream);
    if (script.steps.empty())
        throw std::runtime_error(options.file + " is empty");
    const camsim::CameraServer server(std::move(script), endpoint.address, endpoint.port,
                                      options.quiet ? nullptr : Say);
    if (!options.quiet)
        Say("serving " + options.file + " on " + endpoint.address + ":" + std::to_string(server.Port()));
    int signal = 0;
    sigwait(&endSignals, &signal);
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (const auto code = ParseOptions(argc, argv, &options))
        return *code;
    // Blocked before the server's thread exists, so that they come to sigwait.
    sigset_t endSignals;
    sigemptyset(&endSignals);
    sigaddset(&endSignals, SIGINT);
    sigaddset(&endSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &endSignals, nullptr);
    try {
        Run(options, endSignals);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "camsim: %s\n", error.what());
        return 1;
    }
    return 0;
}
