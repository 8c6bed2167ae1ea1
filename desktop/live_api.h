// What the live page answers to HTTP requests, without any network code: files of the page, pictures, a small
// API. docs/host.md describes it with examples.
#pragma once

#include "desktop/live_guard.h"
#include "desktop/live_host.h"

#include <string>
#include <utility>
#include <vector>

namespace desktop {

struct ApiRequest {
    std::string method; // "GET", "HEAD", "POST", ...
    std::string target; // as in the request line
    std::string host;
    std::optional<std::string> origin;
    std::string authorization;
    std::string contentType;
    std::string ifNoneMatch;
    std::string body;

    std::string Path() const { return target.substr(0, target.find('?')); }
};

struct ApiReply {
    int status = 200;
    std::string type = "text/plain; charset=utf-8";
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers;
};

constexpr std::size_t SmallBodyBytes = 64 * 1024;
constexpr std::size_t HouseBodyBytes = MaxCommandBytes + (1 << 20); // four texts and the JSON around them

class LiveApi {
public:
    LiveApi(LiveHost& of, const Guard& with) : host(of), guard(with) {}

    // Looks at the head of a request only; a reply here means that the body is not worth reading.
    std::optional<ApiReply> Refuse(const ApiRequest& head) const;
    // How long the request's body may be.
    static std::size_t BodyLimit(const ApiRequest& head);

    ApiReply Handle(const ApiRequest& request);

private:
    ApiReply Get(const ApiRequest& request);
    ApiReply Post(const ApiRequest& request);
    ApiReply File(const ApiRequest& request) const;
    ApiReply Screenshot(const ApiRequest& request);
    ApiReply Info() const;
    ApiReply Health() const;
    ApiReply Tap(const nlohmann::json& body);
    ApiReply Drag(const nlohmann::json& body);
    ApiReply Settings(const nlohmann::json& body);
    ApiReply OfferHouse(const nlohmann::json& body);

    LiveHost& host;
    const Guard& guard;
    std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
    std::string pngTag; // of the picture in png
    std::string png;
};

// A reply of one sentence.
ApiReply Sentence(int status, const std::string& text);

} // namespace desktop
