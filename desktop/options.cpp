#include "desktop/options.h"

#include "desktop/display.h"
#include "desktop/fault.h"

#include <CLI/CLI.hpp>
#include <iostream>

namespace desktop {

namespace {

constexpr std::uint32_t HighestLogLevel = 9;

const char* const Footer = R"(
Script lines: down X Y, move X Y, up X Y, tap X Y, drag X1 Y1 X2 Y2 MS, wait MS, settle, shot NAME,
night 0|1, settings JSON, runtime JSON, rest, expect TEXT, log-level N, raw CMD HEX, # comment.
Coordinates are screen pixels, 0 to 719.)";

// --check looks at files only; the page and the headless run exclude each other.
void RefuseContradictions(const Options& options) {
    const auto refuse = [](bool contradiction, const char* text) {
        if (contradiction)
            throw Fault(text);
    };
    const bool runs = options.listen || !options.shot.empty() || !options.script.empty() ||
                      !options.outFolder.empty() || !options.display.empty() ||
                      !options.stateFolder.empty() || options.logLevel;
    refuse(options.check && runs, "--check looks at the files only; it goes with no option but -q");
    refuse(options.listen && !options.shot.empty(), "--shot is headless; it does not go with --listen");
    refuse(!options.outFolder.empty() && options.script.empty(), "--out is for the shots of a --script");
}

} // namespace

std::optional<Options> ParseOptions(int count, char** arguments) {
    Options options;
    std::string listen;
    std::uint32_t logLevel = 0;
    CLI::App app("The reference host of the WallSlate display", "wallslate-host");
    app.set_version_flag("--version", "wallslate-host " WALLSLATE_VERSION);
    app.footer(Footer);
    app.add_option("HOUSE", options.house,
                   "folder with the four JSON files (default: the demonstration house)");
    auto* listenOption = app.add_option("--listen", listen, "serve the live page (default, 127.0.0.1:8720)")
                             ->type_name("ADDR:PORT");
    app.add_flag("--check", options.check, "validate the four files and end");
    app.add_option("--shot", options.shot, "headless: write the last frame as PNG and end")
        ->type_name("OUT.png|-");
    app.add_option("--script", options.script, "run the script; headless unless --listen is given")
        ->type_name("FILE|-");
    app.add_option("--out", options.outFolder, "where the script's shots go")->type_name("DIR");
    app.add_option("--display", options.display, "the display program (default: beside this one)")
        ->type_name("PATH");
    app.add_option("--state-dir", options.stateFolder, "where the display keeps its settings")
        ->type_name("DIR");
    auto* levelOption = app.add_option("--log-level", logLevel, "what the display logs: 1 errors to 5 frames")
                            ->type_name("N")
                            ->check(CLI::Range(0u, HighestLogLevel));
    app.add_flag("-q", options.quiet, "no log lines; text commands and errors only");
    try {
        app.parse(count, arguments);
    } catch (const CLI::Success& done) { // --help, --version
        app.exit(done, std::cout, std::cerr);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        throw Fault(error.what());
    }
    if (*listenOption)
        options.listen = listen;
    if (*levelOption)
        options.logLevel = logLevel;
    RefuseContradictions(options);
    return options;
}

} // namespace desktop
