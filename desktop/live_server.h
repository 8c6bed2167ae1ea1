// The live page on the network: accepts connections, reads requests within limits, hands them to LiveApi or
// makes them viewers.
#pragma once

#include "desktop/live_guard.h"
#include "desktop/live_host.h"
#include "desktop/script.h"

#include <optional>

namespace desktop {

struct LiveOptions {
    LiveHostOptions host;
    std::string listen = DefaultListenAddress;
    std::optional<Script> script; // run while the page is served
    std::filesystem::path outFolder;
};

// Serves until a signal ends it; returns then. Throws Fault when it cannot begin, or when the script fails.
void RunLive(House house, const LiveOptions& options);

} // namespace desktop
