#include "foundation/json.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <random>
#include <string>

#include "json_reference.h"
#include "support/text_pieces.h"

namespace {

CVrxStringU Text(const std::string& text) {
    CVrxStringU copy;
    copy.AssignBytes(text.data(), static_cast<uint32_t>(text.size()));
    return copy;
}

int32_t ResultOf(const std::string& text) {
    CVrJsonParser parser;
    return parser.Parse(Text(text));
}

// Both parsers on one text.
void ExpectSameAsReference(const std::string& text) {
    SCOPED_TRACE(text);
    CVrJsonParser parser;
    reference::Parser expected;
    ASSERT_EQ(expected.Parse(text), parser.Parse(Text(text)));
    ASSERT_EQ(expected.nodes.size(), parser.nodes.GetSize());
    EXPECT_EQ(expected.pos, static_cast<long>(parser.pos));
    EXPECT_EQ(expected.current, static_cast<int32_t>(parser.current));
    for (uint32_t i = 0; i < parser.nodes.GetSize(); i++) {
        SCOPED_TRACE(i);
        const reference::Node& a = expected.nodes[i];
        const CVrJsonValue& b = *parser.GetNode(i);
        EXPECT_EQ(a.kind, static_cast<int>(b.type));
        EXPECT_EQ(a.name, b.name.CStr());
        EXPECT_EQ(a.value, b.value.CStr());
        EXPECT_EQ(a.start, static_cast<int32_t>(b.start));
        EXPECT_EQ(a.end, static_cast<int32_t>(b.end));
        EXPECT_EQ(a.childCount, b.childCount);
        EXPECT_EQ(a.parent, static_cast<int32_t>(b.parent));
        EXPECT_TRUE(a.number == b.number || (std::isnan(a.number) && std::isnan(b.number)));
        ASSERT_EQ(a.children.size(), b.GetChildCount());
        for (uint32_t c = 0; c < b.GetChildCount(); c++)
            EXPECT_EQ(parser.GetNode(static_cast<uint32_t>(a.children[c])), b.GetChild(c));
    }
}

TEST(Json, KeyAndValueAreOneNode) {
    CVrJsonParser parser;
    const CVrJsonValue* root = parser.ParseRoot(R"({"a":{"b":1},"c":"x","d":true,"e":null,"f":-2.5})");
    ASSERT_NE(nullptr, root);
    EXPECT_EQ(7u, parser.nodes.GetSize());
    EXPECT_EQ(1.0, root->Find("a")->Find("b")->number);
    EXPECT_EQ("1", root->Find("a")->Find("b")->value);
    EXPECT_TRUE(root->Find("c")->IsString());
    EXPECT_EQ("x", root->Find("c")->value);
    EXPECT_EQ(0u, root->Find("c")->GetChildCount());
    EXPECT_TRUE(root->Find("d")->IsTrue());
    EXPECT_EQ(0, root->Find("d")->number);
    EXPECT_TRUE(root->Find("e")->IsNumber());
    EXPECT_EQ(0, root->Find("e")->number);
    EXPECT_EQ(-2.5, root->Find("f")->number);
    EXPECT_EQ(-2, root->Find("f")->ToInt32());
    EXPECT_EQ(nullptr, root->Find("g"));
}

TEST(Json, ArrayOfObjectsKeepsDocumentOrder) {
    CVrJsonParser parser;
    ASSERT_EQ(7, parser.Parse(R"([{"I":1,"N":"a.svg"},{"I":2,"N":"b.svg"}])"));
    const CVrJsonValue* root = parser.GetRoot();
    ASSERT_EQ(2u, root->GetChildCount());
    EXPECT_EQ("a.svg", root->GetChild(0)->Find("N")->value);
    EXPECT_EQ(2, root->GetChild(1)->Find("I")->ToInt32());
    EXPECT_EQ(0u, root->GetChild(1)->parent);
}

TEST(Json, TextStaysRawAndMayHoldLineBreaks) {
    CVrJsonParser parser;
    const CVrJsonValue* root = parser.ParseRoot("{\"k\":\"\xC3\xA4\\u00e4\\\"\n\"}");
    ASSERT_NE(nullptr, root);
    EXPECT_EQ("\xC3\xA4\\u00e4\\\"\n", root->Find("k")->value);
}

TEST(Json, FirstOfTwoEqualKeysIsFound) {
    CVrJsonParser parser;
    EXPECT_EQ(1, parser.ParseRoot(R"({"a":1,"a":2})")->Find("a")->ToInt32());
}

TEST(Json, MalformedTextsSayInvalidOrIncomplete) {
    EXPECT_EQ(0, ResultOf(""));
    EXPECT_EQ(0, ResultOf(" \t\r\n"));
    for (const char* invalid :
         {"}", "]", R"({"a":1])", R"({"a":"\x"})", R"({"a":"\u12g4"})", R"({"a":"\u12"})", "1", "[1]", "{1}",
          "true", "{\"a\":\x01}", "{\"a\":t\xC3\xA4}", "{} }"})
        EXPECT_EQ(CVrJsonParser::kInvalid, ResultOf(invalid)) << invalid;
    for (const char* incomplete : {R"({"a":1)", "[", R"(["a)", R"({"a":"b\)", R"(["\u12)", "\""})
        EXPECT_EQ(CVrJsonParser::kIncomplete, ResultOf(incomplete)) << incomplete;
}

TEST(Json, TextEndsAtFirstNul) {
    EXPECT_EQ(1, ResultOf(std::string("[]\0[[[", 6)));
    EXPECT_EQ(CVrJsonParser::kIncomplete, ResultOf(std::string("[\"a\0\"]", 6)));
}

TEST(Json, TolerantOfCommasAndTrailingText) {
    for (const char* text :
         {R"({"a":1 "b":2})", R"({"a":1,,"b":2,})", R"([{"a":1}{"b":2}])", R"({"a" "b"})", "{} {}", "[]:}",
          R"({"a":1}:{"b":[}])", R"({"a":"b" "c" "d"})", R"("a":"b")", ":::", ",,,"})
        ExpectSameAsReference(text);
}

TEST(Json, RandomTextsGiveTheNodesOfTheSlowTwin) {
    static const char* const kPieces[] = {"{",     "}",       "[",       "]",  ",",        ":",
                                          "\"a\"", "\"b\":",  "\"\"",    "1",  "-2.5",     "true",
                                          "nul",   " ",       "\"c\":{", "},", "],",       "\"d\":[",
                                          "\\",    "\"\\n",   "\"\\u",   "\n", "\"k\":1,", "{\"x\":\"y\"},",
                                          "\x02",  "\xC3\xA4"};
    std::mt19937 random(7);
    for (int round = 0; round < 20000; round++) {
        std::string text;
        // The last pieces end a text early; take them rarely.
        const size_t limit = std::size(kPieces) - (round % 4 ? 8 : 0);
        for (size_t i = random() % 40; i > 0; i--)
            text += kPieces[random() % limit];
        ExpectSameAsReference(text);
        if (HasFailure())
            return;
    }
}

TEST(Json, NumbersAreThoseOfTheLibrary) {
    std::mt19937_64 random(3);
    std::uniform_int_distribution<int> exponent(-30, 30);
    auto expectSame = [](const std::string& token) {
        CVrJsonParser parser;
        const CVrJsonValue* root = parser.ParseRoot(Text(Joined({"{\"n\":", token, "}"})));
        ASSERT_NE(nullptr, root) << token;
        EXPECT_EQ(atof(token.c_str()), root->GetChild(0)->number) << token;
    };
    for (const char* token :
         {"0", "-0", "00012", "5.", ".5", "-", "+3", "1e5", "1.5E-3", "0x1F", "inf", "123456789012345",
          "1234567890123456", "0.1", "9007199254740993", "1.7976931348623157e308", "1e999", "4.35"})
        expectSame(token);
    for (int i = 0; i < 5000; i++) {
        char token[64];
        snprintf(token, sizeof(token), i % 2 ? "%.*f" : "%.*g", i % 17,
                 std::ldexp(static_cast<double>(random()), -64) * std::pow(10.0, exponent(random)));
        expectSame(token);
    }
}

TEST(Json, IntegersAreHeldInTheirRange) {
    CVrJsonParser parser;
    const CVrJsonValue* root =
        parser.ParseRoot(R"({"big":1e30,"small":-1e30,"nan":nan,"inf":inf,"u":4294967295,"m":-1,"f":-1.9})");
    EXPECT_EQ(INT32_MAX, root->Find("big")->ToInt32());
    EXPECT_EQ(INT32_MIN, root->Find("small")->ToInt32());
    EXPECT_EQ(0, root->Find("nan")->ToInt32());
    EXPECT_EQ(0u, root->Find("inf")->ToUint32());
    EXPECT_EQ(0xFFFFFFFFu, root->Find("u")->ToUint32());
    EXPECT_EQ(0xFFFFFFFFu, root->Find("m")->ToUint32());
    EXPECT_EQ(-1, root->Find("f")->ToInt32());
}

TEST(Json, ParserCanBeUsedAgain) {
    CVrJsonParser parser;
    ASSERT_NE(nullptr, parser.ParseRoot(R"({"V":1})"));
    parser.Clear();
    EXPECT_EQ(0u, parser.nodes.GetSize());
    ASSERT_NE(nullptr, parser.ParseRoot(R"({"V":"on"})"));
    EXPECT_EQ("on", parser.GetRoot()->Find("V")->value);

    // Without Clear a longer text goes on where the last one ended.
    const uint32_t count = parser.nodes.GetSize();
    EXPECT_EQ(static_cast<int32_t>(count) + 1, parser.Parse(R"({"V":"on"}[])"));
    EXPECT_TRUE(parser.GetNode(count)->IsArray());
}

TEST(Json, NewValueAppendsAnEmptyNode) {
    CVrJsonParser parser;
    CVrJsonValue* first = parser.NewValue();
    for (int i = 0; i < 2000; i++)
        parser.NewValue()->name = "own text";
    EXPECT_EQ(first, parser.GetRoot());
    EXPECT_EQ(CVrJsonKind::Undefined, first->type);
    EXPECT_EQ(2001u, parser.nodes.GetSize());
}

TEST(Json, CopiesOfTextsOutliveTheParser) {
    CVrxStringU copy;
    {
        CVrJsonParser parser;
        const CVrJsonValue* root = parser.ParseRoot(R"({"key":"a text of some length"})");
        copy = root->GetChild(0)->value;
        parser.NewValue()->value = root->GetChild(0)->name;
    }
    EXPECT_EQ("a text of some length", copy);
}

// Each shape makes some walk long that a plain implementation repeats for every byte.
TEST(Json, AbsurdShapesTakeLinearTime) {
    constexpr int kMany = 300000;
    const std::string shapes[] = {
        Joined({"{", Repeated(R"("k":1,)", kMany), "}"}),     // a comma behind many siblings
        Joined({Repeated("[", kMany), Repeated("]", kMany)}), // deep
        Repeated(R"({"s":[)", kMany),                         // deep and never closed
        Joined({"{", Repeated(R"("k":1)", kMany), Repeated("{}", kMany), "}"}), // for want of commas a chain
        Joined({R"({"a":1}:)", Repeated("}", kMany)}),                          // closing what is closed
        Joined({"[", Repeated("{},", kMany), "]"}),
        Joined({R"({"k":")", Repeated("x", 10 * kMany), R"("})"}),
        Joined({"{\"k\":", Repeated("1", 10 * kMany), "}"}),
        Joined({R"({"k":)", Repeated(R"("x")", kMany), "}"}),
    };
    for (const std::string& text : shapes) {
        const auto begin = std::chrono::steady_clock::now();
        ResultOf(text);
        const auto elapsed = std::chrono::steady_clock::now() - begin;
        EXPECT_LT(elapsed, std::chrono::seconds(100)) << text.substr(0, 20);
    }
}

TEST(Json, TooManyNodesAreInvalid) {
    EXPECT_EQ(CVrJsonParser::kInvalid,
              ResultOf(Repeated("[", static_cast<int>(CVrJsonParser::kMaxNodes) + 1)));
}

TEST(JsonValues, YesAndNoInAllSpellings) {
    CVrJsonParser parser;
    const CVrJsonValue* root = parser.ParseRoot(
        R"({"t":true,"f":false,"n1":2,"n0":0.9,"s1":"1","sT":"TRUE","s0":"FALSE","bad":"True","o":{},"nan":nan})");
    auto read = [&](const char* key) {
        bool value = false;
        return ReadBool(root->Find(key), value) ? (value ? 1 : 0) : -1;
    };
    for (const char* key : {"t", "n1", "s1", "sT"})
        EXPECT_EQ(1, read(key)) << key;
    for (const char* key : {"f", "n0", "s0", "nan"})
        EXPECT_EQ(0, read(key)) << key;
    for (const char* key : {"bad", "o", "missing"})
        EXPECT_EQ(-1, read(key)) << key;
}

TEST(JsonValues, NumbersInAllSpellings) {
    auto read = [](const char* text) {
        CVrJsonParser parser;
        double value = -99;
        return ReadNumber(parser.ParseRoot(text)->Find("v"), value) ? value : -99;
    };
    EXPECT_EQ(0.5, read(R"({"v":0.5})"));
    EXPECT_EQ(0.5, read(R"({"v":"0,5"})"));
    EXPECT_EQ(0.5, read(R"({"v":"0.5"})"));
    EXPECT_EQ(-3, read(R"({"v":"-3"})"));
    EXPECT_EQ(7, read(R"({"v":"+7."})"));
    for (const char* bad : {R"({"v":"1,2,3"})", R"({"v":"-"})", R"({"v":"."})", R"({"v":""})",
                            R"({"v":"5%"})", R"({"v":true})", R"({"v":[]})", R"({"w":1})"})
        EXPECT_EQ(-99, read(bad)) << bad;
}

} // namespace
