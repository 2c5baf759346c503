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
    EXPECT_EQ(list.Interpolate(10), 1.0);
    EXPECT_EQ(list.Interpolate(-7), 0.0);
    EXPECT_EQ(list.Interpolate(1000), -1.0);
    EXPECT_EQ(iActiveKeyList().Interpolate(3), 0.0);
}

TEST(ActiveKeyList, OneKeyGivesItsValueAtEveryFrame) {
    iActiveKeyList list = listOf({{40, 7.25}});
    for (long frame : {-1L, 0L, 40L, 41L, 0x7fffffffL})
        EXPECT_EQ(list.Interpolate(frame), 7.25);
}

TEST(ActiveKeyList, IndexSearchesAndAffectedRanges) {
    iActiveKeyList list = listOf({{5, 0.0}, {10, 0.0}, {20, 0.0}});
    EXPECT_EQ(list.IndexAtOrAfter(0), 0);
    EXPECT_EQ(list.IndexAtOrAfter(10), 1);
    EXPECT_EQ(list.IndexAtOrAfter(11), 2);
    EXPECT_EQ(list.IndexAtOrAfter(21), 3);
    EXPECT_EQ(list.IndexAtOrBefore(19), 1);
    EXPECT_EQ(list.IndexAtOrBefore(20), 2);
    // No key before frame 4: the answer is 0 all the same.
    EXPECT_EQ(list.IndexAtOrBefore(4), 0);

    EFrameRange middle = list.GetAffectedRange(1);
    EXPECT_EQ(middle.First, 5);
    EXPECT_EQ(middle.Last(), 20);
    EFrameRange last = list.GetAffectedRange(2);
    EXPECT_EQ(last.First, 10);
    EXPECT_EQ(last.Last(), EFrameRange::OpenEnd);
    EXPECT_EQ(list.GetAffectedRange(0).First, 0);
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
    EXPECT_EQ(list[0].frame, 6);
}
