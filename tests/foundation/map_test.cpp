#include <algorithm>
#include <map>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/map.h"

namespace {

void* AsValue(intptr_t number) {
    return reinterpret_cast<void*>(number);
}

// Counts how many of its kind live.
struct Tracked {
    explicit Tracked(int& counter) : live(counter) { live++; }
    ~Tracked() { live--; }
    int& live;
};

} // namespace

TEST(MapTest, AgreesWithTheStandardMapOnRandomKeys) {
    std::mt19937 random(7);
    for (int round = 0; round < 50; round++) {
        CVrMapIntToPtr map;
        std::map<int32_t, void*> expected;
        std::uniform_int_distribution<int32_t> keys(-50 * round, 50 * round);
        for (int i = 0; i < 40 * round; i++) {
            const int32_t key = keys(random);
            EXPECT_TRUE(map.SetAt(key, AsValue(i + 1)));
            expected[key] = AsValue(i + 1);
        }
        ASSERT_EQ(map.GetCount(), static_cast<int32_t>(expected.size()));
        auto next = expected.begin();
        for (void* value = map.GetFirst(); map.IsIterating(); value = map.GetNext(), ++next) {
            ASSERT_EQ(value, next->second);
            ASSERT_EQ(map.GetCurrentKey(), next->first);
        }
        EXPECT_EQ(next, expected.end());
        for (const auto& [key, value] : expected)
            ASSERT_EQ(map.Lookup(key), value);
    }
}

// A tree that lost its balance overruns the iteration's stack of 45 levels on sorted input.
TEST(MapTest, StaysBalancedOnSortedKeys) {
    constexpr int32_t kCount = 100000;
    for (const int32_t sign : {1, -1}) {
        CVrMapIntToPtr map;
        for (int32_t i = 0; i < kCount; i++)
            map.SetAt(sign * i, AsValue(i + 1));
        int32_t count = 0;
        for (map.GetFirst(); map.IsIterating(); map.GetNext())
            count++;
        EXPECT_EQ(count, kCount);
    }
}

TEST(MapTest, ExtremeKeysKeepTheirOrder) {
    CVrMapIntToPtr map;
    for (const int32_t key : {INT32_MAX, 0, INT32_MIN, -1, 1})
        map.SetAt(key, AsValue(1));
    std::vector<int32_t> keys;
    for (map.GetFirst(); map.IsIterating(); map.GetNext())
        keys.push_back(map.GetCurrentKey());
    EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
    EXPECT_EQ(keys.size(), 5u);
}

TEST(MapTest, ReplacingKeepsTheCount) {
    CVrMapIntToPtr map;
    map.SetAt(1, AsValue(10));
    map.SetAt(1, AsValue(20));
    EXPECT_EQ(map.GetCount(), 1);
    EXPECT_EQ(map.Lookup(1), AsValue(20));
    EXPECT_EQ(map.Lookup(2), nullptr);
    map.RemoveAll();
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(map.GetFirst(), nullptr);
    EXPECT_FALSE(map.IsIterating());
    EXPECT_EQ(map.GetNext(), nullptr);
}

TEST(TypedMapTest, DestroysItsValuesOnlyWithAutoDelete) {
    int live = 0;
    Tracked outside(live);
    {
        CVrTypedMapIntToPtr<Tracked> borrowed;
        borrowed.SetAt(1, &outside);
    }
    EXPECT_EQ(live, 1);
    {
        CVrTypedMapIntToPtr<Tracked> owning(true);
        for (int i = 0; i < 10; i++)
            owning.SetAt(i, new Tracked(live));
        EXPECT_EQ(live, 11);
        owning.SetAt(3, new Tracked(live)); // the former one goes
        owning.SetAt(3, owning.Lookup(3));  // the same one stays
        EXPECT_EQ(live, 11);
        owning.Clear();
        EXPECT_EQ(live, 1);
        EXPECT_TRUE(owning.IsEmpty());
        owning.SetAt(5, new Tracked(live));
    }
    EXPECT_EQ(live, 1);
}
