#include "desktop/live_api.h"

#include "desktop/fault.h"
#include "desktop/picture.h"
#include "desktop/web_files.h"

#include <algorithm>
#include <functional>

namespace desktop {

namespace {

using nlohmann::json;

constexpr int LongestDragMs = 60'000;
constexpr std::string_view Json = "application/json";

std::string Dumped(const json& value) {
    return value.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}

ApiReply JsonReply(int status, const json& value) {
    ApiReply reply;
    reply.status = status;
    reply.type = Json;
    reply.body = Dumped(value);
    return reply;
}

// FNV-1a: enough to tell versions of a file apart
std::string TagOf(std::string_view bytes) {
    std::uint64_t hash = 14695981039346656037ull;
    for (const char c : bytes)
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ull;
    return "\"" + std::to_string(hash) + "\"";
}

// Differs from run to run of the host, as the pictures' numbers begin anew each time.
const std::string& RunTag() {
    static const std::string tag =
        std::to_string(std::chrono::system_clock::now().time_since_epoch().count() & 0xFFFFFFFFFFFF);
    return tag;
}

bool TagMatches(const std::string& header, const std::string& tag) {
    return header == "*" || header.find(tag) != std::string::npos;
}

// The JSON body of a POST; an ApiReply says why there is none.
std::optional<ApiReply> ReadBody(const ApiRequest& request, json& body) {
    if (!request.contentType.starts_with(Json))
        return Sentence(415, "The body must be application/json.");
    // The reader recurses, so look at the depth first.
    constexpr int deepest = 32;
    bool tooDeep = false;
    const auto watch = [&](int depth, json::parse_event_t, json&) {
        tooDeep = tooDeep || depth > deepest;
        return !tooDeep;
    };
    body = json::parse(request.body, watch, /*allow_exceptions=*/false);
    if (tooDeep || body.is_discarded() || !body.is_object())
        return Sentence(400, "The body is no JSON object.");
    return std::nullopt;
}

// The whole numbers of a body: every key must be there, within its bounds, and none besides.
std::optional<std::string> ReadNumbers(const json& body,
                                       std::initializer_list<std::pair<const char*, int>> keys,
                                       std::vector<int>& out) {
    for (const auto& [key, highest] : keys) {
        const auto at = body.find(key);
        if (at == body.end() || !at->is_number_integer() || *at < 0 || *at > highest)
            return "\"" + std::string(key) + "\" must be a whole number from 0 to " +
                   std::to_string(highest) + ".";
        out.push_back(at->get<int>());
    }
    if (body.size() > keys.size())
        return "The body has keys that nobody knows.";
    return std::nullopt;
}

ApiReply Busy() {
    return Sentence(409, "Somebody has a finger on the display.");
}

} // namespace

ApiReply Sentence(int status, const std::string& text) {
    ApiReply reply;
    reply.status = status;
    reply.body = text + "\n";
    return reply;
}

std::optional<ApiReply> LiveApi::Refuse(const ApiRequest& head) const {
    if (!Guard::HostAllowed(head.host))
        return Sentence(421, "This host goes by its address or as localhost only.");
    if (!Guard::OriginAllowed(head.origin, head.host))
        return Sentence(403, "Pages from elsewhere may not ask this host.");
    const std::string path = head.Path();
    const bool secret = FindWebFile(path) == nullptr && path != "/healthz";
    if (secret && !guard.AuthorizationAllowed(head.authorization)) {
        ApiReply reply = Sentence(401, "This needs the token that the host printed.");
        reply.headers.emplace_back("WWW-Authenticate", "Bearer");
        return reply;
    }
    return std::nullopt;
}

std::size_t LiveApi::BodyLimit(const ApiRequest& head) {
    return head.Path() == "/api/house" ? HouseBodyBytes : SmallBodyBytes;
}

ApiReply LiveApi::Handle(const ApiRequest& request) {
    if (auto refusal = Refuse(request))
        return *refusal;
    if (request.method == "GET" || request.method == "HEAD")
        return Get(request);
    if (request.method == "POST")
        return Post(request);
    ApiReply reply = Sentence(405, "Only GET, HEAD and POST are known here.");
    reply.headers.emplace_back("Allow", "GET, HEAD, POST");
    return reply;
}

ApiReply LiveApi::Get(const ApiRequest& request) {
    const std::string path = request.Path();
    if (path == "/screenshot.png")
        return Screenshot(request);
    if (path == "/api/info")
        return Info();
    if (path == "/healthz")
        return Health();
    if (path.starts_with("/api/")) {
        ApiReply reply = Sentence(path == "/api/tap" || path == "/api/drag" || path == "/api/settings" ||
                                          path == "/api/house"
                                      ? 405
                                      : 404,
                                  "There is nothing to GET at " + path.substr(0, 60) + ".");
        return reply;
    }
    return File(request);
}

ApiReply LiveApi::Post(const ApiRequest& request) {
    static const std::pair<const char*, ApiReply (LiveApi::*)(const json&)> calls[] = {
        {"/api/tap", &LiveApi::Tap},
        {"/api/drag", &LiveApi::Drag},
        {"/api/settings", &LiveApi::Settings},
        {"/api/house", &LiveApi::OfferHouse},
    };
    for (const auto& [path, call] : calls) {
        if (request.Path() != path)
            continue;
        json body;
        if (auto problem = ReadBody(request, body))
            return *problem;
        return (this->*call)(body);
    }
    return Sentence(404, "There is nothing to POST to at " + request.Path().substr(0, 60) + ".");
}

ApiReply LiveApi::File(const ApiRequest& request) const {
    const WebFile* file = FindWebFile(request.Path());
    if (!file)
        return Sentence(404, "There is no such file.");
    ApiReply reply;
    const std::string tag = TagOf(file->content);
    reply.type = file->type;
    reply.headers.emplace_back("ETag", tag);
    reply.headers.emplace_back("Cache-Control", "no-cache");
    if (TagMatches(request.ifNoneMatch, tag))
        reply.status = 304;
    else
        reply.body = file->content;
    return reply;
}

// "?border=1" gives the whole frame, as --shot does.
ApiReply LiveApi::Screenshot(const ApiRequest& request) {
    const TileStore& picture = host.Picture();
    if (picture.Serial() == 0)
        return Sentence(503, "The display has not shown anything yet.");
    const std::string query = request.target.substr(std::min(request.Path().size(), request.target.size()));
    if (!query.empty() && query != "?border=1" && query != "?border=0")
        return Sentence(400, "The only parameter of a screenshot is border, 0 or 1.");
    const bool whole = query == "?border=1";
    const std::string tag =
        "\"" + RunTag() + "-" + std::to_string(picture.Serial()) + (whole ? "b" : "") + "\"";
    ApiReply reply;
    reply.type = "image/png";
    reply.headers.emplace_back("ETag", tag);
    reply.headers.emplace_back("Cache-Control", "no-cache");
    if (TagMatches(request.ifNoneMatch, tag)) {
        reply.status = 304;
        return reply;
    }
    if (pngTag != tag) {
        const auto bytes = EncodePng(whole ? WholeFrame(picture.Frame()) : ScreenOf(picture.Frame()));
        png.assign(bytes.begin(), bytes.end());
        pngTag = tag;
    }
    reply.body = png;
    return reply;
}

ApiReply LiveApi::Info() const {
    json info = host.State();
    info["version"] = WALLSLATE_VERSION;
    info["frames"] = host.FrameCount();
    info["picture"] = host.Picture().Serial();
    info["upSeconds"] =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - started).count();
    json list = json::array();
    for (std::uint64_t i = host.Commands().First(); i < host.Commands().End(); ++i)
        list.push_back(
            {{"n", i}, {"text", host.Commands().At(i).text}, {"words", host.Commands().At(i).words}});
    info["commands"] = std::move(list);
    return JsonReply(200, info);
}

ApiReply LiveApi::Health() const {
    return host.IsRunning() ? Sentence(200, "ok") : Sentence(503, "the display is not running");
}

ApiReply LiveApi::Tap(const json& body) {
    std::vector<int> n;
    if (const auto problem = ReadNumbers(body, {{"x", ScreenPixels - 1}, {"y", ScreenPixels - 1}}, n))
        return Sentence(400, *problem);
    if (!host.IsRunning())
        return Sentence(503, "The display is not running.");
    return host.Tap({n[0], n[1]}) ? JsonReply(200, {{"ok", true}}) : Busy();
}

ApiReply LiveApi::Drag(const json& body) {
    constexpr int last = ScreenPixels - 1;
    std::vector<int> n;
    const auto problem =
        ReadNumbers(body, {{"x1", last}, {"y1", last}, {"x2", last}, {"y2", last}, {"ms", LongestDragMs}}, n);
    if (problem)
        return Sentence(400, *problem);
    if (!host.IsRunning())
        return Sentence(503, "The display is not running.");
    return host.Drag({n[0], n[1]}, {n[2], n[3]}, std::chrono::milliseconds(n[4]))
               ? JsonReply(200, {{"ok", true}})
               : Busy();
}

ApiReply LiveApi::Settings(const json& body) {
    if (const auto problem = host.ApplySettings(body))
        return Sentence(400, *problem);
    return JsonReply(200, {{"ok", true}});
}

ApiReply LiveApi::OfferHouse(const json& body) {
    House house;
    for (const HouseFile file : HouseFiles) {
        const std::string key = std::filesystem::path(FileNameOf(file)).stem().string();
        const auto text = body.find(key);
        if (text == body.end() || !text->is_string())
            return Sentence(400, "A house has the four texts categories, rooms, symbols and structure.");
        house.Text(file) = text->get<std::string>();
    }
    // A bare name, never a path: what is dropped on the page has no folder on this machine.
    std::string name =
        body.value("name", json("dropped house")).is_string() ? body.value("name", "dropped house") : "";
    std::replace(name.begin(), name.end(), '/', '_');
    house.folder = name.substr(0, 60);
    const HouseVerdict verdict = host.OfferHouse(std::move(house));
    json findings = json::array();
    for (const Finding& finding : verdict.check.findings)
        findings.push_back(FormatFinding(finding, ""));
    return JsonReply(verdict.accepted ? 200 : 422, {{"accepted", verdict.accepted},
                                                    {"summary", Summary(verdict.check)},
                                                    {"findings", std::move(findings)}});
}

} // namespace desktop
