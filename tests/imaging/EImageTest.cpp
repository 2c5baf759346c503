#include "ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

// Tries a lock from another thread, as a second render thread would.
bool lockableFromOtherThread(EImage& image) {
    bool locked = false;
    std::thread([&] { locked = EImageLock(image).Lock(0); }).join();
    return locked;
}

} // namespace

TEST(Image, DataIsReachableOnlyWhileLockedAndItsSizeOutlivesIt) {
    EImage image(EImage::Important);
    EImageLock scope(image);
    auto picture = scope.SetData(EImageData::New({4, 3}, EImageMemory::NoFreeing));
    ASSERT_TRUE(picture); // not locked: the picture comes back
    ASSERT_TRUE(scope.Lock(-1));
    EXPECT_EQ(scope.SetData(std::move(picture)), nullptr);
    EXPECT_EQ(scope.GetData()->GetSize(), (CSize{4, 3}));
    EXPECT_TRUE(scope.SetData(nullptr));
    EXPECT_EQ(image.GetSize(), (CSize{4, 3}));
    scope.Unlock(false);
    EXPECT_EQ(scope.GetData(), nullptr);
}

TEST(Image, NestedLocksReleaseAtTheOutermostUnlockOrWithForce) {
    EImage image(EImage::Important);
    {
        EImageLock scope(image);
        EImageLock second(image); // a second scope object in the same thread re-enters
        ASSERT_TRUE(scope.Lock(-1) && scope.Lock(0) && second.Lock(0));
        second.Unlock(false);
        scope.Unlock(false);
        EXPECT_FALSE(lockableFromOtherThread(image));
        scope.Unlock(false);
        EXPECT_TRUE(lockableFromOtherThread(image));
        ASSERT_TRUE(scope.Lock(-1) && scope.Lock(-1));
        scope.Unlock(true);
        EXPECT_TRUE(lockableFromOtherThread(image));
        ASSERT_TRUE(scope.Lock(-1));
    }
    EXPECT_TRUE(lockableFromOtherThread(image));
}

TEST(Image, TheCachePagesOutReleasedHoldersAndALockBringsThemBack) {
    qvrTest::FakeImageCache cache;
    EImage image(EImage::Important);
    EImageData* picture = nullptr;
    {
        EImageLock scope(image);
        ASSERT_TRUE(scope.Lock(-1));
        scope.SetData(EImageData::New({6, 5}, EImageMemory::NoFreeing));
        picture = scope.GetData();
        EXPECT_FALSE(cache.FreeMemory(0)); // locked holders are out of reach
    }
    EXPECT_TRUE(cache.FreeMemory(0));
    EImageLock scope(image);
    ASSERT_TRUE(scope.Lock(-1));
    EXPECT_EQ(scope.GetData(), picture);
    scope.Unlock(false);

    cache.failRestore = true;
    EXPECT_FALSE(scope.Lock(-1));
    EXPECT_FALSE(image.Clear());
    cache.failRestore = false;
    EXPECT_TRUE(lockableFromOtherThread(image)); // the failed lock released the section
}

TEST(Image, ADestroyedHolderLeavesTheCache) {
    qvrTest::FakeImageCache cache;
    {
        EImage image(EImage::Discardable);
        EImageLock(image).Lock(-1);
        EXPECT_EQ(cache.released.size(), 1u);
    }
    EXPECT_TRUE(cache.released.empty());
}
