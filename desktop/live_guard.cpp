#include "desktop/live_guard.h"

#include "desktop/fault.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <sys/random.h>

namespace desktop {

namespace {

constexpr std::size_t TokenBytes = 18; // 144 bits
constexpr std::size_t ShortestToken = 16;
constexpr std::string_view Bearer = "Bearer ";
constexpr std::string_view TokenProtocol = "token.";

bool IsV4(const std::string& text) {
    in_addr address;
    return ::inet_pton(AF_INET, text.c_str(), &address) == 1;
}

bool IsV6(const std::string& text) {
    in6_addr address;
    return ::inet_pton(AF_INET6, text.c_str(), &address) == 1;
}

// "host:port" or "[v6]:port" into its parts; the port may be missing.
std::pair<std::string, std::string> SplitAuthority(std::string_view text) {
    const std::size_t bracket = text.starts_with('[') ? text.find(']') : std::string_view::npos;
    const std::size_t from = bracket == std::string_view::npos ? 0 : bracket;
    const std::size_t colon = text.find(':', from);
    std::string host(text.substr(0, colon));
    if (bracket != std::string_view::npos)
        host = std::string(text.substr(1, bracket - 1));
    return {host, colon == std::string_view::npos ? "" : std::string(text.substr(colon + 1))};
}

bool IsToken(std::string_view text) {
    const auto plain = [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_';
    };
    return text.size() >= ShortestToken && std::all_of(text.begin(), text.end(), plain);
}

std::string Checked(std::string text, const std::string& from) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
        text.pop_back();
    if (!IsToken(text))
        throw Fault(from + ": a token has at least 16 letters, digits, '-' or '_'");
    return text;
}

std::string MakeToken() {
    std::array<unsigned char, TokenBytes> random = {};
    if (::getrandom(random.data(), random.size(), 0) != static_cast<ssize_t>(random.size()))
        throw Fault("no random numbers to be had for a token");
    std::string text;
    for (const unsigned char byte : random) {
        text.push_back("0123456789abcdef"[byte >> 4]);
        text.push_back("0123456789abcdef"[byte & 15]);
    }
    return text;
}

} // namespace

std::string ListenAddress::Authority() const {
    const bool v6 = host.find(':') != std::string::npos;
    return (v6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

ListenAddress ParseListenAddress(const std::string& text) {
    auto [host, port] = SplitAuthority(text);
    if (host == "localhost")
        host = "127.0.0.1";
    ListenAddress address;
    const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), address.port);
    if (port.empty() || error != std::errc() || end != port.data() + port.size())
        throw Fault("--listen " + text + ": wants ADDR:PORT, as 127.0.0.1:8720");
    if (!IsV4(host) && !IsV6(host))
        throw Fault("--listen " + text + ": '" + host + "' is no address of a network interface");
    address.host = host;
    address.loopback = host.starts_with("127.") || host == "::1";
    return address;
}

Token ObtainToken() {
    if (const char* text = std::getenv("WALLSLATE_TOKEN"))
        return {Checked(text, "WALLSLATE_TOKEN"), false};
    if (const char* file = std::getenv("WALLSLATE_TOKEN_FILE")) {
        std::ifstream in(file);
        std::string text;
        if (!std::getline(in, text))
            throw Fault(std::string(file) + ": no token can be read from it");
        return {Checked(text, file), false};
    }
    return {MakeToken(), true};
}

bool Guard::HostAllowed(std::string_view host) {
    const auto [name, port] = SplitAuthority(host);
    return name == "localhost" || IsV4(name) || IsV6(name);
}

bool Guard::OriginAllowed(std::optional<std::string_view> origin, std::string_view host) {
    return !origin || *origin == "http://" + std::string(host);
}

bool Guard::AuthorizationAllowed(std::string_view header) const {
    if (!NeedsToken())
        return true;
    return header.starts_with(Bearer) && Matches(header.substr(Bearer.size()));
}

bool Guard::ProtocolsAllowed(std::string_view header) const {
    if (!NeedsToken())
        return true;
    const std::size_t at = header.find(TokenProtocol);
    if (at == std::string_view::npos)
        return false;
    const std::string_view rest = header.substr(at + TokenProtocol.size());
    return Matches(rest.substr(0, rest.find_first_of(", ")));
}

// Takes the same time whatever is offered, so that a token cannot be found out letter by letter.
bool Guard::Matches(std::string_view offered) const {
    unsigned difference = offered.size() == token.size() ? 0 : 1;
    for (std::size_t i = 0; i < token.size(); ++i)
        difference |= static_cast<unsigned char>(token[i]) ^
                      static_cast<unsigned char>(i < offered.size() ? offered[i] : '\0');
    return difference == 0;
}

} // namespace desktop
