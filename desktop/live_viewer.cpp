#include "desktop/live_viewer.h"

#include <algorithm>
#include <boost/beast/core/buffers_to_string.hpp>

namespace desktop {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace websocket = beast::websocket;
using nlohmann::json;

constexpr std::size_t LongestMessage = 64 * 1024;
constexpr int MostUnanswered = 2;
constexpr std::uint64_t MostLinesAtOnce = 200;

std::optional<int> Whole(const json& message, const char* key) {
    const auto at = message.find(key);
    if (at == message.end() || !at->is_number_integer() || *at < -100'000 || *at > 100'000)
        return std::nullopt;
    return at->get<int>();
}

} // namespace

int LiveViewer::count = 0;

LiveViewer::LiveViewer(beast::tcp_stream&& stream, LiveHost& of) : socket(std::move(stream)), host(of) {
    ++count;
}

LiveViewer::~LiveViewer() {
    --count;
    Leave();
}

void LiveViewer::Run(const Request& request, const std::string& protocol) {
    beast::get_lowest_layer(socket).expires_never(); // the WebSocket has its own timeouts
    socket.set_option(websocket::stream_base::timeout::suggested(beast::role_type::server));
    socket.set_option(websocket::stream_base::decorator([protocol](websocket::response_type& response) {
        if (!protocol.empty())
            response.set(beast::http::field::sec_websocket_protocol, protocol);
    }));
    socket.read_message_max(LongestMessage);
    beast::error_code ignored;
    beast::get_lowest_layer(socket).socket().set_option(asio::ip::tcp::no_delay(true), ignored);
    socket.async_accept(request, [self = shared_from_this()](beast::error_code error) {
        if (error)
            return;
        self->open = true;
        self->host.Subscribe(self.get());
        self->Read();
        self->SendNext();
    });
}

void LiveViewer::Close() {
    if (!open)
        return;
    Leave();
    beast::error_code ignored;
    beast::get_lowest_layer(socket).socket().shutdown(asio::ip::tcp::socket::shutdown_both, ignored);
}

// A viewer is subscribed while it is open, so that one that is not open never calls a host that may be gone.
void LiveViewer::Leave() {
    if (!open)
        return;
    open = false;
    host.Unsubscribe(this);
}

// ---- from the page ----

void LiveViewer::Read() {
    socket.async_read(incoming, [self = shared_from_this()](beast::error_code error, std::size_t) {
        if (error || !self->open)
            return self->Leave();
        self->OnMessage(beast::buffers_to_string(self->incoming.data()));
        self->incoming.consume(self->incoming.size());
        self->Read();
    });
}

void LiveViewer::OnMessage(const std::string& text) {
    // No message of the page nests deeper than this.
    const auto shallow = [](int depth, json::parse_event_t, json&) { return depth < 4; };
    const json message = json::parse(text, shallow, /*allow_exceptions=*/false);
    if (!message.is_object() || !message.contains("t") || !message["t"].is_string())
        return;
    const std::string kind = message["t"];
    if (kind == "ack")
        unanswered = std::max(unanswered - 1, 0);
    else if (kind == "touch")
        OnTouch(message);
    else if (kind == "settings")
        notice = host.ApplySettings(message.value("set", json())).value_or("");
    SendNext();
}

void LiveViewer::OnTouch(const json& message) {
    const auto type = Whole(message, "k"), x = Whole(message, "x"), y = Whole(message, "y");
    if (!type || !x || !y || (*type != 1 && *type != 2 && *type != 4))
        return;
    const auto within = [](int value) { return std::clamp(value, 0, ScreenPixels - 1); };
    const PacedTouch touch = {static_cast<TouchType>(*type), {within(*x), within(*y)}};
    if (!host.Touch(static_cast<LiveObserver*>(this), touch) && touch.type == TouchType::Down)
        notice = "Somebody else has a finger on the display.";
}

// ---- to the page ----

void LiveViewer::OnNews() {
    SendNext();
}

void LiveViewer::SendNext() {
    if (!open || writing || !ComposeNext())
        return;
    writing = true;
    socket.text(outgoingIsText);
    socket.async_write(asio::buffer(outgoing),
                       [self = shared_from_this()](beast::error_code error, std::size_t) {
                           self->writing = false;
                           if (error)
                               return self->Leave();
                           self->SendNext();
                       });
}

bool LiveViewer::ComposeNext() {
    if (!saidHello) {
        saidHello = true;
        ComposeText({{"t", "hello"}, {"version", WALLSLATE_VERSION}});
    } else if (!notice.empty()) {
        ComposeText({{"t", "notice"}, {"text", std::exchange(notice, {})}});
    } else if (seenState != host.StateVersion()) {
        seenState = host.StateVersion();
        ComposeText({{"t", "state"}, {"state", host.State()}});
    } else if (seenHouse != host.HouseVersion()) {
        seenHouse = host.HouseVersion();
        ComposeText({{"t", "house"}, {"items", host.HouseItems()}});
    } else if (seenCommands != host.Commands().End()) {
        ComposeCommands();
    } else if (seenPicture != host.Picture().Serial() && unanswered < MostUnanswered) {
        const std::vector<std::uint8_t> update = host.Picture().UpdateSince(seenPicture);
        seenPicture = host.Picture().Serial();
        ++unanswered;
        outgoing.assign(update.begin(), update.end());
        outgoingIsText = false;
    } else if (seenLog != host.Log().End()) {
        ComposeLog();
    } else {
        return false;
    }
    return true;
}

void LiveViewer::ComposeText(const json& message) {
    outgoing = message.dump(-1, ' ', false, json::error_handler_t::replace);
    outgoingIsText = true;
}

void LiveViewer::ComposeCommands() {
    const History<LiveCommand>& all = host.Commands();
    json list = json::array();
    for (std::uint64_t i = std::max(seenCommands, all.First()); i < all.End(); ++i)
        list.push_back(
            {{"n", i}, {"text", all.At(i).text}, {"words", all.At(i).words}, {"at", all.At(i).at}});
    seenCommands = all.End();
    ComposeText({{"t", "commands"}, {"list", std::move(list)}});
}

void LiveViewer::ComposeLog() {
    const History<std::string>& all = host.Log();
    const std::uint64_t first = std::max(seenLog, all.First());
    const std::uint64_t end = std::min(all.End(), first + MostLinesAtOnce);
    json lines = json::array();
    for (std::uint64_t i = first; i < end; ++i)
        lines.push_back(all.At(i));
    ComposeText({{"t", "log"}, {"lost", first - seenLog}, {"lines", std::move(lines)}});
    seenLog = end;
}

} // namespace desktop
