// Strings and pointer arrays that show memory of another owner: they never free it, and changing them makes a
// copy.
#include <gtest/gtest.h>

#include <utility>

#include "foundation/ptr_array.h"
#include "foundation/string.h"

namespace {

TEST(AttachedString, ReadsLikeAnOwnText) {
    char text[] = "attached text";
    CVrxStringU string("former");
    string.Attach(text, 13);
    EXPECT_EQ(text, string.CStr());
    EXPECT_EQ("attached text", string);
    EXPECT_EQ("text", string.Mid(9, 10));
    const CVrxStringU copy = string;
    text[0] = 'A';
    EXPECT_EQ("attached text", copy);
    EXPECT_EQ("Attached text", string);
    const CVrxStringU moved = std::move(string);
    EXPECT_EQ(text, moved.CStr());
}

TEST(AttachedString, EveryChangeOfLengthLeavesTheOwnerAlone) {
    char text[] = "0123456789";
    auto changed = [&text](auto change) {
        CVrxStringU string;
        string.Attach(text, 10);
        change(string);
        return string;
    };
    EXPECT_EQ("0123456789 and more", changed([](CVrxStringU& s) { s.Append(" and more"); }));
    EXPECT_EQ("01234567890123456789", changed([](CVrxStringU& s) { s.Append(s); }));
    EXPECT_EQ("34", changed([](CVrxStringU& s) { s.AssignBytes(s.CStr() + 3, 2); }));
    EXPECT_EQ("other", changed([](CVrxStringU& s) { s = "other"; }));
    EXPECT_EQ("<7>", changed([](CVrxStringU& s) { s.Format("<%d>", 7); }));
    EXPECT_EQ(4u, changed([](CVrxStringU& s) { s.SetZeros(4); }).GetLength());
    EXPECT_STREQ("0123456789", text);
}

TEST(AttachedString, EmptyOneGivesAWritableBuffer) {
    char nothing[] = "";
    CVrxStringU string;
    string.Attach(nothing, 0);
    EXPECT_FALSE(string.IsNull());
    ASSERT_NE(nullptr, string.GetBuffer());
    EXPECT_STREQ("", string.GetBuffer());
    string.Attach(nothing, 0);
    string.Clear();
    EXPECT_TRUE(string.IsEmpty());
}

TEST(AttachedArray, ShrinksInPlaceAndGrowsIntoACopy) {
    int values[100];
    void* slots[100];
    for (int i = 0; i < 100; i++)
        slots[i] = &values[i];
    CVrSimplePtrArray array;
    array.Add(nullptr);
    array.Attach(slots, 100);
    EXPECT_EQ(slots, array.begin());
    EXPECT_TRUE(array.SetSize(3));
    EXPECT_EQ(&values[99], slots[99]); // the owner's
    EXPECT_EQ(3, array.Add(&values[50]));
    EXPECT_NE(slots, array.begin());
    EXPECT_EQ(&values[2], array[2]);
    EXPECT_EQ(&values[3], slots[3]);
    array.Attach(nullptr, 0);
    EXPECT_TRUE(array.IsEmpty());
    EXPECT_EQ(0, array.Add(&values[1]));
}

} // namespace
