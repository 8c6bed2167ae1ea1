// Any bytes as the host's stream, in pieces of any size with pauses between: the reader must cut the commands
// that a plain twin cuts, and none of them may harm the dispatcher.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "host/application_double.h"
#include "host/command_reader.h"
#include "host/commands.h"
#include "platform/diagnostics.h"

namespace {

using Commands = std::vector<std::pair<uint32_t, std::string>>;

void Require(bool condition) {
    if (!condition)
        abort();
}

// The stream in pieces of pieceSize bytes. Between commands each second call finds nothing.
class PiecewiseSource : public CHostByteSource {
public:
    PiecewiseSource(const std::string& bytes, uint32_t pieceSize) : m_bytes(bytes), m_pieceSize(pieceSize) {}

    int32_t Receive(void* buffer, uint32_t count) override {
        m_isPause = !m_isPause;
        if (m_isPause && count <= kHeaderSize && mayPause)
            return 0;
        if (m_next == m_bytes.size())
            return -1;
        const size_t size = m_bytes.copy(static_cast<char*>(buffer), std::min(count, m_pieceSize), m_next);
        m_next += size;
        return static_cast<int32_t>(size);
    }

    bool mayPause = true;

private:
    const std::string& m_bytes;
    const uint32_t m_pieceSize;
    size_t m_next = 0;
    bool m_isPause = false;
};

Commands TwinCommands(const std::string& stream) {
    Commands commands;
    for (size_t next = 0; stream.size() - next >= kHeaderSize;) {
        uint32_t words[2];
        memcpy(words, stream.data() + next, sizeof words);
        next += kHeaderSize;
        if (words[1] > stream.size() - next)
            break;
        commands.emplace_back(words[0], stream.substr(next, words[1]));
        next += words[1];
    }
    return commands;
}

Commands ReadCommands(const std::string& stream, uint32_t pieceSize, CHostCommands& dispatcher) {
    Commands commands;
    PiecewiseSource source(stream, pieceSize);
    source.mayPause = pieceSize % 2 == 0;
    CHostCommandReader reader(source);
    CVrxByteArray payload;
    uint32_t command = 0;
    for (;;) {
        const auto result = reader.Read(command, payload);
        if (result == CHostCommandReader::Result::Broken)
            return commands;
        if (result == CHostCommandReader::Result::Idle)
            continue;
        commands.emplace_back(command, std::string(payload.begin(), payload.end()));
        dispatcher.handle_cmd(command, payload);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    platform::SilenceDiagnostics();
    if (size == 0)
        return 0;
    const uint32_t pieceSize = data[0] + 1u;
    const std::string stream(reinterpret_cast<const char*>(data) + 1, size - 1);

    CHostSlots slots;
    slots.log = [](const char* line) { Require(strlen(line) < kLogLineSize); };
    CHostCommands dispatcher(
        slots, ApplicationDouble::Make, [](uint32_t command, const CVrxByteArray& payload) {
            Require(command == CommandRest || command == CommandNight || payload.IsEmpty() ||
                    memchr(payload.GetData(), 0, payload.GetSize()));
        });
    const Commands expected = TwinCommands(stream);
    Commands commands = ReadCommands(stream, pieceSize, dispatcher);
    if (pieceSize % 2 == 0) // a pause may fall into a short payload, which ends the link
        Require(commands.size() <= expected.size() &&
                std::equal(commands.begin(), commands.end(), expected.begin()));
    else
        Require(commands == expected);
    dispatcher.DrainQueue();
    dispatcher.Terminate();
    SetLogSlot(nullptr);
    SetLogLevel(LogError);
    return 0;
}
