// The process's own remarks on standard error.
#pragma once

namespace platform {

// printf to standard error. Never waits: while the other end of a pipe does not read, remarks are lost.
void WriteDiagnostic(const char* format, ...) __attribute__((format(printf, 1, 2)));

// From now on standard error is appended to this file; false, and nothing changed, if it cannot be opened.
bool RedirectDiagnostics(const char* path);

// Points closed standard streams to nowhere, so that no file or socket of ours takes their place and receives
// remarks. Before anything else is opened.
void OpenMissingStandardStreams();

// For programs that carry out thousands of runs.
void SilenceDiagnostics();

} // namespace platform
