#include "ImagingTestSupport.h"

#include "imaging/EImage.h"
#include "imaging/EImageData.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

std::unique_ptr<EImageData> pictureOf(long width, long height) {
    return EImageData::New({width, height}, EImageMemory::NoFreeing);
}

// Tries a lock from another thread, as a second render thread would.
bool lockableFromOtherThread(EImage& image) {
    std::atomic<bool> locked{false};
    std::thread([&] {
        EImageLock other(image);
        locked = other.Lock(0);
    }).join();
    return locked;
}

} // namespace

TEST(Image, DataIsReachableOnlyWhileLocked) {
    EImage image(EImage::Important);
    EImageLock scope(image);
    auto rejected = scope.SetData(pictureOf(4, 3));
    EXPECT_TRUE(rejected); // not locked: the picture comes back
    EXPECT_EQ(scope.GetData(), nullptr);

    ASSERT_TRUE(scope.Lock(-1));
    EXPECT_EQ(scope.GetData(), nullptr);
    EXPECT_EQ(scope.SetData(std::move(rejected)), nullptr);
    ASSERT_NE(scope.GetData(), nullptr);
    EXPECT_EQ(image.GetSize(), (CSize{4, 3}));

    auto old = scope.SetData(nullptr);
    EXPECT_EQ(old->GetSize(), (CSize{4, 3}));
    EXPECT_EQ(image.GetSize(), (CSize{4, 3})); // the size outlives the picture
    scope.Unlock(false);
    EXPECT_EQ(scope.GetData(), nullptr);
}

TEST(Image, NestedLocksReleaseOnlyAtTheOutermostUnlockOrWithForce) {
    EImage image(EImage::Important);
    EImageLock scope(image);
    ASSERT_TRUE(scope.Lock(-1));
    ASSERT_TRUE(scope.Lock(0));
    scope.Unlock(false);
    EXPECT_TRUE(scope.IsLocked());
    EXPECT_FALSE(lockableFromOtherThread(image));
    scope.Unlock(false);
    EXPECT_FALSE(scope.IsLocked());
    EXPECT_TRUE(lockableFromOtherThread(image));

    ASSERT_TRUE(scope.Lock(-1));
    ASSERT_TRUE(scope.Lock(-1));
    scope.Unlock(true);
    EXPECT_FALSE(scope.IsLocked());
    EXPECT_TRUE(lockableFromOtherThread(image));
}

TEST(Image, TwoLockObjectsInOneThreadReEnterAndTheScopeReleases) {
    EImage image(EImage::Important | EImage::Discardable);
    {
        EImageLock first(image);
        EImageLock second(image);
        ASSERT_TRUE(first.Lock(-1));
        ASSERT_TRUE(second.Lock(0));
        first.Unlock(false);
        EXPECT_FALSE(lockableFromOtherThread(image));
    }
    EXPECT_TRUE(lockableFromOtherThread(image));
}

TEST(Image, ClearDropsThePicture) {
    EImage image(0);
    {
        EImageLock scope(image);
        ASSERT_TRUE(scope.Lock(-1));
        scope.SetData(pictureOf(2, 2));
    }
    EXPECT_TRUE(image.Clear());
    EImageLock scope(image);
    ASSERT_TRUE(scope.Lock(-1));
    EXPECT_EQ(scope.GetData(), nullptr);
}

TEST(Image, TheCacheSeesEveryLockReleaseAndDestruction) {
    qvrTest::FakeImageCache cache;
    {
        EImage image(EImage::Important);
        EImageLock scope(image);
        ASSERT_TRUE(scope.Lock(-1));
        ASSERT_TRUE(scope.Lock(-1));
        EXPECT_EQ(cache.restores, 1);
        scope.SetData(pictureOf(8, 8));
        scope.Unlock(false);
        EXPECT_EQ(cache.releases, 0);
        scope.Unlock(false);
        EXPECT_EQ(cache.releases, 1);
        EXPECT_EQ(cache.released.count(&image), 1u);
    }
    EXPECT_EQ(cache.forgets, 1);
    EXPECT_TRUE(cache.released.empty());
}

TEST(Image, APagedOutPictureComesBackAtTheNextLock) {
    qvrTest::FakeImageCache cache;
    EImage image(EImage::Important);
    EImageData* original = nullptr;
    {
        EImageLock scope(image);
        ASSERT_TRUE(scope.Lock(-1));
        scope.SetData(pictureOf(6, 5));
        original = scope.GetData();
    }
    EXPECT_TRUE(cache.FreeMemory(0));
    EImageLock scope(image);
    ASSERT_TRUE(scope.Lock(-1));
    EXPECT_EQ(scope.GetData(), original);
    EXPECT_EQ(image.GetSize(), (CSize{6, 5}));
}

TEST(Image, AFailedRestoreFailsTheLockAndReleasesTheSection) {
    qvrTest::FakeImageCache cache;
    cache.failRestore = true;
    EImage image(EImage::Important);
    EImageLock scope(image);
    EXPECT_FALSE(scope.Lock(-1));
    EXPECT_FALSE(scope.IsLocked());
    EXPECT_FALSE(image.Clear());
    cache.failRestore = false;
    EXPECT_TRUE(lockableFromOtherThread(image));
}
