#include "media/cam_client.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "foundation/clock.h"
#include "foundation/log.h"
#include "platform/clock.h"

namespace {

constexpr const char* kTag = "CCamClient::MainLoop";

constexpr uint8_t kMagic[] = {'V', 'R', 'I'};
constexpr char kTypeHello = 'C';
constexpr char kTypeAudio = 'A';
constexpr char kTypeSend = 'S'; // of outHeader
constexpr uint32_t kTypeAt = 3, kLengthAt = 4, kFirstNumberAt = 8, kSecondNumberAt = 12;

constexpr uint32_t kPauseMs = 2; // behind a unit, so that the decoder gets its turn
constexpr uint32_t kTimeoutSec = 10;
constexpr uint32_t kMsPerSecond = 1000;

uint32_t ReadLittleEndian(const uint8_t* bytes) {
    return bytes[0] | static_cast<uint32_t>(bytes[1]) << 8 | static_cast<uint32_t>(bytes[2]) << 16 |
           static_cast<uint32_t>(bytes[3]) << 24;
}

void WriteLittleEndian(uint8_t* bytes, uint32_t value) {
    for (uint32_t i = 0; i < 4; i++)
        bytes[i] = static_cast<uint8_t>(value >> 8 * i);
}

// Magic and type, the length and all behind it 0.
void WriteHeader(uint8_t* header, char type) {
    memset(header, 0, CCamClient::kHeaderBytes);
    memcpy(header, kMagic, sizeof kMagic);
    header[kTypeAt] = static_cast<uint8_t>(type);
}

bool IsLetter(uint8_t type) {
    return (type >= 'A' && type <= 'Z') || (type >= 'a' && type <= 'z');
}

// Whether a header may begin here, as far as the bytes reach.
bool MayBeHeader(const uint8_t* bytes, uint32_t count) {
    return memcmp(bytes, kMagic, std::min<size_t>(count, sizeof kMagic)) == 0 &&
           (count <= kTypeAt || IsLetter(bytes[kTypeAt]));
}

} // namespace

CCamClient::CCamClient() {
    SetName("CCamClient");
    net.port = kPort;
    scratch.SetSize(CVrSocket::kStreamPacket);
    outHeader.SetSize(CVrSocket::kStreamPacket);
    WriteHeader(outHeader.GetData(), kTypeSend);
    for (CVrxByteArray& frame : frames)
        frame.SetSize(kFirstUnitBytes);
}

CCamClient::~CCamClient() {
    RequestStop();
    Join();
}

bool CCamClient::Start(uint32_t threadPriority, uint32_t threadStackSize) {
    if (HasThread() && !IsStopRequested())
        return true;
    Join();
    net.ClearInterrupt();
    audioIn.Clear();
    audioOut.Clear();
    readIndex.store(0, std::memory_order_relaxed);
    writeIndex.store(0, std::memory_order_relaxed);
    headerFill = payloadLeft = fill = 0;
    isInStep = true;
    isDropping = false;
    return CVrThread::Start(threadPriority, threadStackSize);
}

void CCamClient::Wakeup() {
    net.Interrupt();
}

// ---- The thread ----

void CCamClient::MainLoop() {
    net.timeoutMs = CVrSocket::kTimeoutMs;
    if (!net.StartTcpClient(address))
        return;
    timeoutSec = kTimeoutSec;
    net.timeoutMs = timeoutSec * kMsPerSecond;
    Log(LogEvent, kTag, "start read stream loop");
    streamState.store(Connected, std::memory_order_release);
    bool isAlive = SendHello();
    while (isAlive && !IsStopRequested()) {
        platform::YieldProcessor();
        isAlive = !IsStopRequested() && ReceivePass();
    }
    net.Close();
    streamState.store(StreamEnded, std::memory_order_release);
}

bool CCamClient::SendHello() {
    const auto first = static_cast<uint32_t>(rand());
    const auto second = static_cast<uint32_t>(rand());
    WriteHeader(hello, kTypeHello);
    WriteLittleEndian(hello + kFirstNumberAt, second);
    WriteLittleEndian(hello + kSecondNumberAt, first);
    return net.Send(hello, kHeaderBytes);
}

bool CCamClient::ReceivePass() {
    if (payloadLeft == 0)
        return ReceiveHeader();
    return Type() == kTypeAudio ? ReceiveAudio() : ReceiveVideo();
}

// ---- Headers ----

// A header that comes in pieces is put together: TCP knows no messages.
bool CCamClient::ReceiveHeader() {
    const int32_t got = ReceiveBytes(inHeader + headerFill, kHeaderBytes - headerFill);
    if (got < 0)
        return false;
    headerFill += static_cast<uint32_t>(got);
    if (headerFill < kHeaderBytes)
        return true;
    if (!MayBeHeader(inHeader, kHeaderBytes)) {
        if (LoseStep())
            Log(LogWarning, kTag, "no header, searching");
        SearchHeader();
    } else if (!BeginPayload()) {
        SearchHeader();
    } else {
        headerFill = 0;
        isInStep = true;
    }
    return true;
}

// Moves the next place where a header may begin to the front.
void CCamClient::SearchHeader() {
    uint32_t skipped = 1;
    while (skipped < headerFill && !MayBeHeader(inHeader + skipped, headerFill - skipped))
        skipped++;
    headerFill -= skipped;
    memmove(inHeader, inHeader + skipped, headerFill);
}

// False: no payload is as long as this header says.
bool CCamClient::BeginPayload() {
    const uint32_t length = ReadLittleEndian(inHeader + kLengthAt);
    if (length > kMaxPayload) {
        if (LoseStep())
            Log(LogWarning, kTag, "length %u is too large", length);
        return false;
    }
    Log(LogEvent, kTag, "Hdr received %d %c %d", static_cast<int>(kHeaderBytes), Type(),
        static_cast<int>(length));
    fill = 0;
    payloadLeft = length;
    if (Type() != kTypeAudio)
        frames[writeIndex.load(std::memory_order_relaxed)].SetSize(length);
    return true;
}

// True once for each loss, however much has to be skipped until the next header: one line in the log.
bool CCamClient::LoseStep() {
    return std::exchange(isInStep, false);
}

// ---- Payloads ----

bool CCamClient::ReceiveAudio() {
    const int32_t got = ReceiveBytes(scratch.GetData(), std::min(payloadLeft, scratch.GetSize()));
    if (got <= 0)
        return got == 0;
    audioIn.Write(scratch.GetData(), static_cast<uint32_t>(got));
    payloadLeft -= static_cast<uint32_t>(got);
    return true;
}

bool CCamClient::ReceiveVideo() {
    CVrxByteArray& frame = frames[writeIndex.load(std::memory_order_relaxed)];
    const bool hasMemory = frame.GetSize() >= fill + payloadLeft; // else the unit is read and forgotten
    uint8_t* const target = hasMemory ? frame.GetData() + fill : scratch.GetData();
    const int32_t got = ReceiveBytes(target, std::min(payloadLeft, CVrSocket::kStreamPacket));
    if (got <= 0)
        return got == 0;
    Log(LogEvent, kTag, "Data %c received %d", Type(), got);
    fill += static_cast<uint32_t>(got);
    payloadLeft -= static_cast<uint32_t>(got);
    if (payloadLeft > 0)
        return true;
    if (hasMemory)
        PublishUnit();
    PauseAfterUnit();
    return true;
}

void CCamClient::PauseAfterUnit() {
    SleepMs(kPauseMs);
}

// ---- The ring ----

void CCamClient::PublishUnit() {
    const uint32_t slot = writeIndex.load(std::memory_order_relaxed);
    const uint32_t next = (slot + 1) % kRingSlots;
    if (next == readIndex.load(std::memory_order_acquire)) {
        if (!isDropping)
            Log(LogWarning, kTag, "ring full, unit of %u bytes dropped", fill);
        isDropping = true;
        return;
    }
    isDropping = false;
    frameSizes[slot] = fill;
    writeIndex.store(next, std::memory_order_release);
}

bool CCamClient::PeekUnit(Unit* unit) {
    const uint32_t slot = readIndex.load(std::memory_order_relaxed);
    if (slot == writeIndex.load(std::memory_order_acquire))
        return false;
    *unit = {frames[slot].GetData(), frameSizes[slot]};
    return true;
}

void CCamClient::ReleaseUnit() {
    const uint32_t slot = readIndex.load(std::memory_order_relaxed);
    readIndex.store((slot + 1) % kRingSlots, std::memory_order_release);
}
