// Sections: conversions of a value - memory of the nodes (Store) - numbers - the reader - the parser -
// tolerant values.
#include "foundation/json.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>

#include "foundation/array.h"

namespace {

constexpr uint32_t kUnset = CVrJsonValue::kUnset;

CVrJsonValue* AsValue(void* pointer) {
    return static_cast<CVrJsonValue*>(pointer);
}

} // namespace

// ---------------------------------------------------------------------------------------- conversions of a
// value

int32_t CVrJsonValue::ToInt32() const {
    if (std::isnan(number))
        return 0;
    if (number <= INT32_MIN)
        return INT32_MIN;
    return number >= INT32_MAX ? INT32_MAX : static_cast<int32_t>(number);
}

uint32_t CVrJsonValue::ToUint32() const {
    constexpr double kModulus = 4294967296.0; // 2^32
    if (!std::isfinite(number))
        return 0;
    return static_cast<uint32_t>(static_cast<int64_t>(std::fmod(std::trunc(number), kModulus)));
}

const CVrJsonValue* CVrJsonValue::Find(const char* key) const {
    for (const CVrJsonValue* child : Children()) {
        if (strcmp(child->name.CStr(), key) == 0)
            return child;
    }
    return nullptr;
}

// ----------------------------------------------------------------------------------------- memory of the
// nodes

// Nodes lie in chunks and never move. Beside them stand two tables with an entry for each node, which grow by
// doubling: the pointers that `nodes` shows, and the parents once more, so that gathering the children walks
// through little memory. Texts and lists of children are blocks that live as long as the nodes.
//
// What the parser puts into a node is attached memory of these blocks, so a node has nothing to free and its
// destructor need not run; only nodes that went out through NewValue may have got texts of their own.
struct CVrJsonParser::Store {
    static constexpr uint32_t kFirstChunk = 32; // nodes; a message of the host fits
    // 53 KB, small enough to come from the heap and not from a mapping of its own, which costs more.
    static constexpr uint32_t kLargestChunk = 512;
    static constexpr uint32_t kFirstTable = 64;

    struct Chunk {
        Chunk* next;
        uint32_t capacity;
        uint32_t used;

        CVrJsonValue* NextPlace() { return reinterpret_cast<CVrJsonValue*>(this + 1) + used++; }
    };
    static_assert(sizeof(Chunk) % alignof(CVrJsonValue) == 0);
    struct Block {
        Block* next;
    };

    Chunk* chunks = nullptr; // newest first
    Block* blocks = nullptr;
    void** table = nullptr;
    uint32_t* parents = nullptr;
    uint32_t count = 0;
    uint32_t tableSize = 0;

    VrArray<uint32_t> open;      // containers without their closing bracket, outermost first
    VrArray<uint32_t> handedOut; // nodes of NewValue
    uint32_t newestTop = kUnset; // node without a parent that was made last

    ~Store() {
        for (const uint32_t index : handedOut)
            AsValue(table[index])->~CVrJsonValue();
        FreeList(chunks);
        FreeList(blocks);
        free(table);
        free(parents);
    }

    template <typename Item>
    static void FreeList(Item* item) {
        while (item) {
            Item* next = item->next;
            free(item);
            item = next;
        }
    }

    // Memory that lives as long as the store; null without memory.
    void* NewBlock(size_t bytes) {
        auto* block = static_cast<Block*>(malloc(sizeof(Block) + bytes));
        if (!block)
            return nullptr;
        block->next = blocks;
        blocks = block;
        return block + 1;
    }

    CVrJsonValue* NewNode(uint32_t parent) {
        if (count == tableSize && !GrowTables())
            return nullptr;
        if ((!chunks || chunks->used == chunks->capacity) && !NewChunk())
            return nullptr;
        auto* node = new (chunks->NextPlace()) CVrJsonValue;
        node->parent = parent;
        table[count] = node;
        parents[count] = parent;
        if (parent == kUnset)
            newestTop = count;
        count++;
        return node;
    }

    // Grows by doubling: the array's own steps would make very deep texts slow.
    bool PushOpen(uint32_t index) {
        if (open.GetSize() == open.GetCapacity())
            open.SetGrowBy(open.GetCapacity());
        return open.Add(index);
    }

    // Gives each node its list of children: all are sorted by their parents into one block, which keeps
    // document order.
    bool GatherChildren();

private:
    bool NewChunk() {
        const uint32_t capacity = chunks ? std::min(chunks->capacity * 2, kLargestChunk) : kFirstChunk;
        auto* chunk = static_cast<Chunk*>(malloc(sizeof(Chunk) + capacity * sizeof(CVrJsonValue)));
        if (!chunk)
            return false;
        *chunk = {chunks, capacity, 0};
        chunks = chunk;
        return true;
    }

    bool GrowTables() {
        if (count >= kMaxNodes)
            return false;
        const uint32_t size = tableSize == 0 ? kFirstTable : tableSize * 2;
        auto* grownTable = static_cast<void**>(realloc(table, size * sizeof(void*)));
        if (grownTable)
            table = grownTable;
        auto* grownParents = static_cast<uint32_t*>(realloc(parents, size * sizeof(uint32_t)));
        if (grownParents)
            parents = grownParents;
        if (!grownTable || !grownParents)
            return false;
        tableSize = size;
        return true;
    }
};

static_assert((CVrJsonParser::kMaxNodes & (CVrJsonParser::kMaxNodes - 1)) == 0,
              "the tables double up to the limit");

bool CVrJsonParser::Store::GatherChildren() {
    // ends[i] is the end of the slice of node i: first a count, then a running sum, then moved back to the
    // slice's begin while the slices are filled from behind.
    auto* ends = static_cast<uint32_t*>(calloc(size_t{count} + 1, sizeof(uint32_t)));
    auto* slots = static_cast<void**>(NewBlock(size_t{count} * sizeof(void*)));
    if (!ends || !slots) {
        free(ends);
        return false;
    }
    for (uint32_t i = 0; i < count; i++) {
        if (parents[i] != kUnset)
            ends[parents[i]]++;
    }
    for (uint32_t i = 1; i <= count; i++)
        ends[i] += ends[i - 1];
    for (uint32_t i = count; i-- > 0;) {
        if (parents[i] != kUnset)
            slots[--ends[parents[i]]] = table[i];
    }
    for (uint32_t i = 0; i < count; i++) {
        if (ends[i + 1] > ends[i])
            AsValue(table[i])->children.Attach(slots + ends[i], ends[i + 1] - ends[i]);
    }
    free(ends);
    return true;
}

// ------------------------------------------------------------------------------------------------------
// numbers

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// The value that atof gives. Up to 15 digits and powers of ten up to 10^22 are exact in a double, so that one
// multiplication or division rounds correctly; all other spellings go to the library.
double ToNumber(const char* token) {
    static constexpr double kPowers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    constexpr int kMaxDigits = 15;
    const char* p = token;
    const bool isNegative = *p == '-';
    if (isNegative)
        p++;
    uint64_t digits = 0;
    int digitCount = 0;
    for (; IsDigit(*p) && digitCount <= kMaxDigits; p++, digitCount++)
        digits = digits * 10 + static_cast<uint64_t>(*p - '0');
    int decimals = 0;
    if (*p == '.' && digitCount > 0) {
        for (p++; IsDigit(*p) && digitCount <= kMaxDigits; p++, digitCount++, decimals++)
            digits = digits * 10 + static_cast<uint64_t>(*p - '0');
    }
    if (*p != '\0' || digitCount == 0 || digitCount > kMaxDigits)
        return strtod(token, nullptr);
    const double value = static_cast<double>(digits) / kPowers[decimals];
    return isNegative ? -value : value;
}

// What a byte of the text means to the reader.
enum class Byte : uint8_t { End, Blank, Quote, Open, Close, Colon, Comma, Other };

constexpr std::array<Byte, 256> kBytes = [] {
    std::array<Byte, 256> bytes{};
    bytes.fill(Byte::Other);
    bytes['\0'] = Byte::End;
    bytes['\t'] = bytes['\n'] = bytes['\r'] = bytes[' '] = Byte::Blank;
    bytes['"'] = Byte::Quote;
    bytes['{'] = bytes['['] = Byte::Open;
    bytes['}'] = bytes[']'] = Byte::Close;
    bytes[':'] = Byte::Colon;
    bytes[','] = Byte::Comma;
    return bytes;
}();

// What ends a primitive, and what may not stand in one.
enum class TokenByte : uint8_t { Part, Terminator, Forbidden };

constexpr std::array<TokenByte, 256> kTokenBytes = [] {
    std::array<TokenByte, 256> bytes{};
    for (uint32_t c = 0; c < 256; c++)
        bytes[c] = c < 32 || c > 126 ? TokenByte::Forbidden : TokenByte::Part;
    for (const char c : {'\0', '\t', '\n', '\r', ' ', ',', ':', ']', '}'})
        bytes[static_cast<uint8_t>(c)] = TokenByte::Terminator;
    return bytes;
}();

// Bytes inside a string that need a look.
constexpr std::array<bool, 256> kEndsStringRun = [] {
    std::array<bool, 256> bytes{};
    bytes['\0'] = bytes['"'] = bytes['\\'] = true;
    return bytes;
}();

bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

CVrJsonKind KindOfBracket(char bracket) {
    return bracket == '{' || bracket == '}' ? CVrJsonKind::Object : CVrJsonKind::Array;
}

} // namespace

// --------------------------------------------------------------------------------------------------- the
// reader

// Walks through the parser's own copy of the text and cuts it up in place: the byte behind each string and
// token becomes its NUL. The byte behind a token is looked at before that.
//
// `current` is the node that a value would attach to: a key behind its colon, else the innermost open
// container. A node of kind string is current only right behind its colon, and then it is the last node.
// Malformed texts can make a primitive the current node; what follows becomes its child.
class CVrJsonParser::Reader {
public:
    Reader(CVrJsonParser& parser, char* text)
        : m_parser(parser),
          m_store(*parser.m_store),
          m_text(text),
          m_at(text + parser.pos),
          m_current(parser.current) {}

    // The result of Parse, but 0 in place of the number of nodes.
    int32_t Run() {
        const int32_t result = ReadAll();
        m_parser.pos = PositionOf(m_at);
        m_parser.current = m_current;
        if (result == 0 && !m_store.open.IsEmpty())
            return kIncomplete;
        return result;
    }

private:
    uint32_t PositionOf(const char* at) const { return static_cast<uint32_t>(at - m_text); }
    CVrJsonValue& NodeAt(uint32_t index) { return *AsValue(m_store.table[index]); }
    bool HasCurrent() const { return m_current != kUnset; }
    CVrJsonValue& Current() { return NodeAt(m_current); }

    int32_t ReadAll() {
        for (uint8_t byte = *Here();;) {
            int32_t result = 0;
            switch (kBytes[byte]) {
            case Byte::End:
                return 0;
            case Byte::Blank:
                break;
            case Byte::Quote:
                result = ReadString();
                break;
            case Byte::Open:
                result = Open(static_cast<char>(byte));
                break;
            case Byte::Close:
                result = Close(static_cast<char>(byte));
                break;
            case Byte::Colon:
                m_current = m_store.count - 1;
                break; // unset if there is no node
            case Byte::Comma:
                EndMember();
                break;
            case Byte::Other:
                result = ReadPrimitive(byte); // byte is the one behind the token now
                if (result != 0)
                    return result;
                continue;
            }
            if (result != 0)
                return result;
            m_at++;
            byte = *Here();
        }
    }

    const uint8_t* Here() const { return reinterpret_cast<const uint8_t*>(m_at); }

    CVrJsonValue* NewChild() {
        CVrJsonValue* node = m_store.NewNode(m_current);
        if (node && HasCurrent())
            Current().childCount++;
        return node;
    }

    int32_t Open(char bracket) {
        const bool isValueOfKey = HasCurrent() && Current().IsString();
        CVrJsonValue* node = isValueOfKey ? &Current() : NewChild();
        if (!node)
            return kInvalid;
        node->type = KindOfBracket(bracket);
        node->start = PositionOf(m_at);
        node->end = kUnset;
        m_current = m_store.count - 1;
        return m_store.PushOpen(m_current) ? 0 : kInvalid;
    }

    // The innermost open container is always an ancestor of the last node or that node itself, since
    // `current` never leaves it before its bracket closes. So it is what the walk up from the last node finds
    // first.
    int32_t Close(char bracket) {
        if (m_store.count == 0)
            return kInvalid;
        if (m_store.open.IsEmpty())
            return HasCurrent() && NodeAt(m_store.newestTop).type == KindOfBracket(bracket) ? 0 : kInvalid;
        CVrJsonValue& node = NodeAt(m_store.open.Last());
        if (node.type != KindOfBracket(bracket))
            return kInvalid;
        node.end = PositionOf(m_at) + 1;
        m_current = node.parent;
        m_store.open.RemoveAt(m_store.open.GetSize() - 1);
        return 0;
    }

    void EndMember() {
        if (!HasCurrent() || Current().IsContainer())
            return;
        m_current = m_store.open.IsEmpty() ? Current().parent : m_store.open.Last();
    }

    // From the opening quote to the closing one.
    int32_t ReadString() {
        char* quote = m_at;
        char* p = quote + 1;
        for (;;) {
            while (!kEndsStringRun[static_cast<uint8_t>(*p)])
                p++;
            if (*p == '"')
                break;
            if (*p == '\0')
                return kIncomplete;
            p = SkipEscape(p + 1);
            if (!p)
                return kInvalid;
        }
        *p = '\0';
        m_at = p;
        return StoreString(quote + 1, static_cast<uint32_t>(p - quote - 1));
    }

    // From behind the backslash to behind the escape, or to the end of the text; null if it is none.
    static char* SkipEscape(char* p) {
        if (*p == '\0')
            return p;
        if (!strchr("\"/\\bfnrtu", *p))
            return nullptr;
        if (*p++ != 'u')
            return p;
        for (int i = 0; i < 4 && *p != '\0'; i++, p++) {
            if (!IsHexDigit(*p))
                return nullptr;
        }
        return p;
    }

    int32_t StoreString(char* text, uint32_t length) {
        if (HasCurrent() && Current().IsString()) {
            Current().value.Attach(text, length);
            return 0;
        }
        CVrJsonValue* node = NewChild();
        if (!node)
            return kInvalid;
        node->type = CVrJsonKind::String;
        node->start = PositionOf(text);
        node->end = node->start + length;
        node->name.Attach(text, length);
        return 0;
    }

    // Leaves the position behind the token, and in `terminator` the byte that stood there.
    int32_t ReadPrimitive(uint8_t& terminator) {
        char* token = m_at;
        char* p = token;
        while (kTokenBytes[static_cast<uint8_t>(*p)] == TokenByte::Part)
            p++;
        // A primitive needs a key to be the value of.
        if (kTokenBytes[static_cast<uint8_t>(*p)] == TokenByte::Forbidden || !HasCurrent() ||
            Current().IsContainer())
            return kInvalid;
        terminator = static_cast<uint8_t>(*p);
        *p = '\0';
        m_at = p;
        StorePrimitive(token, static_cast<uint32_t>(p - token));
        return 0;
    }

    void StorePrimitive(char* token, uint32_t length) {
        CVrJsonValue& node = Current();
        const bool isBoolean = strcmp(token, "true") == 0 || strcmp(token, "false") == 0;
        node.value.Attach(token, length);
        node.type = isBoolean ? CVrJsonKind::Boolean : CVrJsonKind::Number;
        node.number = isBoolean ? 0 : ToNumber(token);
        node.childCount++;
    }

    CVrJsonParser& m_parser;
    Store& m_store;
    char* m_text;
    char* m_at;
    uint32_t m_current;
};

// --------------------------------------------------------------------------------------------------- the
// parser

CVrJsonParser::~CVrJsonParser() {
    delete m_store;
}

void CVrJsonParser::Clear() {
    nodes.Attach(nullptr, 0);
    delete m_store;
    m_store = nullptr;
    pos = 0;
    current = kUnset;
}

int32_t CVrJsonParser::Parse(const CVrxStringU& text) {
    if (pos >= text.GetLength())
        return m_store && !m_store->open.IsEmpty() ? kIncomplete : static_cast<int32_t>(nodes.GetSize());
    if (!m_store)
        m_store = new Store;
    auto* copy = static_cast<char*>(m_store->NewBlock(size_t{text.GetLength()} + 1));
    if (!copy)
        return kInvalid;
    memcpy(copy, text.CStr(), size_t{text.GetLength()} + 1);
    int32_t result = Reader(*this, copy).Run();
    if (!m_store->GatherChildren() && result == 0)
        result = kInvalid;
    nodes.Attach(m_store->table, m_store->count);
    return result == 0 ? static_cast<int32_t>(m_store->count) : result;
}

const CVrJsonValue* CVrJsonParser::ParseRoot(const CVrxStringU& text) {
    return Parse(text) > 0 ? GetRoot() : nullptr;
}

CVrJsonValue* CVrJsonParser::NewValue() {
    if (!m_store)
        m_store = new Store;
    CVrJsonValue* node = m_store->NewNode(kUnset);
    if (node)
        m_store->handedOut.Add(m_store->count - 1);
    nodes.Attach(m_store->table, m_store->count);
    return node;
}

// ---------------------------------------------------------------------------------------------- tolerant
// values

bool ReadBool(const CVrJsonValue* node, bool& out) {
    if (!node)
        return false;
    if (node->IsBoolean()) {
        out = node->IsTrue();
        return true;
    }
    if (node->IsNumber()) {
        out = std::trunc(node->number) != 0 && !std::isnan(node->number);
        return true;
    }
    if (!node->IsString())
        return false;
    for (const char* word : {"1", "true", "TRUE"}) {
        if (node->value == word) {
            out = true;
            return true;
        }
    }
    for (const char* word : {"0", "false", "FALSE"}) {
        if (node->value == word) {
            out = false;
            return true;
        }
    }
    return false;
}

namespace {

// An optional sign, then digits with at most one separator, and at least one digit.
bool IsPlainNumber(const char* text) {
    if (*text == '+' || *text == '-')
        text++;
    int digits = 0;
    int separators = 0;
    for (; *text != '\0'; text++) {
        if (IsDigit(*text))
            digits = 1;
        else if (*text == '.' || *text == ',')
            separators = separators < 2 ? separators + 1 : 2;
        else
            return false;
    }
    return digits > 0 && separators < 2;
}

} // namespace

bool ReadNumber(const CVrJsonValue* node, double& out) {
    if (!node)
        return false;
    if (node->IsNumber()) {
        out = node->number;
        return true;
    }
    if (!node->IsString() || !IsPlainNumber(node->value.CStr()))
        return false;
    out = node->value.ToDouble();
    return true;
}
