// The command line of wallslate-host.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace desktop {

struct Options {
    std::filesystem::path house;       // the demonstration house unless given
    std::optional<std::string> listen; // ADDR:PORT as given
    bool check = false;
    std::filesystem::path shot;
    std::string script;
    std::filesystem::path outFolder;
    std::filesystem::path display;
    std::filesystem::path stateFolder;
    std::optional<std::uint32_t> logLevel;
    bool quiet = false;

    bool Headless() const { return !shot.empty() || (!script.empty() && !listen); }
};

// The options, or nothing when the line asked for help or version, which have then been printed. Throws Fault
// on a line that makes no sense.
std::optional<Options> ParseOptions(int count, char** arguments);

} // namespace desktop
