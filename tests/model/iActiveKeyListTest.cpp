#include "model/iActiveKeyList.h"

#include <gtest/gtest.h>

namespace {

iActiveKeyList listOf(std::initializer_list<iActiveKey> keys) {
    iActiveKeyList list;
    for (const iActiveKey& key : keys)
        list.Insert(list.GetCount(), key);
    return list;
}

} // namespace

TEST(ActiveKeyList, CurveIsLinearBetweenKeysAndHoldsOutside) {
    iActiveKeyList list = listOf({{0, 0.0}, {10, 1.0}, {20, -1.0}});
    EXPECT_DOUBLE_EQ(list.Interpolate(5), 0.5);
    EXPECT_DOUBLE_EQ(list.Interpolate(15), 0.0);
    EXPECT_EQ(list.Interpolate(-7), 0.0);
    EXPECT_EQ(list.Interpolate(1000), -1.0);
    EXPECT_EQ(listOf({{40, 7.25}}).Interpolate(0x7fffffff), 7.25);
    EXPECT_EQ(iActiveKeyList().Interpolate(3), 0.0);
}

TEST(ActiveKeyList, IndexSearchesAndAffectedRanges) {
    iActiveKeyList list = listOf({{5, 0.0}, {10, 0.0}, {20, 0.0}});
    EXPECT_EQ(list.IndexAtOrAfter(10), 1);
    EXPECT_EQ(list.IndexAtOrAfter(21), 3);
    EXPECT_EQ(list.IndexAtOrBefore(19), 1);
    EXPECT_EQ(list.IndexAtOrBefore(4), 0); // no key before frame 4: 0 all the same
    EXPECT_EQ(list.GetAffectedRange(1).First, 5);
    EXPECT_EQ(list.GetAffectedRange(1).Last(), 20);
    EXPECT_EQ(list.GetAffectedRange(0).First, 0);
    EXPECT_EQ(list.GetAffectedRange(2).Last(), EFrameRange::OpenEnd);
}

TEST(ActiveKeyList, StorageGrowsInStepsAndSurplusIsReturned) {
    iActiveKeyList list;
    for (long frame = 0; frame < 45; ++frame)
        list.Insert(frame, {frame, 0.0});
    EXPECT_EQ(list.GetCapacity(), 60);
    list.Remove(0, 5);
    EXPECT_EQ(list.GetCapacity(), 60);
    list.Remove(0);
    EXPECT_EQ(list.GetCapacity(), 39);
}
