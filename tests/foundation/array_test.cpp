#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/array.h"
#include "foundation/byte_array.h"
#include "foundation/geometry.h"
#include "foundation/ptr_array.h"

TEST(VrArrayTest, GrowsByStepsRoundedToSixteen) {
    VrArray<uint32_t> array;
    array.SetSize(1);
    EXPECT_EQ(array.GetCapacity(), 16u);
    array.SetSize(17);
    EXPECT_EQ(array.GetCapacity(), 32u);
    array.SetSize(1000);
    EXPECT_EQ(array.GetCapacity(), 1008u);
    array.SetSize(1009); // 1008 + 1000 / 8 = 1133
    EXPECT_EQ(array.GetCapacity(), 1136u);
    array.SetSize(3);
    EXPECT_EQ(array.GetCapacity(), 1136u);
    array.SetSize(0);
    EXPECT_EQ(array.GetCapacity(), 0u);
    EXPECT_EQ(array.GetData(), nullptr);
    array.SetGrowBy(100);
    array.SetSize(1);
    EXPECT_EQ(array.GetCapacity(), 112u);
}

TEST(VrArrayTest, ElementsThatComeBackAreZero) {
    VrArray<uint64_t> array;
    for (uint64_t i = 1; i <= 40; i++)
        array.Add(i);
    array.SetSize(10);
    array.SetSize(100);
    EXPECT_EQ(array[9], 10u);
    for (uint32_t i = 10; i < 100; i++)
        ASSERT_EQ(array[i], 0u) << i;
    array.Reset();
    EXPECT_TRUE(array.IsEmpty());
    array.SetSize(1);
    EXPECT_EQ(array[0], 0u);
}

TEST(VrArrayTest, AddingAnElementOfItselfIsSafe) {
    VrArray<CVrPoint> array;
    array.Add({1, 2});
    for (int i = 0; i < 100; i++)
        array.Add(array[0]);
    EXPECT_EQ(array.Last(), CVrPoint(1, 2));
    VrArray<CVrPoint> copy = array;
    copy[0].x = 9;
    EXPECT_EQ(array[0].x, 1);
    copy.RemoveAt(0);
    EXPECT_EQ(copy.GetSize(), 100u);
    copy.RemoveAt(100);
    EXPECT_EQ(copy.GetSize(), 100u);
}

TEST(VrArrayTest, AnAbsurdSizeLeavesTheArrayAsItWas) {
    VrArray<CVrRect> array;
    array.Add({1, 2, 3, 4});
    EXPECT_FALSE(array.SetSize(UINT32_MAX));
    ASSERT_EQ(array.GetSize(), 1u);
    EXPECT_EQ(array[0], CVrRect(1, 2, 3, 4));
}

TEST(PtrArrayTest, AddUniqueFindsWhatIsThere) {
    int values[3] = {};
    CVrxPtrArray array;
    EXPECT_EQ(array.AddUnique(&values[0]), 0);
    EXPECT_EQ(array.AddUnique(&values[1]), 1);
    EXPECT_EQ(array.AddUnique(&values[0]), 0);
    EXPECT_EQ(array.GetSize(), 2u);
    EXPECT_EQ(array.Find(&values[2]), -1);
    EXPECT_EQ(array.GetAt(2), nullptr);
}

TEST(PtrArrayTest, RemoveAtMovesTheTailAndEmptiesTheSlot) {
    int values[3] = {};
    CVrxPtrArray array;
    for (int& value : values)
        array.Add(&value);
    array.RemoveAt(3);
    EXPECT_EQ(array.GetSize(), 3u);
    array.RemoveAt(0);
    EXPECT_EQ(array[0], &values[1]);
    EXPECT_EQ(array[1], &values[2]);
    array.SetSize(3);
    EXPECT_EQ(array[2], nullptr);
    EXPECT_TRUE(array.InsertAt(0, &values[0]));
    EXPECT_EQ(array[0], &values[0]);
    EXPECT_EQ(array[1], &values[1]);
    EXPECT_FALSE(array.InsertAt(9, nullptr));
    EXPECT_TRUE(array.Remove(&values[1]));
    EXPECT_FALSE(array.Remove(&values[1]));
    EXPECT_EQ(array[1], &values[2]);
}

TEST(SimplePtrArrayTest, GrowsBySixtyFour) {
    CVrSimplePtrArray array;
    int value = 0;
    for (int i = 0; i < 64; i++)
        array.Add(&value);
    EXPECT_EQ(array.GetCapacity(), 64u);
    array.Add(&value);
    EXPECT_EQ(array.GetCapacity(), 128u);
    EXPECT_EQ(array[63], &value);
    array.SetSize(1);
    array.SetSize(300);
    EXPECT_EQ(array.GetCapacity(), 320u);
    EXPECT_EQ(array[0], &value);
    EXPECT_EQ(array[1], nullptr);
}

TEST(ByteArrayTest, FirstBufferIsExactAndGrowthIsStepped) {
    CVrxByteArray array;
    array.SetSize(10);
    EXPECT_EQ(array.GetCapacity(), 10u);
    array.SetSize(11); // at least 32 more
    EXPECT_EQ(array.GetCapacity(), 42u);
    array.SetSize(40000);
    EXPECT_EQ(array.GetCapacity(), 40000u);
    array.SetSize(40001); // at most 1024 more
    EXPECT_EQ(array.GetCapacity(), 41024u);
    array.SetGrowBy(5000);
    array.SetSize(41025);
    EXPECT_EQ(array.GetCapacity(), 46024u);
    array.SetSize(0);
    EXPECT_EQ(array.GetData(), nullptr);
    EXPECT_EQ(array.GetCapacity(), 0u);
}

TEST(ByteArrayTest, ShrinksOnlyLargeBuffersThatAreHalfIdle) {
    constexpr uint32_t kLarge = 1048576;
    CVrxByteArray small;
    small.SetSize(kLarge - 1);
    small.SetSize(1);
    EXPECT_EQ(small.GetCapacity(), kLarge - 1);

    CVrxByteArray large;
    large.SetSize(kLarge);
    large.SetSize(kLarge / 2 + 1);
    EXPECT_EQ(large.GetCapacity(), kLarge);
    large.SetSize(kLarge / 2);
    EXPECT_EQ(large.GetCapacity(), kLarge / 2);
}

TEST(ByteArrayTest, BytesThatComeBackAreZero) {
    CVrxByteArray array;
    array.SetSize(100);
    memset(array.GetData(), 7, 100);
    array.SetSize(50);
    array.SetSize(120);
    EXPECT_EQ(std::accumulate(array.begin(), array.end(), 0), 50 * 7);
}

TEST(ByteArrayTest, AppendsAndAssignsPartsOfItself) {
    CVrxByteArray array("abc", 3);
    EXPECT_TRUE(array.Append(array.GetData(), 3));
    EXPECT_TRUE(array.Append(array.GetData() + 1, 5));
    EXPECT_EQ(std::string(array.begin(), array.end()), "abcabcbcabc");
    EXPECT_TRUE(array.Assign(array.GetData() + 2, 4));
    EXPECT_EQ(std::string(array.begin(), array.end()), "cabc");
    CVrxByteArray moved(std::move(array));
    EXPECT_TRUE(array.IsEmpty());
    EXPECT_EQ(moved.GetSize(), 4u);
}
