// The request from outside to end the process: SIGTERM and SIGINT.
#pragma once

#include <cstdint>

namespace platform {

// Routes SIGTERM and SIGINT into the stop request and ignores SIGPIPE. Once, before other threads start.
void InstallStopSignals();

// What the signals do; for tests too.
void RequestStop();
void ClearStopRequest();
bool IsStopRequested();

// Sleeps ms milliseconds, or less: a stop request ends it, and so does the peer of the watched socket by
// closing, though unread bytes may still wait there.
void Pause(uint32_t ms);
void WatchPeer(int socket); // -1: none

// Readable for poll while a stop is requested.
int StopDescriptor();

} // namespace platform
