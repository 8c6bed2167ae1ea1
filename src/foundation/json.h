// JSON texts as a flat list of nodes with parent links, made in one pass without recursion.
//
// This is a tolerant tokenizer, not a validator: missing and trailing commas and text behind the root are
// accepted. A key and its value are one node: the member "a": 1 is a node with the name "a", the value "1"
// and the number 1. Text stays raw: escapes are checked but not undone.
//
// Cost: time and memory linear in the text, whatever its shape. All names and values lie in one copy of the
// text that the parser keeps, and all lists of children in one block, so that a node costs no allocation of
// its own.
#pragma once

#include <cstdint>

#include "foundation/ptr_array.h"
#include "foundation/string.h"

enum class CVrJsonKind : uint32_t {
    Undefined = 0,
    Object = 1,
    Array = 2,
    String = 3,
    Boolean = 4,
    Number = 5
};

class CVrJsonValue {
public:
    static constexpr uint32_t kUnset = UINT32_MAX;

    CVrJsonKind type = CVrJsonKind::Undefined;
    CVrxStringU name;           // the key; for a string that is an array element its text
    CVrxStringU value;          // text of a string member, or the token of a primitive
    uint32_t start = kUnset;    // container: its opening bracket; string: behind the opening quote
    uint32_t end = kUnset;      // container: behind the closing bracket; string: the closing quote
    int32_t childCount = 0;     // children, and one for a primitive value
    uint32_t parent = kUnset;   // index in the parser's list
    CVrSimplePtrArray children; // CVrJsonValue in document order, not owned
    double number = 0;          // value of a primitive; 0 for true and false

    bool IsObject() const { return type == CVrJsonKind::Object; }
    bool IsArray() const { return type == CVrJsonKind::Array; }
    bool IsContainer() const { return IsObject() || IsArray(); }
    bool IsString() const { return type == CVrJsonKind::String; }
    bool IsBoolean() const { return type == CVrJsonKind::Boolean; }
    bool IsNumber() const { return type == CVrJsonKind::Number; }
    bool IsTrue() const { return IsBoolean() && value == "true"; }

    // The number, truncated and held within the range of the result; 0 for what is not a number.
    int32_t ToInt32() const;
    // The number, truncated and taken modulo 2^32, so that -1 and 4294967295 name the same thing.
    uint32_t ToUint32() const;

    // The first child with this name, null if there is none. Linear in the number of children.
    const CVrJsonValue* Find(const char* key) const;

    uint32_t GetChildCount() const { return children.GetSize(); }
    const CVrJsonValue* GetChild(uint32_t index) const { return static_cast<CVrJsonValue*>(children[index]); }

    // for (const CVrJsonValue* child : node.Children())
    class Range {
    public:
        class Iterator {
        public:
            explicit Iterator(void* const* slot) : m_slot(slot) {}
            const CVrJsonValue* operator*() const { return static_cast<const CVrJsonValue*>(*m_slot); }
            Iterator& operator++() {
                ++m_slot;
                return *this;
            }
            bool operator==(const Iterator& other) const = default;

        private:
            void* const* m_slot;
        };

        explicit Range(const CVrSimplePtrArray& children) : m_children(children) {}
        Iterator begin() const { return Iterator(m_children.begin()); }
        Iterator end() const { return Iterator(m_children.end()); }

    private:
        const CVrSimplePtrArray& m_children;
    };
    Range Children() const { return Range(children); }
};

class CVrJsonParser {
public:
    // Results of Parse below 0.
    static constexpr int32_t kInvalid = -2;
    static constexpr int32_t kIncomplete = -3;

    // A text with more nodes is invalid: what the host sends must not take the display's memory. The largest
    // installations have some ten thousand nodes; this many take about half a gigabyte.
    static constexpr uint32_t kMaxNodes = 1u << 22;

    CVrJsonParser() = default;
    CVrJsonParser(const CVrJsonParser&) = delete;
    CVrJsonParser& operator=(const CVrJsonParser&) = delete;
    ~CVrJsonParser();

    // Reads the text from pos to its end or first NUL and appends its nodes. Returns the number of nodes,
    // kInvalid or kIncomplete; after an error the nodes made so far stay. The text is not needed afterwards.
    int32_t Parse(const CVrxStringU& text);

    // Parses and returns the root; null for an error or a text without nodes.
    const CVrJsonValue* ParseRoot(const CVrxStringU& text);

    // A new undefined node at the end of the list, for the caller to fill; null if there is no room. All
    // other nodes are read-only: texts put into them would leak.
    CVrJsonValue* NewValue();

    // Back to the state of a new parser.
    void Clear();

    // The first node, null if there is none.
    const CVrJsonValue* GetRoot() const { return GetNode(0); }
    const CVrJsonValue* GetNode(uint32_t index) const {
        return index < nodes.GetSize() ? static_cast<const CVrJsonValue*>(nodes[index]) : nullptr;
    }

    CVrSimplePtrArray nodes;                 // CVrJsonValue in order of creation, owned by the parser
    uint32_t pos = 0;                        // position in the text
    uint32_t current = CVrJsonValue::kUnset; // index of the node that a value would attach to

private:
    struct Store;
    class Reader;

    Store* m_store = nullptr; // memory of the nodes and of their texts; made with the first node
};

// The tolerant reading of single values. Each returns false, and leaves `out` alone, when the value does not
// count: a null node, or a value of a kind or spelling that is not accepted.
//
// Accepted as yes or no: a boolean; a number, which is true if its integer part is not 0; and the strings
// "1", "true", "TRUE", "0", "false", "FALSE".
bool ReadBool(const CVrJsonValue* node, bool& out);

// Accepted as a number: a number, and a string of an optional sign and digits with at most one point or
// comma.
bool ReadNumber(const CVrJsonValue* node, double& out);
