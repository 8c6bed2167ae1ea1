// The camera client against a simulated camera: framing, the ring, audio, and stopping in every situation.
#include <gtest/gtest.h>

#include <string>

#include "media/cam_client.h"
#include "media/camera_support.h"
#include "support/log_capture.h"

namespace {

using namespace cameratest;
using camsim::AtEnd;
using camsim::Bytes;
using camsim::CameraServer;
using camsim::Packet;
using camsim::Script;
using camsim::Step;

// Content that tells the unit and the place in it.
Bytes Pattern(std::size_t size, unsigned seed) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<std::uint8_t>(seed * 37 + i * 7 + i / 251);
    return bytes;
}

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

Bytes Text(const std::string& text) {
    return {text.begin(), text.end()};
}

void Connect(CCamClient& client, std::uint16_t port) {
    client.net.port = port;
    client.address = Loopback();
    client.Start(4, 8192);
}

// Takes units as they come until there are so many, or the stream has ended.
std::vector<Bytes> TakeUnits(CCamClient& client, std::size_t count) {
    std::vector<Bytes> units;
    WaitUntil([&] {
        const bool ended = client.streamState == CCamClient::StreamEnded;
        CCamClient::Unit unit;
        while (units.size() < count && client.PeekUnit(&unit)) {
            units.emplace_back(unit.bytes, unit.bytes + unit.size);
            client.ReleaseUnit();
        }
        return units.size() == count || ended;
    });
    return units;
}

Bytes TakeAudio(CCamClient& client) {
    Bytes audio(CVrAudioRing::kBytes);
    audio.resize(client.audioIn.Read(audio.data(), CVrAudioRing::kBytes));
    return audio;
}

} // namespace

// ---- Framing ----

// However TCP cuts the stream, and whatever lies between the units: they arrive whole and in order.
TEST(CamClient, UnitsArriveWholeThroughAllFaultsAndHoweverTheyAreCut) {
    const std::vector<Bytes> units = {
        Pattern(1, 1),    Pattern(1448, 2), Pattern(1449, 3),  Pattern(70000, 4),  Pattern(5, 5),
        Pattern(2896, 6), Text("VRIVRI"),   Pattern(65536, 7), Pattern(200000, 8), Text("VRIH")};
    const std::vector<Bytes> between = {
        {},
        Packet('A', Pattern(3000, 50)),
        camsim::Header('H', 0),
        camsim::Header('A', 0),
        Bytes(16, 'x'),                  // a wrong magic
        Bytes(5, 'y'),                   // out of step
        Text("VRVRI-no letter"),         // begins like a header twice
        camsim::Header('H', 0xFFFFFFF0), // absurd lengths
        camsim::Header('A', CCamClient::kMaxPayload + 1),
        Packet('A', Pattern(1449, 51)),
    };
    Bytes stream, audio;
    for (std::size_t i = 0; i < units.size(); ++i)
        stream = stream + between[i] + Packet(i % 2 == 0 ? 'H' : 'z', units[i]);
    for (const std::size_t piece : {0, 7, 1448, 1500}) {
        LogCapture log;
        const CameraServer server({{{stream}}, AtEnd::Close, piece});
        CCamClient client;
        Connect(client, server.Port());
        EXPECT_EQ(TakeUnits(client, units.size()), units) << "pieces of " << piece;
        EXPECT_TRUE(WaitUntil([&] { return !client.HasThread(); }));
        EXPECT_EQ(TakeAudio(client), Pattern(3000, 50) + Pattern(1449, 51));
        EXPECT_EQ(client.streamState, CCamClient::StreamEnded);
        EXPECT_TRUE(log.Has("CVrSocket::StartTcpClient: Connected to 127.0.0.1"));
        EXPECT_TRUE(log.Has("CCamClient::MainLoop: start read stream loop"));
        EXPECT_TRUE(log.Has("CCamClient::MainLoop: Hdr received 16 A 3000"));
        EXPECT_EQ(log.Count("CCamClient::MainLoop: Hdr received 16 H 0"), 1U);
        EXPECT_TRUE(log.Has("CCamClient::MainLoop: Data H received 1"));
        EXPECT_EQ(log.Count("no header, searching"), 3U) << "one line for each loss";
        EXPECT_EQ(log.Count("length 4294967280 is too large"), 1U);
        EXPECT_TRUE(log.Has("CVrSocket::Receive: Socket shutdown.\n"));
    }
}

TEST(CamClient, GreetsTheCamera) {
    const CameraServer server({{}, AtEnd::Silence});
    CCamClient client;
    Connect(client, server.Port());
    ASSERT_TRUE(WaitUntil([&] { return server.Greeted() == 1; }));
    const Bytes hello = server.Hello();
    EXPECT_EQ(Bytes(hello.begin(), hello.begin() + 8), (Bytes{'V', 'R', 'I', 'C', 0, 0, 0, 0}));
    EXPECT_EQ(client.streamState, CCamClient::Connected);
    EXPECT_EQ(client.timeoutSec, 10U);
}

TEST(CamClient, RefusedConnectionEndsTheThreadAndTheNextStartTriesAgain) {
    std::uint16_t port = 0;
    {
        const CameraServer gone({});
        port = gone.Port();
    }
    LogCapture log;
    CCamClient client;
    Connect(client, port);
    EXPECT_TRUE(WaitUntil([&] { return !client.HasThread(); }));
    EXPECT_TRUE(log.Has("CVrSocket::StartTcpClient: Connect fail!"));
    EXPECT_EQ(client.streamState, CCamClient::NotConnected);
    const CameraServer back({{{Packet('H', Pattern(9, 9))}}, AtEnd::Silence}, "127.0.0.1", port);
    Connect(client, port);
    EXPECT_EQ(TakeUnits(client, 1), std::vector<Bytes>{Pattern(9, 9)});
}

// ---- The ring ----

TEST(CamClient, FullRingDropsWholeUnitsAndLeavesTheReadersSlotAlone) {
    Script script;
    constexpr unsigned kUnits = 30;
    for (unsigned i = 0; i < kUnits; ++i)
        script.steps.push_back({Packet('H', Pattern(2000 + i, i))});
    LogCapture log(LogWarning);
    const CameraServer server(script);
    CCamClient client;
    Connect(client, server.Port());
    CCamClient::Unit held;
    ASSERT_TRUE(WaitUntil([&] { return client.PeekUnit(&held); }));
    ASSERT_TRUE(WaitUntil([&] { return client.streamState == CCamClient::StreamEnded; }));
    EXPECT_EQ(Bytes(held.bytes, held.bytes + held.size), Pattern(2000, 0));
    const std::vector<Bytes> units = TakeUnits(client, kUnits);
    ASSERT_EQ(units.size(), CCamClient::kRingSlots - 1);
    for (unsigned i = 0; i < units.size(); ++i)
        EXPECT_EQ(units[i], Pattern(2000 + i, i));
    EXPECT_EQ(log.Count("ring full, unit of 2007 bytes dropped"), 1U);
    EXPECT_EQ(log.Count("ring full"), 1U) << "one line for a row of drops";
}

// A slow reader under load: what it reads is always one unit, never a mixture, and never goes back.
TEST(CamClient, SlowReaderSeesOnlyWholeUnits) {
    Script script;
    constexpr unsigned kUnits = 150;
    for (unsigned i = 0; i < kUnits; ++i)
        script.steps.push_back({Packet('H', Bytes(3000 + i, static_cast<std::uint8_t>(i)))});
    const CameraServer server(script);
    CCamClient client;
    Connect(client, server.Port());
    int last = -1;
    unsigned taken = 0;
    CCamClient::Unit unit;
    const auto takeOne = [&] {
        if (!client.PeekUnit(&unit))
            return;
        const std::uint8_t number = unit.bytes[0];
        platform::SleepMs(5);
        EXPECT_EQ(unit.size, 3000U + number);
        EXPECT_EQ(Bytes(unit.bytes, unit.bytes + unit.size), Bytes(unit.size, number));
        EXPECT_GT(number, last);
        last = number;
        ++taken;
        client.ReleaseUnit();
    };
    EXPECT_TRUE(WaitUntil([&] {
        const bool ended = client.streamState == CCamClient::StreamEnded;
        takeOne();
        return ended && !client.PeekUnit(&unit);
    }));
    EXPECT_GE(taken, CCamClient::kRingSlots);
}

TEST(CamClient, AudioThatDoesNotFitIsDroppedAndTheRingWraps) {
    CVrAudioRing ring;
    Bytes expected, got;
    Bytes buffer(CVrAudioRing::kBytes);
    for (unsigned i = 0; i < 200; ++i) { // positions pass the end several times, full and nearly empty
        const Bytes piece = Pattern(1448 - i, i);
        if (ring.Write(piece.data(), static_cast<std::uint32_t>(piece.size())))
            expected = expected + piece;
        else
            EXPECT_GT(ring.Held() + piece.size(), CVrAudioRing::kBytes);
        if (i % 20 > 16) {
            const std::uint32_t count = ring.Read(buffer.data(), 9001);
            got.insert(got.end(), buffer.begin(), buffer.begin() + count);
        }
    }
    const std::uint32_t rest = ring.Read(buffer.data(), CVrAudioRing::kBytes);
    got.insert(got.end(), buffer.begin(), buffer.begin() + rest);
    EXPECT_EQ(got, expected);
    EXPECT_EQ(ring.Held(), 0U);
    EXPECT_TRUE(ring.Write(buffer.data(), CVrAudioRing::kBytes));
    EXPECT_FALSE(ring.Write(buffer.data(), 1));
}

// ---- Stopping ----

// A silent camera, one that does not answer, one that sends without end, none at all.
TEST(CamClient, StopsAndDestructionsEndAtOnceInEverySituation) {
    const CameraServer silent({{}, AtEnd::Silence});
    const CameraServer busy({{{Packet('H', Pattern(900, 1))}}, AtEnd::Repeat});
    const CameraServer inAPayload({{{camsim::Header('H', 5000) + Pattern(100, 1)}}, AtEnd::Silence});
    const DeafListener deaf;
    for (const std::uint16_t port : {silent.Port(), busy.Port(), inAPayload.Port(), deaf.port}) {
        for (const std::uint32_t afterMs : {0U, 60U}) {
            EXPECT_LT(Duration([&] {
                          CCamClient client;
                          client.RequestStop(); // before any start
                          Connect(client, port);
                          platform::SleepMs(afterMs);
                          const bool connecting = client.streamState == CCamClient::NotConnected;
                          EXPECT_TRUE(connecting || port != deaf.port);
                          EXPECT_TRUE(client.HasThread());
                          client.RequestStop();
                          client.Join();
                          EXPECT_FALSE(client.HasThread());
                          Connect(client, port);
                          client.Start(); // runs already
                          platform::SleepMs(afterMs);
                      }),
                      kStopBoundMs)
                << "port " << port << " after " << afterMs;
        }
    }
    const CCamClient neverStarted;
}

TEST(VrSocket, TellsSilenceFromTheEnd) {
    LogCapture log;
    CVrSocket socket;
    char buffer[4] = {};
    EXPECT_EQ(socket.Receive(buffer, sizeof buffer), 0) << "without a connection";
    const CameraServer server({{{Text("abc")}, {Text("d"), 100}}, AtEnd::Close});
    socket.port = server.Port();
    ASSERT_TRUE(socket.StartTcpClient(Loopback()));
    socket.timeoutMs = 20;
    EXPECT_EQ(socket.Receive(buffer, sizeof buffer), 0);
    EXPECT_EQ(log.Count("CVrSocket::Receive: -1 Receive error(10060)"), 1U);
    ASSERT_TRUE(socket.Send(camsim::Header('C', 0).data(), camsim::kHeaderBytes));
    socket.timeoutMs = kPatienceMs;
    EXPECT_EQ(socket.Receive(buffer, 0), 0);
    EXPECT_EQ(socket.Receive(buffer, sizeof buffer), 3) << "less than a packet is handed on at once";
    EXPECT_EQ(socket.Receive(buffer, sizeof buffer), 1);
    EXPECT_EQ(socket.Receive(buffer, sizeof buffer), -1);
    EXPECT_TRUE(log.Has("Socket shutdown.\n"));
    EXPECT_EQ(socket.Receive(buffer, sizeof buffer), 0);
    EXPECT_FALSE(socket.Send(buffer, sizeof buffer));
}
