#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/clock.h"
#include "platform/pipe_server.h"
#include "platform/pipe_writer.h"
#include "platform/stop_signal.h"
#include "platform/wait.h"

namespace fs = std::filesystem;
using platform::Deadline;
using platform::PipeServer;
using platform::PipeWriter;

namespace {

constexpr uint32_t kPatienceMs = 5000;

sockaddr_un AddressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

class PipeTest : public ::testing::Test {
protected:
    PipeTest() {
        std::string pattern = (fs::temp_directory_path() / "wallslate-pipe-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        path = (folder / "socket").string();
    }
    ~PipeTest() override { fs::remove_all(folder); }

    platform::Descriptor Connect() const {
        platform::Descriptor client(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const sockaddr_un address = AddressOf(path);
        if (connect(client.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            client.Close();
        return client;
    }

    // A server that died: its socket file without anybody behind it.
    void LeaveDeadSocket() const {
        const platform::Descriptor dead(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const sockaddr_un address = AddressOf(path);
        ASSERT_EQ(bind(dead.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }

    fs::path folder;
    std::string path;
    PipeServer server;
};

// A connected pair: [0] is the writer's end, [1] the reader's.
struct SocketPair {
    SocketPair() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0); }
    ~SocketPair() {
        CloseReader();
        close(ends[0]);
    }
    SocketPair(const SocketPair&) = delete;
    SocketPair& operator=(const SocketPair&) = delete;

    void CloseReader() {
        if (ends[1] >= 0)
            close(ends[1]);
        ends[1] = -1;
    }
    // Less than count bytes only if the writer has closed.
    std::string Read(size_t count) const {
        std::string text(count, '\0');
        size_t total = 0;
        while (total < count) {
            const ssize_t got = read(ends[1], text.data() + total, count - total);
            if (got <= 0)
                break;
            total += static_cast<size_t>(got);
        }
        text.resize(total);
        return text;
    }
    int ends[2] = {-1, -1};
};

bool Send(PipeWriter& writer, const std::string& head, const std::string& payload, uint32_t timeoutMs) {
    return writer.Send(head.data(), static_cast<uint32_t>(head.size()), payload.data(),
                       static_cast<uint32_t>(payload.size()), timeoutMs);
}

} // namespace

TEST(PipePathTest, NamesFollowTheConventionOfNamedPipes) {
    setenv("TMPDIR", "/var/tmp", 1);
    EXPECT_STREQ(platform::PipePath("wall").text, "/var/tmp/CoreFxPipe_wall");
    EXPECT_STREQ(platform::PipePath("/run/wall").text, "/run/wall");
    setenv("TMPDIR", "", 1);
    EXPECT_STREQ(platform::PipePath("wall").text, "/tmp/CoreFxPipe_wall");
    unsetenv("TMPDIR");
    EXPECT_STREQ(platform::PipePath("").text, "/tmp/CoreFxPipe_");
    EXPECT_TRUE(platform::PipePath(std::string(200, 'x').c_str()).IsEmpty());
}

TEST_F(PipeTest, SocketBelongsToItsOwnerAndGoesAtTheEnd) {
    const mode_t former = umask(0);
    ASSERT_EQ(server.Create(path.c_str()), PipeServer::Creation::Done);
    umask(former);
    struct stat status {};
    ASSERT_EQ(lstat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFSOCK | 0600));
    EXPECT_TRUE(platform::IsPipeServed(path.c_str()));
    server.Close();
    EXPECT_FALSE(fs::exists(path));
    EXPECT_FALSE(platform::IsPipeServed(path.c_str()));
}

TEST_F(PipeTest, LeftOverSocketIsReplacedAServedOneIsNot) {
    LeaveDeadSocket();
    ASSERT_TRUE(fs::exists(path));
    ASSERT_EQ(server.Create(path.c_str()), PipeServer::Creation::Done);
    EXPECT_TRUE(Connect().IsOpen());
    PipeServer second;
    EXPECT_EQ(second.Create(path.c_str()), PipeServer::Creation::NameTaken);
    EXPECT_TRUE(Connect().IsOpen());
}

TEST_F(PipeTest, WhatIsNoSocketIsLeftAlone) {
    std::ofstream(path) << "precious";
    EXPECT_EQ(server.Create(path.c_str()), PipeServer::Creation::Failed);
    EXPECT_EQ(fs::file_size(path), 8u);
    EXPECT_EQ(server.Create((folder / "missing/socket").c_str()), PipeServer::Creation::Failed);
    EXPECT_EQ(server.Create(std::string(1, '/').append(150, 'x').c_str()), PipeServer::Creation::Failed);
}

TEST_F(PipeTest, ForeignSocketWithTheSameNameSurvivesClose) {
    ASSERT_EQ(server.Create(path.c_str()), PipeServer::Creation::Done);
    fs::remove(path);
    PipeServer other;
    ASSERT_EQ(other.Create(path.c_str()), PipeServer::Creation::Done);
    server.Close();
    EXPECT_TRUE(fs::exists(path));
}

TEST_F(PipeTest, OfManyThatStartAtOnceOneGetsTheName) {
    for (int round = 0; round < 20; round++) {
        LeaveDeadSocket();
        std::vector<PipeServer> servers(4);
        std::atomic<int> done{0};
        std::vector<std::thread> threads;
        for (PipeServer& candidate : servers)
            threads.emplace_back(
                [&] { done += candidate.Create(path.c_str()) == PipeServer::Creation::Done; });
        for (std::thread& thread : threads)
            thread.join();
        ASSERT_EQ(done, 1);
    }
}

TEST_F(PipeTest, WaitingEndsWithAClientTheTimeOrAStopRequest) {
    ASSERT_EQ(server.Create(path.c_str()), PipeServer::Creation::Done);
    const uint64_t before = platform::RealTickMs();
    EXPECT_EQ(server.WaitForClient(Deadline(50)), PipeServer::Waiting::TimedOut);
    EXPECT_GE(platform::RealTickMs() - before, 49u);
    EXPECT_EQ(server.WaitForClient(Deadline(0)), PipeServer::Waiting::TimedOut);

    const auto client = Connect();
    EXPECT_EQ(server.WaitForClient(Deadline(0)), PipeServer::Waiting::Connected);
    platform::RequestStop();
    EXPECT_EQ(server.WaitForClient(Deadline(kPatienceMs)), PipeServer::Waiting::StopRequested);
    platform::ClearStopRequest();
}

TEST_F(PipeTest, ReceivesWhatThereIsAndNoticesTheEnd) {
    ASSERT_EQ(server.Create(path.c_str()), PipeServer::Creation::Done);
    auto client = Connect();
    ASSERT_EQ(server.WaitForClient(Deadline(kPatienceMs)), PipeServer::Waiting::Connected);
    char buffer[16];
    EXPECT_EQ(server.Receive(buffer, sizeof buffer, 20), 0);
    ASSERT_EQ(write(client.Get(), "abcdef", 6), 6);
    EXPECT_EQ(server.Receive(buffer, 4, 1000), 4);
    client.Close(); // two bytes are still on their way
    EXPECT_EQ(server.Receive(buffer, sizeof buffer, 1000), 2);
    EXPECT_EQ(server.Receive(buffer, sizeof buffer, 1000), PipeServer::kBroken);
    EXPECT_EQ(server.Receive(buffer, sizeof buffer, 1000), PipeServer::kBroken);
}

TEST_F(PipeTest, SecondClientIsClosedWhileTheFirstIsServed) {
    ASSERT_EQ(server.Create(path.c_str()), PipeServer::Creation::Done);
    const auto first = Connect();
    ASSERT_EQ(server.WaitForClient(Deadline(kPatienceMs)), PipeServer::Waiting::Connected);
    const auto second = Connect();
    ASSERT_TRUE(second.IsOpen());
    char buffer[4];
    EXPECT_EQ(server.Receive(buffer, sizeof buffer, 20), 0);
    EXPECT_EQ(read(second.Get(), buffer, 1), 0);
    ASSERT_EQ(write(first.Get(), "x", 1), 1);
    EXPECT_EQ(server.Receive(buffer, sizeof buffer, 1000), 1);
}

TEST_F(PipeTest, ClientBehindOneThatOnlyLooksIsNotTurnedAway) {
    ASSERT_EQ(server.Create(path.c_str()), PipeServer::Creation::Done);
    auto looker = Connect();
    auto real = Connect();
    ASSERT_EQ(server.WaitForClient(Deadline(kPatienceMs)), PipeServer::Waiting::Connected);
    looker.Close();
    char buffer[4];
    EXPECT_EQ(server.Receive(buffer, sizeof buffer, 1000), PipeServer::kBroken);
    ASSERT_EQ(server.WaitForClient(Deadline(kPatienceMs)), PipeServer::Waiting::Connected);
    ASSERT_EQ(write(real.Get(), "x", 1), 1);
    EXPECT_EQ(server.Receive(buffer, sizeof buffer, 1000), 1);
}

TEST(PipeWriterTest, MessagesOfManySendersStayWhole) {
    SocketPair pair;
    PipeWriter writer;
    ASSERT_TRUE(writer.Start(pair.ends[0]));
    constexpr int kSenders = 3;
    constexpr int kMessages = 300;
    std::vector<std::thread> senders;
    for (int i = 0; i < kSenders; i++) {
        senders.emplace_back([&writer, i] {
            for (int n = 0; n < kMessages; n++) {
                const std::string payload(static_cast<size_t>(1 + n * 97 % 5000), static_cast<char>('a' + i));
                const auto size = static_cast<uint32_t>(payload.size());
                const std::string head(reinterpret_cast<const char*>(&size), 4);
                EXPECT_TRUE(Send(writer, head, payload, kPatienceMs));
            }
        });
    }
    int counts[kSenders] = {};
    for (int n = 0; n < kSenders * kMessages; n++) {
        uint32_t size = 0;
        ASSERT_EQ(pair.Read(4).copy(reinterpret_cast<char*>(&size), 4), 4u);
        ASSERT_LE(size, 5000u);
        const std::string payload = pair.Read(size);
        ASSERT_EQ(payload, std::string(size, payload[0]));
        counts[payload[0] - 'a']++;
    }
    for (std::thread& sender : senders)
        sender.join();
    for (const int count : counts)
        EXPECT_EQ(count, kMessages);
}

TEST(PipeWriterTest, SlowReaderLosesWholeMessagesOnly) {
    SocketPair pair;
    PipeWriter writer;
    ASSERT_TRUE(writer.Start(pair.ends[0]));
    const std::string frame(2458624, 'f');
    int sent = 0;
    uint64_t before = platform::RealTickMs();
    for (; Send(writer, "head", frame, 100); sent++)
        before = platform::RealTickMs();
    EXPECT_GE(sent, 6); // six frames have their place even if nobody reads
    EXPECT_GE(platform::RealTickMs() - before, 99u);
    EXPECT_LT(platform::RealTickMs() - before, 1000u);

    before = platform::RealTickMs(); // nobody waits for a reader that has taken nothing since
    for (int i = 0; i < 10; i++)
        EXPECT_FALSE(Send(writer, "head", frame, 60000));
    EXPECT_LT(platform::RealTickMs() - before, 1000u);

    for (int i = 0; i < sent; i++) {
        ASSERT_EQ(pair.Read(4), "head");
        ASSERT_TRUE(pair.Read(frame.size()) == frame);
    }
    for (int i = 0; i < 20; i++) { // more than fits at once: with a reader that reads, senders wait again
        std::string received;
        std::thread reader([&] { received = pair.Read(4 + frame.size()); });
        EXPECT_TRUE(Send(writer, "next", frame, kPatienceMs));
        reader.join();
        EXPECT_TRUE(received == "next" + frame);
    }
}

TEST(PipeWriterTest, MessageLargerThanTheRingIsRefusedAtOnce) {
    SocketPair pair;
    PipeWriter writer;
    ASSERT_TRUE(writer.Start(pair.ends[0]));
    EXPECT_FALSE(Send(writer, "head", std::string(PipeWriter::kCapacity - 3, 'x'), kPatienceMs));
    const std::string exact(PipeWriter::kCapacity - 4, 'x');
    EXPECT_TRUE(Send(writer, "head", exact, 0));
    EXPECT_TRUE(pair.Read(4 + exact.size()) == "head" + exact);
}

TEST(PipeWriterTest, LostReaderEndsTheSending) {
    SocketPair pair;
    PipeWriter writer;
    ASSERT_TRUE(writer.Start(pair.ends[0]));
    pair.CloseReader();
    const Deadline deadline(kPatienceMs);
    while (Send(writer, "x", "", 100) && !deadline.HasPassed())
        platform::SleepMs(1);
    writer.Stop(kPatienceMs); // nothing to wait for
    EXPECT_FALSE(deadline.HasPassed());
}

TEST(PipeWriterTest, StopDeliversWhatIsQueuedWithinItsGrace) {
    SocketPair pair;
    PipeWriter writer;
    ASSERT_TRUE(writer.Start(pair.ends[0]));
    const std::string bulk(4000000, 'b');
    ASSERT_TRUE(Send(writer, "h", bulk, 100));
    std::string received;
    std::thread reader([&] { received = pair.Read(1 + bulk.size()); });
    writer.Stop(kPatienceMs);
    EXPECT_FALSE(Send(writer, "x", "", 100));
    reader.join();
    EXPECT_EQ(received.size(), 1 + bulk.size());

    ASSERT_TRUE(writer.Start(pair.ends[0])); // a second run, whose reader does nothing
    ASSERT_TRUE(Send(writer, "h", bulk, 100));
    const uint64_t before = platform::RealTickMs();
    writer.Stop(50);
    EXPECT_LT(platform::RealTickMs() - before, 1000u);
}

TEST(PipeWriterTest, StopWakesASenderThatWaitsForRoom) {
    SocketPair pair;
    PipeWriter writer;
    ASSERT_TRUE(writer.Start(pair.ends[0]));
    const std::string bulk(PipeWriter::kCapacity, 'b');
    ASSERT_TRUE(Send(writer, "", bulk, 100));
    bool wasSent = true;
    std::thread sender([&] { wasSent = Send(writer, "", bulk, 60000); });
    platform::SleepMs(20);
    const uint64_t before = platform::RealTickMs();
    writer.Stop(0);
    sender.join();
    EXPECT_FALSE(wasSent);
    EXPECT_LT(platform::RealTickMs() - before, 1000u);
}
