// Who may talk to the live page: rules on Host, Origin and token, without any network code.
//
// The page can touch the display and load houses, so a web page from elsewhere must not reach it. A browser
// sends the name that it was told to visit as Host, which unmasks DNS names that were bent to this machine,
// and the page that asks as Origin. On a loopback address these two are enough, as only this machine gets
// there; on any other address each call needs a token besides.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace desktop {

struct ListenAddress {
    std::string host; // an address in numbers: "127.0.0.1", "::1", "0.0.0.0"
    std::uint16_t port = 0;
    bool loopback = true;

    std::string Authority() const; // "127.0.0.1:8720", "[::1]:8720"
};

constexpr const char* DefaultListenAddress = "127.0.0.1:8720";

// "ADDR:PORT", "localhost:PORT", "[V6]:PORT". Throws Fault.
ListenAddress ParseListenAddress(const std::string& text);

// The token for an address that is no loopback: from WALLSLATE_TOKEN, from the file that WALLSLATE_TOKEN_FILE
// names, or made now. Never from the command line, where every user of the machine could read it. Throws
// Fault.
struct Token {
    std::string text;
    bool generated = false;
};
Token ObtainToken();

class Guard {
public:
    // An empty token: none is asked for.
    explicit Guard(std::string withToken) : token(std::move(withToken)) {}

    bool NeedsToken() const { return !token.empty(); }
    // Addresses in numbers and "localhost" are fine with any port: behind a forwarded port it is not ours.
    static bool HostAllowed(std::string_view host);
    // No Origin comes from programs that are no browser; a browser's must be the page itself.
    static bool OriginAllowed(std::optional<std::string_view> origin, std::string_view host);
    // "Bearer TOKEN"
    bool AuthorizationAllowed(std::string_view header) const;
    // The list of WebSocket protocols, one of which is "token.TOKEN": a browser can send no other header
    // there.
    bool ProtocolsAllowed(std::string_view header) const;

private:
    bool Matches(std::string_view offered) const;

    std::string token;
};

} // namespace desktop
