// The plain, slow twin of the JSON parser: it keeps every rule as a walk over all nodes, without the parser's
// list of open containers. Random texts must give the same nodes from both.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace reference {

struct Node {
    enum Kind { Undefined, Object, Array, String, Boolean, Number };
    int kind = Undefined;
    std::string name, value;
    long start = -1, end = -1, childCount = 0, parent = -1;
    std::vector<long> children;
    double number = 0;
};

class Parser {
public:
    std::vector<Node> nodes;
    long pos = 0;
    long current = -1;

    long Parse(std::string_view text) {
        m_text = text.substr(0, text.find('\0'));
        for (; pos < Size(); pos++) {
            const char c = m_text[static_cast<size_t>(pos)];
            long result = 0;
            if (c == '\t' || c == '\n' || c == '\r' || c == ' ')
                continue;
            if (c == '"')
                result = ReadString();
            else if (c == '{' || c == '[')
                Open(c == '{' ? Node::Object : Node::Array);
            else if (c == '}' || c == ']')
                result = Close(c == '}' ? Node::Object : Node::Array);
            else if (c == ':')
                current = Last();
            else if (c == ',')
                Comma();
            else
                result = ReadPrimitive();
            if (result < 0)
                return result;
        }
        for (const Node& node : nodes) {
            if (IsOpen(node))
                return -3;
        }
        return static_cast<long>(nodes.size());
    }

private:
    long Size() const { return static_cast<long>(m_text.size()); }
    long Last() const { return static_cast<long>(nodes.size()) - 1; }
    char At(long i) const { return i < Size() ? m_text[static_cast<size_t>(i)] : '\0'; }
    Node& N(long i) { return nodes[static_cast<size_t>(i)]; }
    std::string Cut(long from, long to) const {
        return std::string(m_text.substr(static_cast<size_t>(from), static_cast<size_t>(to - from)));
    }
    static bool IsContainer(const Node& node) {
        return node.kind == Node::Object || node.kind == Node::Array;
    }
    static bool IsOpen(const Node& node) { return node.start != -1 && node.end == -1; }

    long NewChild() {
        nodes.emplace_back();
        nodes.back().parent = current;
        if (current != -1) {
            N(current).childCount++;
            N(current).children.push_back(Last());
        }
        return Last();
    }

    void Open(int kind) {
        const long i = current != -1 && N(current).kind == Node::String ? current : NewChild();
        N(i).kind = kind;
        N(i).start = pos;
        N(i).end = -1;
        current = Last();
    }

    long Close(int kind) {
        if (nodes.empty())
            return -2;
        for (long i = Last();; i = N(i).parent) {
            if (IsOpen(N(i))) {
                if (N(i).kind != kind)
                    return -2;
                N(i).end = pos + 1;
                current = N(i).parent;
                return 0;
            }
            if (N(i).parent == -1)
                return N(i).kind != kind || current == -1 ? -2 : 0;
        }
    }

    void Comma() {
        if (current == -1 || IsContainer(N(current)))
            return;
        current = N(current).parent;
        for (long i = Last(); i >= 0; i--) {
            if (IsContainer(N(i)) && IsOpen(N(i))) {
                current = i;
                return;
            }
        }
    }

    long ReadString() {
        long p = pos + 1;
        for (;; p++) {
            if (At(p) == '\0')
                return -3;
            if (At(p) == '"')
                break;
            if (At(p) != '\\')
                continue;
            p++;
            if (At(p) == '\0')
                return -3;
            if (std::string_view("\"/\\bfnrtu").find(At(p)) == std::string_view::npos)
                return -2;
            for (int i = 0; At(p) == 'u' && i < 4 && At(p + 1 + i) != '\0'; i++) {
                if (!isxdigit(static_cast<unsigned char>(At(p + 1 + i))))
                    return -2;
            }
        }
        const long from = pos + 1;
        pos = p;
        if (current != -1 && N(current).kind == Node::String) {
            N(current).value = Cut(from, p);
            return 0;
        }
        Node& node = N(NewChild());
        node.kind = Node::String;
        node.name = Cut(from, p);
        node.start = from;
        node.end = p;
        return 0;
    }

    long ReadPrimitive() {
        long p = pos;
        for (; std::string_view("\t\r\n ,:]}").find(At(p)) == std::string_view::npos && At(p) != '\0'; p++) {
            if (static_cast<unsigned char>(At(p)) < 32 || static_cast<unsigned char>(At(p)) > 126)
                return -2;
        }
        if (current == -1 || IsContainer(N(current)))
            return -2;
        Node& node = N(current);
        node.value = Cut(pos, p);
        node.kind = node.value == "true" || node.value == "false" ? Node::Boolean : Node::Number;
        node.number = atof(node.value.c_str());
        node.childCount++;
        pos = p - 1;
        return 0;
    }

    std::string_view m_text;
};

} // namespace reference
