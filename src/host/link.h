// The process as the host sees it: from the command line over the pipe to the exit code.
//
//   no client --WaitForClient--> serving --end of the link, for any reason--> shut down --> exit code
//
// The first thread of the process does everything here. Other threads only send: log text, frames, text
// commands.
#pragma once

#include <atomic>
#include <cstdint>

#include "host/command_reader.h"
#include "host/commands.h"
#include "platform/pipe_server.h"
#include "platform/pipe_writer.h"

class CHostLink : private CHostByteSource {
public:
    enum ExitCode : int {
        ExitDone = 0,
        ExitRefused = 2, // too few arguments, or the pipe's name is taken
        ExitNoPipe = 3,
        ExitNoConnection = 4,
        ExitTimedOut = 5,
    };

    CHostLink(CHostedApplicationFactory factory, CHostDispatcher dispatcher);
    ~CHostLink() override;
    CHostLink(const CHostLink&) = delete;
    CHostLink& operator=(const CHostLink&) = delete;

    // main: the debug flag, the time-out for the host's connection in ms (negative: none) and the pipe's
    // name.
    int Run(int argc, char** argv);

    // True when the whole message has its place on the way out; false and nothing of it sent otherwise. Any
    // thread.
    bool send_message(uint32_t command, const void* payload, uint32_t length);

    // Whether a message with this payload would find room at once. Any thread.
    bool HasRoomFor(uint32_t length);

private:
    static CHostSlots Slots();
    static void SendText(uint32_t command, const char* text);

    int Serve(const platform::Deadline& deadline);
    bool ServeClient();
    void Shutdown();
    int32_t Receive(void* buffer, uint32_t count) override;

    platform::PipeServer m_server;
    platform::PipeWriter m_writer;
    std::atomic<bool> m_isRunning{false}; // send_message refuses while false
    CHostCommands m_commands;
};
