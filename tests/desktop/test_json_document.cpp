// The JSON reader with positions: what it takes, what it refuses, and where it says things stand.
#include "desktop/json_document.h"

#include <chrono>
#include <gtest/gtest.h>

namespace {

using namespace desktop;

// "LINE:COLUMN what" of the fault, or "" for a text that can be read.
std::string FaultOf(const std::string& text) {
    JsonDocument doc;
    const auto fault = doc.Parse(text);
    if (!fault)
        return "";
    const TextPosition at = doc.PositionOf(fault->offset);
    return std::to_string(at.line) + ":" + std::to_string(at.column) + " " + fault->text;
}

std::string RemarksOn(const std::string& text) {
    JsonDocument doc;
    EXPECT_FALSE(doc.Parse(text)) << text;
    std::string all;
    for (const JsonRemark& remark : doc.Remarks())
        all += std::to_string(doc.PositionOf(remark.offset).column) + doc.PathOf(remark.node) + " ";
    return all;
}

TEST(JsonDocument, ATreeKeepsOrderKeysAndPlaces) {
    JsonDocument doc;
    ASSERT_FALSE(doc.Parse("[ {\"a\": {\"b\": -1.5e1}, \"c\": [ [] , {} ]},\n {\"\\u00e4\": \"x\"} ]"));
    const auto first = doc.At(doc.Root()).firstChild;
    const auto b = doc.Find(doc.Find(first, "a"), "b");
    EXPECT_EQ(doc.Number(b), -15);
    EXPECT_EQ(doc.PathOf(b), "[0].a.b");
    EXPECT_EQ(doc.At(doc.Find(first, "c")).childCount, 2u);
    const auto second = doc.At(first).nextSibling;
    const auto x = doc.Find(second, "\\u00e4");
    EXPECT_EQ(doc.Raw(x), "x");
    EXPECT_EQ(doc.PositionOf(doc.At(x).start).line, 2u);
    EXPECT_EQ(doc.PositionOf(doc.At(x).start).column, 13u);
}

TEST(JsonDocument, FaultsAreNamedAtTheirPlace) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "1:1 the text is empty"},
        {" \n ", "2:2 the text is empty"},
        {"\xEF\xBB\xBF[]", "1:1 starts with a byte order mark"},
        {"[", "1:1 this array is never closed"},
        {"[\n {\"a\": 1", "2:2 this bracket is never closed"},
        {"[}", "1:2 this bracket does not match"},
        {"]", "1:1 a closing bracket without an opening one"},
        {"[] []", "1:4 more text behind the end"},
        {"[{\"a\" 1}]", "1:7 a colon is missing behind the key"},
        {"[{\"a\":}]", "1:7 a value is missing behind the key"},
        {"[{\"a\"}]", "1:6 a value is missing behind the key"},
        {"[{\"a\": 1 \"b\": 2}]", "1:10 a comma is missing in front of this string"},
        {"[{} {}]", "1:5 a comma is missing in front of '{'"},
        {"[{,}]", "1:3 a value is missing in front of the comma"},
        {"[{} : {}]", "1:5 a colon has no place here"},
        {"[{a: 1}]", "1:3 a key in double quotes must stand here, not 'a'"},
        {"[{\"a\": \"b}]", "1:8 this string is never closed"},
        {"[{\"a\": \"\\x\"}]", "1:9 an unknown escape"},
        {"[{\"a\": \"\\u12\"}]", "1:9 four hexadecimal digits"},
        {"[{\"a\": 01}]", "1:8 '01' is neither a number"},
        {"[{\"a\": .5}]", "1:8 '.5' is neither a number"},
        {"[{\"a\": tru}]", "1:8 'tru' is neither a number"},
        {"[{\"a\": \xC3\xA4}]", "1:8 '?"
                                "?' is neither a number"},
        {"[1]", "1:2 a number, true, false or null in an array"},
        {"5", "1:1 the text must be an array of objects"},
        {"\"a\"", "1:1 the text must be an array of objects"},
        {"[{\"\xC3\xA4\xC3\xA4\": x}]", "1:9 'x' is neither a number"}, // columns count characters
    };
    for (const auto& [text, fault] : cases)
        EXPECT_EQ(FaultOf(text).substr(0, std::string(fault).size()), fault) << text;
    EXPECT_EQ(FaultOf(std::string("[]\0[]", 5)), "1:3 a NUL byte: the display sees nothing behind it");
}

TEST(JsonDocument, LibertiesOfTheDisplayBecomeRemarks) {
    EXPECT_EQ(RemarksOn("[{\"a\": 1,}]"), "9[0] ");
    EXPECT_EQ(RemarksOn("[{},]"), "4 ");
    EXPECT_EQ(RemarksOn("[{\"a\": \"x\\n\"}]"), "8[0].a ");
    EXPECT_EQ(RemarksOn("[{\"a\": \"x\ty\"}]"), "8[0].a ");
    EXPECT_EQ(RemarksOn("[{\"a\": 1, \"b\": 2, \"a\": 3}]"), "19[0].a ");
    EXPECT_EQ(RemarksOn("[{\"a\": \"\xC0\xAF\"}]"), "8[0].a ");
    EXPECT_EQ(RemarksOn("[{\"a\": \"\xED\xA0\x80\"}]"), "8[0].a ");
    EXPECT_EQ(RemarksOn("[{\"a\": \"\xF4\x8F\xBF\xBF\xE0\xA0\x80\xC2\x80\"}]"), "")
        << "the edges of UTF-8 are fine";
}

TEST(JsonDocument, DepthSizeAndRepetitionCostLinearTime) {
    const auto start = std::chrono::steady_clock::now();
    std::string deep, closing;
    for (int i = 0; i < 200'000; ++i)
        deep += "[{\"a\":", closing += "}]";
    JsonDocument doc;
    ASSERT_FALSE(doc.Parse(deep + "[]" + closing));
    const auto last = static_cast<std::uint32_t>(doc.NodeCount() - 1);
    EXPECT_EQ(doc.PathOf(last).substr(0, 8), "...[0].a") << doc.PathOf(last);
    std::string wide = "[{\"a\":0";
    for (int i = 0; i < 200'000; ++i)
        wide += ",\"k" + std::to_string(i % 1000) + "\":1";
    ASSERT_FALSE(doc.Parse(wide + "}]"));
    EXPECT_EQ(doc.Remarks().size(), 1000u) << "remarks are bounded";
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

} // namespace
