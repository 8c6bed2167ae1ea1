// Sections: Reader (the parser), accessors, positions and paths.
#include "desktop/json_document.h"

#include <algorithm>
#include <cstdlib>
#include <unordered_set>

namespace desktop {

namespace {

constexpr std::size_t MaxRemarks = 1000;
constexpr std::size_t LongestPathKey = 40;
constexpr std::size_t MaxPathParts = 16; // of a path that is printed
// Columns count characters, but bytes in lines beyond this, so that a house in one line is no quadratic wait.
constexpr std::size_t LongestCountedLine = 64 * 1024;
constexpr std::size_t SmallObject = 16; // members up to which a plain search for duplicates is cheaper

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
bool EndsToken(char c) {
    return IsSpace(c) || c == ',' || c == ':' || c == ']' || c == '}';
}

// The length of the well-formed UTF-8 sequence at the start of the text, 0 if there is none.
std::size_t Utf8Length(std::string_view s) {
    const auto byte = [&](std::size_t i) { return i < s.size() ? static_cast<unsigned char>(s[i]) : 0u; };
    const auto follows = [&](std::size_t i) { return (byte(i) & 0xC0) == 0x80; };
    const unsigned lead = byte(0);
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        return follows(1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        const bool overlong = lead == 0xE0 && byte(1) < 0xA0;
        const bool surrogate = lead == 0xED && byte(1) > 0x9F;
        return follows(1) && follows(2) && !overlong && !surrogate ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const bool overlong = lead == 0xF0 && byte(1) < 0x90;
        const bool beyond = lead == 0xF4 && byte(1) > 0x8F;
        return follows(1) && follows(2) && follows(3) && !overlong && !beyond ? 4 : 0;
    }
    return 0;
}

// -? (0 | [1-9][0-9]*) (. [0-9]+)? ([eE] [+-]? [0-9]+)?
bool IsJsonNumber(std::string_view s) {
    std::size_t i = 0;
    const auto digits = [&] {
        const std::size_t from = i;
        while (i < s.size() && IsDigit(s[i]))
            ++i;
        return i - from;
    };
    if (i < s.size() && s[i] == '-')
        ++i;
    const bool leadingZero = i < s.size() && s[i] == '0';
    const std::size_t whole = digits();
    if (whole == 0 || (leadingZero && whole > 1))
        return false;
    if (i < s.size() && s[i] == '.') {
        ++i;
        if (digits() == 0)
            return false;
    }
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
        ++i;
        if (i < s.size() && (s[i] == '+' || s[i] == '-'))
            ++i;
        if (digits() == 0)
            return false;
    }
    return i == s.size();
}

std::string Quoted(std::string_view token) {
    constexpr std::size_t longest = 20;
    std::string shown;
    for (const char c : token.substr(0, longest))
        shown.push_back(c >= ' ' && c <= '~' ? c : '?');
    return "'" + shown + (token.size() > longest ? "..." : "") + "'";
}

} // namespace

// The parser: one loop, the open containers are the chain of parents.
class JsonDocument::Reader {
public:
    explicit Reader(JsonDocument& target) : doc(target), text(target.text) {}

    std::optional<JsonRemark> Run() {
        if (text.starts_with("\xEF\xBB\xBF"))
            Fail(0, "starts with a byte order mark; the display cannot read the file so");
        while (!failure && SkipSpace())
            Step();
        if (!failure && current != None)
            Fail(doc.nodes[current].start, current == 0 && doc.At(0).kind == Kind::Array
                                               ? "this array is never closed"
                                               : "this bracket is never closed");
        if (!failure && doc.nodes.empty())
            Fail(text.size(), "the text is empty");
        std::stable_sort(doc.remarks.begin(), doc.remarks.end(),
                         [](const JsonRemark& a, const JsonRemark& b) { return a.offset < b.offset; });
        return failure;
    }

private:
    enum class Expect { Value, Key, Colon, CommaOrEnd };

    void Fail(std::size_t offset, std::string what) {
        if (!failure)
            failure = JsonRemark{offset, std::move(what), current};
    }
    void Remark(std::size_t offset, std::string what, std::uint32_t about) {
        if (doc.remarks.size() < MaxRemarks)
            doc.remarks.push_back({offset, std::move(what), about});
    }

    bool SkipSpace() {
        while (pos < text.size() && IsSpace(text[pos]))
            ++pos;
        return pos < text.size();
    }

    void Step() {
        const char c = text[pos];
        if (c == '\0')
            Fail(pos, "a NUL byte: the display sees nothing behind it");
        else if (finished)
            Fail(pos, "more text behind the end of the JSON value");
        else if (c == '{' || c == '[')
            Open(c == '{' ? Kind::Object : Kind::Array);
        else if (c == '}' || c == ']')
            CloseContainer(c == '}' ? Kind::Object : Kind::Array);
        else if (c == ',')
            Comma();
        else if (c == ':')
            Colon();
        else if (c == '"')
            String();
        else
            Primitive();
    }

    Kind CurrentKind() const { return doc.nodes[current].kind; }

    bool RequireValueHere(const char* what) {
        if (expect == Expect::Value)
            return true;
        if (expect == Expect::CommaOrEnd)
            Fail(pos, std::string("a comma is missing in front of ") + what);
        else if (expect == Expect::Key)
            Fail(pos, std::string("a key in double quotes must stand here, not ") + what);
        else
            Fail(pos, "a colon is missing behind the key");
        return false;
    }

    std::uint32_t AddNode(Kind kind) {
        const auto added = static_cast<std::uint32_t>(doc.nodes.size());
        Node node;
        node.kind = kind;
        node.parent = current;
        node.keyStart = keyStart;
        node.keyLength = keyLength;
        node.start = static_cast<std::uint32_t>(pos);
        if (current != None) {
            Node& parent = doc.nodes[current];
            node.index = parent.childCount++;
            if (parent.lastChild == None)
                parent.firstChild = added;
            else
                doc.nodes[parent.lastChild].nextSibling = added;
            parent.lastChild = added;
        }
        doc.nodes.push_back(node);
        keyLength = 0;
        return added;
    }

    void Open(Kind kind) {
        if (!RequireValueHere(kind == Kind::Object ? "'{'" : "'['"))
            return;
        current = AddNode(kind);
        ++pos;
        expect = kind == Kind::Object ? Expect::Key : Expect::Value;
        justOpened = true;
    }

    void CloseContainer(Kind kind) {
        if (current == None)
            return Fail(pos, "a closing bracket without an opening one");
        if (CurrentKind() != kind)
            return Fail(pos, "this bracket does not match the one that is open");
        if (expect == Expect::Colon || (expect == Expect::Value && kind == Kind::Object))
            return Fail(pos, "a value is missing behind the key");
        if (expect != Expect::CommaOrEnd && !justOpened)
            Remark(lastComma,
                   "a comma in front of the closing bracket is no JSON; the display puts up with it",
                   current);
        if (kind == Kind::Object)
            RemarkDuplicates(current);
        doc.nodes[current].end = static_cast<std::uint32_t>(++pos);
        current = doc.nodes[current].parent;
        AfterValue();
    }

    void AfterValue() {
        expect = Expect::CommaOrEnd;
        justOpened = false;
        finished = current == None;
    }

    void Comma() {
        if (expect != Expect::CommaOrEnd || current == None)
            return Fail(pos, "a value is missing in front of the comma");
        lastComma = pos++;
        expect = CurrentKind() == Kind::Object ? Expect::Key : Expect::Value;
    }

    void Colon() {
        if (expect != Expect::Colon)
            return Fail(pos, "a colon has no place here");
        ++pos;
        expect = Expect::Value;
    }

    void String() {
        const bool isKey = expect == Expect::Key;
        if (!isKey && !RequireValueHere("this string"))
            return;
        if (current == None)
            return Fail(pos, "the text must be an array of objects, not a string");
        const std::size_t open = pos;
        const std::size_t close = ScanString();
        if (failure)
            return;
        if (isKey) {
            keyStart = static_cast<std::uint32_t>(open + 1);
            keyLength = static_cast<std::uint32_t>(close - open - 1);
            expect = Expect::Colon;
        } else {
            const std::uint32_t node = AddNode(Kind::String);
            doc.nodes[node].end = static_cast<std::uint32_t>(close + 1);
            AfterValue();
        }
        justOpened = false;
        pos = close + 1;
    }

    // From the opening quote at pos: the place of the closing one.
    std::size_t ScanString() {
        const std::uint32_t about =
            expect == Expect::Key ? current : static_cast<std::uint32_t>(doc.nodes.size());
        bool escapes = false, breaks = false, badUtf8 = false;
        std::size_t i = pos + 1;
        while (i < text.size() && text[i] != '"' && text[i] != '\0') {
            if (text[i] == '\\') {
                escapes = true;
                i += ScanEscape(i);
                if (failure)
                    return i;
                continue;
            }
            breaks = breaks || static_cast<unsigned char>(text[i]) < ' ';
            const std::size_t length = Utf8Length(std::string_view(text).substr(i));
            badUtf8 = badUtf8 || length == 0;
            i += std::max<std::size_t>(length, 1);
        }
        if (i >= text.size() || text[i] == '\0')
            Fail(pos, "this string is never closed");
        if (escapes)
            Remark(pos, "the display shows escapes as they are written; write the character itself", about);
        if (breaks)
            Remark(pos,
                   "a line break or control character in a string is no JSON; the display puts up with it",
                   about);
        if (badUtf8)
            Remark(pos, "this string is no valid UTF-8", about);
        return i;
    }

    // From a backslash: the length of the escape.
    std::size_t ScanEscape(std::size_t at) {
        const char c = at + 1 < text.size() ? text[at + 1] : '\0';
        if (c == 'u') {
            for (std::size_t i = at + 2; i < at + 6; ++i)
                if (i >= text.size() || !IsHexDigit(text[i])) {
                    Fail(at, "four hexadecimal digits must follow \\u");
                    return 1;
                }
            return 6;
        }
        if (c == '\0' || std::string_view("\"/\\bfnrt").find(c) == std::string_view::npos)
            Fail(at, "an unknown escape; the display cannot read the file so");
        return 2;
    }

    void Primitive() {
        const std::size_t start = pos;
        std::size_t end = pos;
        while (end < text.size() && !EndsToken(text[end]) && text[end] != '\0')
            ++end;
        const std::string_view token = std::string_view(text).substr(start, end - start);
        if (!RequireValueHere(Quoted(token).c_str()))
            return;
        const std::optional<Kind> kind = KindOf(token);
        if (!kind)
            return Fail(start, Quoted(token) + " is neither a number nor a string in double quotes");
        if (current == None)
            return Fail(start, "the text must be an array of objects, not a single value");
        if (CurrentKind() == Kind::Array)
            return Fail(start,
                        "a number, true, false or null in an array: the display cannot read the file so");
        const std::uint32_t node = AddNode(*kind);
        doc.nodes[node].end = static_cast<std::uint32_t>(end);
        pos = end;
        AfterValue();
    }

    static std::optional<Kind> KindOf(std::string_view token) {
        if (token == "true" || token == "false")
            return Kind::Boolean;
        if (token == "null")
            return Kind::Null;
        if (IsJsonNumber(token))
            return Kind::Number;
        return std::nullopt;
    }

    void RemarkDuplicates(std::uint32_t object) {
        const bool many = doc.nodes[object].childCount > SmallObject;
        std::unordered_set<std::string_view> seen;
        for (std::uint32_t i = doc.nodes[object].firstChild; i != None; i = doc.nodes[i].nextSibling) {
            const bool known = many ? !seen.insert(doc.Key(i)).second : doc.Find(object, doc.Key(i)) != i;
            if (known)
                Remark(doc.nodes[i].keyStart - 1,
                       "the key \"" + std::string(doc.Key(i).substr(0, 40)) +
                           "\" stands twice in this object; the first one counts",
                       i);
        }
    }

    JsonDocument& doc;
    const std::string& text;
    std::size_t pos = 0;
    std::uint32_t current = None; // the innermost open container
    std::uint32_t keyStart = 0;
    std::uint32_t keyLength = 0;
    std::size_t lastComma = 0;
    Expect expect = Expect::Value;
    bool justOpened = false; // nothing stands in the current container yet
    bool finished = false;   // the root is closed
    std::optional<JsonRemark> failure;
};

std::optional<JsonRemark> JsonDocument::Parse(std::string source) {
    text = std::move(source);
    nodes.clear();
    remarks.clear();
    lineStarts.clear();
    return Reader(*this).Run();
}

std::string_view JsonDocument::Key(std::uint32_t node) const {
    return std::string_view(text).substr(nodes[node].keyStart, nodes[node].keyLength);
}

std::string_view JsonDocument::Raw(std::uint32_t node) const {
    const Node& n = nodes[node];
    const std::size_t quote = n.kind == Kind::String ? 1 : 0;
    return std::string_view(text).substr(n.start + quote, n.end - n.start - 2 * quote);
}

double JsonDocument::Number(std::uint32_t node) const {
    return nodes[node].kind == Kind::Number ? std::strtod(std::string(Raw(node)).c_str(), nullptr) : 0;
}

std::uint32_t JsonDocument::Find(std::uint32_t object, std::string_view key) const {
    for (std::uint32_t i = nodes[object].firstChild; i != None; i = nodes[i].nextSibling)
        if (Key(i) == key)
            return i;
    return None;
}

TextPosition JsonDocument::PositionOf(std::size_t offset) const {
    if (lineStarts.empty()) {
        lineStarts.push_back(0);
        for (std::size_t i = 0; i < text.size(); ++i)
            if (text[i] == '\n')
                lineStarts.push_back(i + 1);
    }
    offset = std::min(offset, text.size());
    const auto next = std::upper_bound(lineStarts.begin(), lineStarts.end(), offset);
    const std::size_t lineStart = *(next - 1);
    TextPosition at;
    at.line = static_cast<std::size_t>(next - lineStarts.begin());
    const auto isFirstByte = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    const std::string_view before = std::string_view(text).substr(lineStart, offset - lineStart);
    at.column += before.size();
    if (before.size() <= LongestCountedLine)
        at.column = 1 + static_cast<std::size_t>(std::count_if(before.begin(), before.end(), isFirstByte));
    return at;
}

std::string JsonDocument::PathOf(std::uint32_t node) const {
    std::vector<std::uint32_t> chain;
    while (node != None && nodes[node].parent != None && chain.size() < MaxPathParts) {
        chain.push_back(node);
        node = nodes[node].parent;
    }
    std::string path = node != None && nodes[node].parent != None ? "..." : "";
    for (std::size_t i = chain.size(); i-- > 0;) {
        const Node& part = nodes[chain[i]];
        if (nodes[part.parent].kind == Kind::Array)
            path += "[" + std::to_string(part.index) + "]";
        else
            path += (path.empty() || path == "..." ? "" : ".") +
                    std::string(Key(chain[i]).substr(0, LongestPathKey));
    }
    return path;
}

} // namespace desktop
