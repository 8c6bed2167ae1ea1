#include <cmath>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "foundation/string.h"
#include "foundation/string_array.h"

TEST(StringTest, AssignedTextHasExactCapacity) {
    CVrxStringU text("hello");
    EXPECT_EQ(text.GetLength(), 5u);
    EXPECT_EQ(text.GetCapacity(), 6);
    text.Assign("a rather longer text");
    EXPECT_EQ(text.GetCapacity(), 21);
    text.Assign("short", 3);
    EXPECT_EQ(text, "sho");
    EXPECT_EQ(text.GetCapacity(), 4);
    text.Assign("x", 100);
    EXPECT_EQ(text, "x");
    text.Assign("", 0);
    EXPECT_FALSE(text.IsNull());
    EXPECT_EQ(text.GetCapacity(), 1);
}

TEST(StringTest, NullTextAndNullStringReadAsEmpty) {
    CVrxStringU text(nullptr);
    EXPECT_TRUE(text.IsNull());
    EXPECT_STREQ(text.CStr(), "");
    EXPECT_EQ(text, "");
    EXPECT_EQ(text, CVrxStringU(""));
    EXPECT_EQ(text[0], '\0');

    ASSERT_NE(text.GetBuffer(), nullptr);
    EXPECT_FALSE(text.IsNull());
    EXPECT_EQ(text.GetCapacity(), 2);
    EXPECT_EQ(text.GetLength(), 0u);
}

TEST(StringTest, ClearFreesAllButTheSmallestBuffers) {
    CVrxStringU shortText("a");
    shortText.Clear();
    EXPECT_FALSE(shortText.IsNull());
    EXPECT_STREQ(shortText.GetBuffer(), "");
    EXPECT_EQ(shortText.GetLength(), 0u);

    CVrxStringU longText("abc");
    longText.Clear();
    EXPECT_TRUE(longText.IsNull());
    EXPECT_STREQ(longText.GetBuffer(), "");
}

TEST(StringTest, AssigningAPartOfItselfIsSafe) {
    CVrxStringU text("0123456789");
    text.Assign(text.CStr() + 4);
    EXPECT_EQ(text, "456789");
    text.Assign(text.CStr() + 1, 2);
    EXPECT_EQ(text, "56");
    text = text;
    EXPECT_EQ(text, "56");
    text.Append(text);
    text.Append(text.CStr() + 1);
    EXPECT_EQ(text, "5656656");
    text.Format("<%s>", text.CStr());
    EXPECT_EQ(text, "<5656656>");
}

TEST(StringTest, AttachedTextIsNeverWrittenTo) {
    char others[] = "OTHERS";
    const auto attached = [&others] {
        CVrxStringU text;
        text.Attach(others, 6);
        return text;
    };
    CVrxStringU text = attached();
    EXPECT_EQ(text.CStr(), others);
    text.MakeLower();
    EXPECT_EQ(text, "others");
    text = attached();
    text.Assign(text.CStr() + 2);
    EXPECT_EQ(text, "HERS");
    text = attached();
    text.Append(text);
    EXPECT_EQ(text, "OTHERSOTHERS");
    text = attached();
    text.Truncate(3);
    EXPECT_EQ(text, "OTH");
    text = attached();
    text.GetBuffer()[0] = 'x';
    EXPECT_EQ(text, "xTHERS");
    text = attached();
    text.Format("<%s>", text.CStr());
    EXPECT_EQ(text, "<OTHERS>");
    text = attached();
    text.Clear();
    EXPECT_TRUE(text.IsNull());
    text = attached();
    EXPECT_TRUE(text.SetZeros(3));
    const CVrxStringU copy(attached());
    EXPECT_STREQ(others, "OTHERS");
}

TEST(StringTest, MoveLeavesAUsableNullString) {
    CVrxStringU source("text");
    CVrxStringU target(std::move(source));
    EXPECT_EQ(target, "text");
    source = "again";
    target = std::move(source);
    EXPECT_EQ(target, "again");
}

TEST(StringTest, MidAndLeftStayWithinTheText) {
    const CVrxStringU text("abcdef");
    EXPECT_EQ(text.Mid(2, 3), "cde");
    EXPECT_EQ(text.Mid(4, 100), "ef");
    EXPECT_EQ(text.Mid(6, 1), "");
    EXPECT_EQ(text.Mid(-1, 3), "");
    EXPECT_EQ(text.Mid(2, 0), "");
    EXPECT_EQ(text.Mid(2, INT32_MIN), "");
    EXPECT_EQ(text.Left(2), "ab");
    EXPECT_EQ(text.Left(0), "");
    EXPECT_EQ(text.Left(INT32_MAX), "abcdef");
    EXPECT_EQ(CVrxStringU().Left(3), "");
}

TEST(StringTest, FormatKeepsTheTextWhenTheResultIsTooLong) {
    CVrxStringU text("before");
    const std::string exact(CVrxStringU::kFormatLimit, 'x');
    text.Format("%sy", exact.c_str());
    EXPECT_EQ(text, "before");
    text.Format("%s", exact.c_str());
    EXPECT_EQ(text.GetLength(), CVrxStringU::kFormatLimit);
    EXPECT_EQ(text.GetCapacity(), static_cast<int32_t>(CVrxStringU::kFormatLimit) + 2);
    text.Format("%s", "");
    EXPECT_TRUE(text.IsEmpty());
    text.Format("%d/%s", 12, "a");
    EXPECT_EQ(text, "12/a");
}

TEST(StringTest, MakeLowerKnowsAsciiAndLatin1) {
    struct Case {
        const char* text;
        const char* lower;
    };
    const Case cases[] = {
        {"AbZ[@", "abz[@"},
        {"\xC3\x9E", "\xC3\xBE"},
        {"\xC3\x9F", "\xC3\x9F"}, // sharp s stays
        {"\xC3\x80", "\xC3\xA0"}, // first capital
        {"\xC3\x97", "\xC3\xB7"}, // the multiplication sign is carried along
        {"\xD0\x90"               // Cyrillic stays
         "A",
         "\xD0\x90"
         "a"},
        {"\xE2\x82\xAC" // three bytes, then four, are skipped
         "A\xF0\x9F\x98\x80Z",
         "\xE2\x82\xAC"
         "a\xF0\x9F\x98\x80z"},
        {"A\x80" // a stray byte ends it
         "B",
         "a\x80"
         "B"},
        {"A\xFFZ", "a\xFFZ"},
        {"A\xC3", "a\xC3"}, // sequences cut off by the end
        {"A\xE2", "a\xE2"},
        {"", ""},
    };
    for (const Case& c : cases) {
        CVrxStringU text(c.text);
        text.MakeLower();
        EXPECT_EQ(text, c.lower) << c.text;
    }
}

TEST(StringTest, ToDoubleReadsItsOwnNumberForm) {
    struct Case {
        const char* text;
        double value;
    };
    const Case cases[] = {
        {nullptr, 0},
        {"", 0},
        {"-", 0},
        {"+7", 7},
        {"-12", -12},
        {"1,5", 1.5},
        {"1.5e2", 150},
        {"1.5E-1", 0.15},
        {"1e2", 1},
        {"1.e2", 100},
        {".25", 0.25},
        {"5.", 5},
        {"3x", 3},
        {" 3", 0},
        {"--3", 0},
        {"1.5e", 1.5},
        {"1.5e+1", 15},
        {"1.2.3", 1.2},
        {"-0,5", -0.5},
        {"9007199254740993", 9007199254740992.0},
        {"0.0e999999999999", 0},
    };
    for (const Case& c : cases)
        EXPECT_DOUBLE_EQ(CVrxStringU::ToDouble(c.text), c.value) << (c.text ? c.text : "null");
    EXPECT_TRUE(std::isinf(CVrxStringU::ToDouble("1.0e999999999999")));
    EXPECT_EQ(CVrxStringU::ToDouble("1.0e-999999999999"), 0);
    EXPECT_FALSE(std::signbit(CVrxStringU::ToDouble("-0")));
}

TEST(StringTest, LongTextsGrowWithoutCopyingEachTime) {
    CVrxStringU text;
    int32_t reallocations = 0;
    int32_t capacity = 0;
    for (int i = 0; i < 100000; i++) {
        text += 'x';
        reallocations += text.GetCapacity() != capacity;
        capacity = text.GetCapacity();
    }
    EXPECT_EQ(text.GetLength(), 100000u);
    EXPECT_LT(reallocations, 60);
}

TEST(StringTest, SearchAndOrderAreBytewise) {
    const CVrxStringU text("key=value=x");
    EXPECT_EQ(text.Find('='), 3);
    EXPECT_EQ(text.Find('=', 4), 9);
    EXPECT_EQ(text.Find("value"), 4);
    EXPECT_EQ(text.Find("none"), -1);
    EXPECT_EQ(text.Find('=', 100), -1);
    EXPECT_TRUE(text.StartsWith("key"));
    EXPECT_FALSE(text.StartsWith("key=value=xyz"));
    EXPECT_TRUE(text.EndsWith("=x"));
    EXPECT_LT(CVrxStringU("Z").Compare("a"), 0);
    EXPECT_LT(CVrxStringU("a").Compare("\xC3\xA4"), 0); // bytes compare unsigned
    EXPECT_LT(CVrxStringU("ab").Compare("abc"), 0);
}

TEST(StringArrayTest, EmptySlotsReadAsEmptyStrings) {
    CVrxStringArray array;
    EXPECT_TRUE(array.SetSize(3));
    EXPECT_EQ(array.GetAt(1), "");
    EXPECT_EQ(array.GetAt(-1), "");
    EXPECT_EQ(array.GetAt(3), "");
    EXPECT_STREQ(array.TextAt(2), "");
    EXPECT_EQ(array.Find(""), 0);
    array.ElementAt(1) = "x";
    EXPECT_EQ(array.GetAt(1), "x");
    EXPECT_EQ(array.Find("x"), 1);
}

TEST(StringArrayTest, AddUniqueAppendAndSetAtKeepOrder) {
    CVrxStringArray array;
    EXPECT_EQ(array.Add("a"), 0);
    EXPECT_EQ(array.Add(CVrxStringU("b")), 1);
    EXPECT_EQ(array.AddCopy(array.ElementAt(0)), 2);
    EXPECT_EQ(array.AddUnique("b"), 1);
    EXPECT_EQ(array.AddUnique("c"), 3);
    array.SetAt(6, "g");
    EXPECT_EQ(array.GetSize(), 7);
    EXPECT_EQ(array.GetAt(5), "");
    array.SetAt(-1, "lost");
    EXPECT_EQ(array.GetSize(), 7);

    EXPECT_EQ(array.Append(array), 7); // itself
    EXPECT_EQ(array.GetSize(), 14);
    EXPECT_EQ(array.GetAt(13), "g");
    CVrxStringArray copy(array);
    copy.ElementAt(0) = "changed";
    EXPECT_EQ(array.GetAt(0), "a");
}

TEST(StringArrayTest, ShrunkenAwayStringsDoNotComeBack) {
    CVrxStringArray array;
    for (int i = 0; i < 10; i++)
        array.Add("x");
    const int32_t capacity = array.GetCapacity();
    array.SetSize(2);
    EXPECT_EQ(array.GetCapacity(), capacity);
    array.SetSize(10);
    EXPECT_EQ(array.GetAt(1), "x");
    EXPECT_EQ(array.GetAt(2), "");
    array.SetSize(0);
    EXPECT_EQ(array.GetCapacity(), 0);
    array.SetSize(5, 100);
    array.SetSize(6);
    EXPECT_EQ(array.GetCapacity(), 100); // capacity 0 + growBy
}
