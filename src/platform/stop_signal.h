// The request from outside to end the process: SIGTERM and SIGINT.
#pragma once

namespace platform {

// Routes SIGTERM and SIGINT into the stop request and ignores SIGPIPE. Once, before other threads start.
void InstallStopSignals();

// What the signals do; for tests too.
void RequestStop();
void ClearStopRequest();
bool IsStopRequested();

// Readable for poll while a stop is requested.
int StopDescriptor();

} // namespace platform
