// Any bytes as JSON: the parser must give the nodes that its plain twin of the tests gives.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "foundation/json.h"
#include "foundation/json_reference.h"

namespace {

void Require(bool condition) {
    if (!condition)
        abort();
}

bool SameNumber(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

void CompareNode(const reference::Node& expected, const CVrJsonValue& node) {
    Require(expected.kind == static_cast<int>(node.type));
    Require(expected.name == node.name.CStr() && expected.value == node.value.CStr());
    Require(expected.start == static_cast<int32_t>(node.start) &&
            expected.end == static_cast<int32_t>(node.end));
    Require(expected.parent == static_cast<int32_t>(node.parent) && expected.childCount == node.childCount);
    Require(expected.children.size() == node.GetChildCount());
    Require(SameNumber(expected.number, node.number));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t kMaxSize = 4096; // the twin takes quadratic time
    if (size > kMaxSize)
        return 0;
    CVrxStringU text;
    text.AssignBytes(data, static_cast<uint32_t>(size));
    CVrJsonParser parser;
    reference::Parser twin;
    Require(twin.Parse({reinterpret_cast<const char*>(data), size}) == parser.Parse(text));
    Require(twin.nodes.size() == parser.nodes.GetSize());
    for (uint32_t i = 0; i < parser.nodes.GetSize(); i++)
        CompareNode(twin.nodes[i], *parser.GetNode(i));

    bool flag = false;
    double number = 0;
    for (uint32_t i = 0; i < parser.nodes.GetSize(); i++) {
        ReadBool(parser.GetNode(i), flag);
        ReadNumber(parser.GetNode(i), number);
        parser.GetNode(i)->ToInt32();
        parser.GetNode(i)->ToUint32();
    }
    return 0;
}
