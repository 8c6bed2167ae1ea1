#include "desktop/live_server.h"

#include "desktop/live_api.h"
#include "desktop/live_viewer.h"
#include "desktop/picture.h"

#include <boost/asio/ip/udp.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/beast/http.hpp>
#include <cstdio>

namespace desktop {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using tcp = asio::ip::tcp;
using namespace std::chrono_literals;

constexpr auto RequestPatience = 20s; // for a whole request, and for the next one on the same connection
constexpr std::uint32_t LongestHeader = 8 * 1024;
constexpr int MostConnections = 100;
constexpr int MostViewers = 32;
constexpr std::string_view WebSocketPath = "/live";
constexpr std::string_view ViewerProtocol = "wallslate";
// The page needs nothing from elsewhere; blob: is for what it saves, data: for nothing at all.
constexpr const char* ContentPolicy = "default-src 'self'; img-src 'self' blob:; frame-ancestors 'none'; "
                                      "base-uri 'none'; form-action 'none'";

class Listener;

// One connection: requests one after the other, until it becomes a viewer or ends.
class Session : public std::enable_shared_from_this<Session> {
public:
    Session(tcp::socket&& socket, Listener& of) : stream(std::move(socket)), listener(of) { ++count; }
    ~Session() { --count; }

    void Run() { ReadHead(); }
    static int Count() { return count; }

private:
    using Parser = http::request_parser<http::string_body>;

    void ReadHead();
    void OnHead();
    void OnBody();
    void BecomeViewer();
    void Reply(const ApiReply& reply, bool keepAlive);
    ApiRequest Request() const;
    std::string Header(http::field field) const;

    static int count;

    beast::tcp_stream stream;
    Listener& listener;
    beast::flat_buffer buffer;
    std::optional<Parser> parser;
    http::response<http::string_body> response;
};

int Session::count = 0;

class Listener {
public:
    Listener(asio::io_context& context, const ListenAddress& address, LiveHost& of, const Guard& with)
        : host(of), guard(with), api(of, with), acceptor(context) {
        const tcp::endpoint endpoint(asio::ip::make_address(address.host), address.port);
        beast::error_code error;
        acceptor.open(endpoint.protocol(), error);
        if (!error)
            acceptor.set_option(asio::socket_base::reuse_address(true), error);
        if (!error)
            acceptor.bind(endpoint, error);
        if (!error)
            acceptor.listen(asio::socket_base::max_listen_connections, error);
        if (error)
            throw Fault("--listen " + address.Authority() + ": " + error.message());
        Accept();
    }

    std::uint16_t Port() const { return acceptor.local_endpoint().port(); }

    void Close() {
        beast::error_code ignored;
        acceptor.close(ignored);
        for (const auto& weak : viewers)
            if (const auto viewer = weak.lock())
                viewer->Close();
    }

    void Remember(const std::shared_ptr<LiveViewer>& viewer) {
        std::erase_if(viewers, [](const auto& weak) { return weak.expired(); });
        viewers.push_back(viewer);
    }

    LiveHost& host;
    const Guard& guard;
    LiveApi api;

private:
    void Accept() {
        acceptor.async_accept([this](const beast::error_code& error, tcp::socket socket) {
            if (!acceptor.is_open())
                return;
            if (!error && Session::Count() + LiveViewer::Count() < MostConnections)
                std::make_shared<Session>(std::move(socket), *this)->Run();
            Accept();
        });
    }

    tcp::acceptor acceptor;
    std::vector<std::weak_ptr<LiveViewer>> viewers;
};

void Session::ReadHead() {
    parser.emplace();
    parser->header_limit(LongestHeader);
    parser->body_limit(HouseBodyBytes); // narrowed when the head is known
    stream.expires_after(RequestPatience);
    http::async_read_header(
        stream, buffer, *parser, [self = shared_from_this()](beast::error_code error, std::size_t) {
            if (error == http::error::header_limit)
                return self->Reply(Sentence(431, "The head of the request is too long."), false);
            if (error == http::error::body_limit)
                return self->Reply(Sentence(413, "The body is too long."), false);
            if (error && error != http::error::end_of_stream &&
                error.category() == http::make_error_code(http::error::bad_method).category())
                return self->Reply(Sentence(400, "This is no HTTP request."), false);
            if (!error)
                self->OnHead();
        });
}

void Session::OnHead() {
    const ApiRequest head = Request();
    if (const auto refusal = listener.api.Refuse(head); refusal && head.Path() != WebSocketPath)
        return Reply(*refusal, false);
    if (head.Path() == WebSocketPath)
        return BecomeViewer();
    const auto length = parser->content_length();
    if (length && *length > LiveApi::BodyLimit(head))
        return Reply(
            Sentence(413, "The body is longer than " + std::to_string(LiveApi::BodyLimit(head)) + " bytes."),
            false);
    parser->body_limit(LiveApi::BodyLimit(head));
    http::async_read(stream, buffer, *parser,
                     [self = shared_from_this()](beast::error_code error, std::size_t) {
                         if (error == http::error::body_limit)
                             return self->Reply(Sentence(413, "The body is too long."), false);
                         if (!error)
                             self->OnBody();
                     });
}

void Session::OnBody() {
    ApiRequest request = Request();
    request.body = std::move(parser->get().body());
    ApiReply reply;
    try {
        reply = listener.api.Handle(request);
    } catch (const std::exception& problem) {
        reply = Sentence(500, problem.what());
    }
    Reply(reply, parser->get().keep_alive());
}

void Session::BecomeViewer() {
    const ApiRequest head = Request();
    const std::string protocols = Header(http::field::sec_websocket_protocol);
    if (!beast::websocket::is_upgrade(parser->get()))
        return Reply(Sentence(426, "This place is for the page's WebSocket."), false);
    if (!Guard::HostAllowed(head.host))
        return Reply(Sentence(421, "This host goes by its address or as localhost only."), false);
    if (!Guard::OriginAllowed(head.origin, head.host))
        return Reply(Sentence(403, "Pages from elsewhere may not ask this host."), false);
    if (!listener.guard.ProtocolsAllowed(protocols))
        return Reply(Sentence(401, "This needs the token that the host printed."), false);
    if (LiveViewer::Count() >= MostViewers)
        return Reply(Sentence(503, "Too many viewers."), false);
    const bool named = protocols.find(ViewerProtocol) != std::string::npos;
    const auto viewer = std::make_shared<LiveViewer>(std::move(stream), listener.host);
    listener.Remember(viewer);
    viewer->Run(parser->release(), named ? std::string(ViewerProtocol) : "");
}

std::string Session::Header(http::field field) const {
    const auto& headers = parser->get();
    const auto at = headers.find(field);
    return at == headers.end() ? std::string() : std::string(at->value());
}

ApiRequest Session::Request() const {
    ApiRequest request;
    const auto& message = parser->get();
    request.method = std::string(message.method_string());
    request.target = std::string(message.target());
    request.host = Header(http::field::host);
    if (message.find(http::field::origin) != message.end())
        request.origin = Header(http::field::origin);
    request.authorization = Header(http::field::authorization);
    request.contentType = Header(http::field::content_type);
    request.ifNoneMatch = Header(http::field::if_none_match);
    return request;
}

void Session::Reply(const ApiReply& reply, bool keepAlive) {
    response = {};
    response.version(11);
    response.result(static_cast<unsigned>(reply.status));
    response.set(http::field::content_type, reply.type);
    response.set("Content-Security-Policy", ContentPolicy);
    response.set("X-Content-Type-Options", "nosniff");
    response.set("Referrer-Policy", "no-referrer");
    response.set("Cross-Origin-Resource-Policy", "same-origin");
    for (const auto& [name, value] : reply.headers)
        response.set(name, value);
    const bool isHead = parser && parser->is_header_done() && parser->get().method() == http::verb::head;
    response.body() = isHead ? "" : reply.body;
    response.keep_alive(keepAlive);
    if (reply.status != 304)
        response.content_length(reply.body.size());
    stream.expires_after(RequestPatience);
    http::async_write(stream, response,
                      [self = shared_from_this(), keepAlive](beast::error_code error, std::size_t) {
                          if (!error && keepAlive)
                              return self->ReadHead();
                          beast::error_code ignored;
                          self->stream.socket().shutdown(tcp::socket::shutdown_send, ignored);
                      });
}

// A script that runs while the page is served: time passes by running the server.
class LiveScriptTarget : public ScriptTarget {
public:
    LiveScriptTarget(asio::io_context& ioContext, LiveHost& of, std::filesystem::path shots)
        : context(ioContext), host(of), outFolder(std::move(shots)), taken(of.Commands().End()) {}

    void Touch(TouchType type, Point at) override { host.Touch(this, {type, at}); }
    void Send(std::uint32_t command, const std::string& payload) override { host.SendRaw(command, payload); }
    void Wait(std::chrono::milliseconds duration) override {
        context.run_for(duration);
        if (context.stopped())
            throw Interrupted(SIGTERM);
    }
    std::chrono::steady_clock::time_point LastFrameTime() const override { return host.LastFrameTime(); }
    bool TakeTextCommand(std::string& text) override {
        taken = std::max(taken, host.Commands().First());
        if (taken == host.Commands().End())
            return false;
        text = host.Commands().At(taken++).text;
        return true;
    }
    void Shot(const std::string& name) override {
        std::error_code ignored;
        std::filesystem::create_directories(outFolder, ignored);
        WriteFile(outFolder / (name + ".png"), EncodePng(WholeFrame(host.Picture().Frame())));
    }

private:
    asio::io_context& context;
    LiveHost& host;
    std::filesystem::path outFolder;
    std::uint64_t taken;
};

void WaitForPage(LiveHost& host, LiveScriptTarget& target, std::chrono::milliseconds patience) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!host.IsRunning()) {
        if (std::chrono::steady_clock::now() >= deadline)
            throw Fault("the display does not answer: no picture came");
        target.Wait(20ms);
    }
}

// "Every address" is nowhere to go for a browser: one of this machine's that others can reach, found by asking which
// one a packet to elsewhere would leave from. None is sent.
std::string ReachableHost(const std::string& host) {
    if (!asio::ip::make_address(host).is_unspecified())
        return host;
    asio::io_context context;
    asio::ip::udp::socket socket(context);
    const asio::ip::udp::endpoint elsewhere(asio::ip::make_address("192.0.2.1"), 9); // set aside for examples
    beast::error_code error;
    socket.connect(elsewhere, error);
    return error ? "127.0.0.1" : socket.local_endpoint().address().to_string();
}

void PrintAddress(ListenAddress address, const Token& token) {
    address.host = ReachableHost(address.host);
    std::printf("http://%s/%s\n", address.Authority().c_str(),
                token.generated ? ("#token=" + token.text).c_str() : "");
    std::fflush(stdout);
}

} // namespace

void RunLive(House house, const LiveOptions& options) {
    ListenAddress address = ParseListenAddress(options.listen);
    const Token token = address.loopback ? Token() : ObtainToken();
    const Guard guard(token.text);
    asio::io_context context(1);
    LiveHost host(context, options.host);
    Listener listener(context, address, host, guard);
    address.port = listener.Port(); // when 0 asked for any

    int endedBy = 0;
    asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([&](const beast::error_code& error, int signalNumber) {
        if (error)
            return;
        endedBy = signalNumber;
        context.stop();
    });

    host.Start(std::move(house));
    PrintAddress(address, token);
    try {
        if (options.script) {
            LiveScriptTarget target(context, host, options.outFolder);
            WaitForPage(host, target, options.host.display.patience.firstPicture);
            RunScript(*options.script, target);
        }
        context.run();
    } catch (...) {
        host.Stop();
        if (endedBy == 0)
            throw;
    }
    listener.Close();
    host.Stop();
    if (!options.host.quiet)
        std::fprintf(stderr, "wallslate-host: ended\n");
}

} // namespace desktop
