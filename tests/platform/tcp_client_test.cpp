#include <cerrno>
#include <string>
#include <thread>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/clock.h"
#include "platform/tcp_client.h"
#include "platform/wait.h"

namespace {

using platform::TcpClient;

constexpr uint32_t kPatienceMs = 5000;

// Listens on a free port of the loopback.
struct Listener {
    Listener() : socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in any{};
        any.sin_family = AF_INET;
        any.sin_addr.s_addr = address;
        socklen_t size = sizeof any;
        EXPECT_EQ(bind(socket.Get(), reinterpret_cast<sockaddr*>(&any), size), 0);
        EXPECT_EQ(listen(socket.Get(), 1), 0);
        getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&any), &size);
        port = ntohs(any.sin_port);
    }
    platform::Descriptor Accept() const {
        return platform::Descriptor(accept4(socket.Get(), nullptr, nullptr, SOCK_CLOEXEC));
    }
    const uint32_t address = htonl(INADDR_LOOPBACK);
    platform::Descriptor socket;
    uint16_t port = 0;
};

} // namespace

TEST(TcpClientTest, SendsReceivesAndTellsTheEndFromATimeout) {
    const Listener listener;
    TcpClient client;
    ASSERT_EQ(client.Connect(listener.address, listener.port, kPatienceMs), TcpClient::Connection::Done);
    auto peer = listener.Accept();
    EXPECT_EQ(client.Send("hello", 5, kPatienceMs), 5u);
    char buffer[8] = {};
    EXPECT_EQ(read(peer.Get(), buffer, sizeof buffer), 5);
    EXPECT_EQ(client.Receive(buffer, sizeof buffer, 20), -1);
    EXPECT_EQ(client.GetError(), TcpClient::kTimedOut);
    ASSERT_EQ(write(peer.Get(), "abc", 3), 3);
    EXPECT_EQ(client.Receive(buffer, sizeof buffer, kPatienceMs), 3);
    peer.Close();
    EXPECT_EQ(client.Receive(buffer, sizeof buffer, kPatienceMs), 0);
}

TEST(TcpClientTest, RefusedConnectionFailsAtOnce) {
    uint16_t port = 0;
    {
        const Listener listener;
        port = listener.port;
    }
    TcpClient client;
    EXPECT_EQ(client.Connect(htonl(INADDR_LOOPBACK), port, kPatienceMs), TcpClient::Connection::Failed);
    EXPECT_EQ(client.GetError(), ECONNREFUSED);
    EXPECT_FALSE(client.IsOpen());
    char byte = 0;
    EXPECT_EQ(client.Receive(&byte, 1, 10), -1);
}

TEST(TcpClientTest, InterruptEndsAWaitFromAnotherThread) {
    const Listener listener;
    TcpClient client;
    ASSERT_EQ(client.Connect(listener.address, listener.port, kPatienceMs), TcpClient::Connection::Done);
    std::thread other([&] {
        platform::SleepMs(20);
        client.Interrupt();
    });
    const uint64_t before = platform::RealTickMs();
    char byte = 0;
    EXPECT_EQ(client.Receive(&byte, 1, 60000), -1);
    EXPECT_EQ(client.GetError(), TcpClient::kInterrupted);
    EXPECT_LT(platform::RealTickMs() - before, 5000u);
    other.join();
    EXPECT_EQ(client.Receive(&byte, 1, 60000), -1); // until it is cleared
    client.ClearInterrupt();
    EXPECT_EQ(client.Receive(&byte, 1, 10), -1);
    EXPECT_EQ(client.GetError(), TcpClient::kTimedOut);
}
