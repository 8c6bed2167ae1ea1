// A run without a page: display, house, script, pictures. What --shot and --script do.
#pragma once

#include "desktop/display.h"
#include "desktop/script.h"

#include <cstdio>
#include <deque>
#include <optional>

namespace desktop {

struct HeadlessOptions {
    DisplayOptions display;
    std::optional<Script> script;
    std::filesystem::path shot;      // empty: none; "-": standard output
    std::filesystem::path outFolder; // of the script's shots
    bool quiet = false;              // no log lines
    std::FILE* report = stdout;      // text commands and log lines go here, each with its kind in front
};

// Returns when all is done and the display has ended well; throws Fault otherwise.
void RunHeadless(const House& house, const HeadlessOptions& options);

} // namespace desktop
