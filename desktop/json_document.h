// A JSON text as a tree that remembers where everything stands, for messages with line, column and key path.
//
// Reads strict JSON plus the liberties that the display's own reader takes (a comma too many, a line break in
// a string, ...), which become remarks; refuses what the display refuses. Linear in the size of the text and
// without recursion, so that ten thousand groups one in another are only a long list.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace desktop {

struct TextPosition {
    std::size_t line = 1;   // from 1
    std::size_t column = 1; // from 1, in characters
};

struct JsonRemark {
    std::size_t offset = 0; // in bytes from the start of the text
    std::string text;
    std::uint32_t node = 0xFFFFFFFF; // what it is about; the container around it where no node was made
};

class JsonDocument {
public:
    enum class Kind : std::uint8_t { Object, Array, String, Number, Boolean, Null };
    static constexpr std::uint32_t None = 0xFFFFFFFF;

    struct Node {
        Kind kind = Kind::Null;
        std::uint32_t parent = None;
        std::uint32_t firstChild = None;
        std::uint32_t lastChild = None;
        std::uint32_t nextSibling = None;
        std::uint32_t childCount = 0;
        std::uint32_t index = 0;    // among the siblings
        std::uint32_t keyStart = 0; // behind the opening quote; keyLength 0 and parent an array: no key
        std::uint32_t keyLength = 0;
        std::uint32_t start = 0; // first byte of the value, a string's opening quote
        std::uint32_t end = 0;   // behind its last byte
    };

    // Empty when the text could be read; otherwise what is wrong and where. Text must be below 4 GiB.
    std::optional<JsonRemark> Parse(std::string text);

    // What could be read but should not be written so, in the order of the text.
    const std::vector<JsonRemark>& Remarks() const { return remarks; }

    const Node& At(std::uint32_t node) const { return nodes[node]; }
    std::uint32_t Root() const { return nodes.empty() ? None : 0; }
    std::size_t NodeCount() const { return nodes.size(); }

    std::string_view Key(std::uint32_t node) const;                       // raw, escapes not undone
    std::string_view Raw(std::uint32_t node) const;                       // a string without its quotes
    double Number(std::uint32_t node) const;                              // 0 for what is no number
    std::uint32_t Find(std::uint32_t object, std::string_view key) const; // first match, None without

    TextPosition PositionOf(std::size_t offset) const;
    // "[3].sub[1].T"; empty for the root. Of a deep one the last 16 parts behind "...".
    std::string PathOf(std::uint32_t node) const;

private:
    class Reader;

    std::string text;
    std::vector<Node> nodes;
    std::vector<JsonRemark> remarks;
    mutable std::vector<std::size_t> lineStarts; // made by the first PositionOf
};

} // namespace desktop
