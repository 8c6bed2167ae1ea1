// One browser that shows the live page: a WebSocket over which it gets what is new and sends touches.
//
// From the host come JSON texts with a kind "t" (hello, state, house, commands, log) and binary picture
// updates (tile_store.h). From the page come JSON texts: ack, touch, settings. At most two picture updates
// are under way without an answer; until then the viewer gets nothing and then the newest state at once, so
// that no queue grows.
#pragma once

#include "desktop/live_host.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/websocket.hpp>
#include <memory>

namespace desktop {

class LiveViewer : public LiveObserver, public std::enable_shared_from_this<LiveViewer> {
public:
    using Request = boost::beast::http::request<boost::beast::http::string_body>;

    LiveViewer(boost::beast::tcp_stream&& stream, LiveHost& of);
    ~LiveViewer() override;

    // Answers the handshake and lives until the browser leaves; `protocol` is confirmed when it is not empty.
    void Run(const Request& request, const std::string& protocol);
    void Close(); // the host ends

    static int Count() { return count; }

private:
    void OnNews() override;
    void OnHostGone() override { open = false; }
    void Read();
    void OnMessage(const std::string& text);
    void OnTouch(const nlohmann::json& message);
    void SendNext();
    bool ComposeNext(); // fills `outgoing`; false when there is nothing to say
    void ComposeText(const nlohmann::json& message);
    void ComposeCommands();
    void ComposeLog();
    void Leave();

    static int count;

    boost::beast::websocket::stream<boost::beast::tcp_stream> socket;
    LiveHost& host;
    boost::beast::flat_buffer incoming;
    std::string outgoing;
    bool outgoingIsText = true;
    bool open = false;
    bool writing = false;
    std::string notice; // a sentence for this viewer alone

    bool saidHello = false;
    std::uint64_t seenState = 0;
    std::uint64_t seenHouse = 0;
    std::uint64_t seenCommands = 0;
    std::uint64_t seenLog = 0;
    std::uint32_t seenPicture = 0;
    int unanswered = 0; // picture updates on their way
};

} // namespace desktop
