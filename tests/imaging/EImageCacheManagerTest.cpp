#include "imaging/EImageCacheManager.h"

#include "ImagingTestSupport.h"
#include "foundation/ELog.h"
#include "foundation/EPrefsEImage.h"
#include "foundation/EPrefsLog.h"
#include "foundation/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>

namespace {

// A manager that sees the memory figures the test gives it, installed for its lifetime.
class TestCacheManager : public EImageCacheManager {
public:
    TestCacheManager() : previous(Install(this)) {}
    ~TestCacheManager() override { Install(previous); }

    std::function<long()> physical = [] { return 1L << 30; };
    long pageFile = 0;

protected:
    bool doQueryMemoryStatus(EMemoryStatus& status) override {
        status = {physical(), pageFile};
        return true;
    }

private:
    EImageCache* previous;
};

class CacheManager : public ::testing::Test {
protected:
    void SetUp() override {
        EPrefsEImage::SetCacheDirectory(dir.File("virtual"));
        EPrefsLog::StoreSettings(dir.File("test.log"), false, ELog::LevelMessage);
    }
    void TearDown() override {
        EPrefsEImage::Get().Reset();
        EPrefsLog::Get().Reset();
    }

    // Gives the holder a picture and releases it into the cache.
    static void Release(EImage& holder, std::unique_ptr<EImageData> picture) {
        EImageLock scope(holder);
        ASSERT_TRUE(scope.Lock(-1));
        scope.SetData(std::move(picture));
    }
    static bool OnDisk(const EImage& holder) {
        return std::filesystem::exists(
            EImageCacheManager::VirtualFileName(EImageCacheManager::TokenOf(holder)));
    }
    bool logged(const std::string& text) const {
        return ScratchDirectory::ReadAll(dir.File("test.log")).find(text) != std::string::npos;
    }

    ScratchDirectory dir{"cache"};
    TestCacheManager cache;
    qvrTest::TraceCapture trace;
};

constexpr long Need10x10 = 10 * 10 * 4 + 1056;

} // namespace

TEST_F(CacheManager, EvictsFromTheOldestReleaseUntilMoreThanTheRequestIsFree) {
    EImage first(3), second(3), third(3);
    for (EImage* holder : {&third, &first, &second})
        Release(*holder, qvrTest::MakeNoise(10, 10, 1));
    Release(third, qvrTest::MakeNoise(10, 10, 1)); // released again: newest now

    EXPECT_TRUE(cache.FreeMemory(Need10x10)); // the first alone only reaches the request
    EXPECT_TRUE(OnDisk(first) && OnDisk(second));
    EXPECT_FALSE(OnDisk(third));
    EXPECT_TRUE(
        logged("The cache manager has successfully made 1456 bytes\n       physical memory available."));

    EXPECT_TRUE(cache.FreeMemory(0)); // the third is still there
    EXPECT_TRUE(OnDisk(third));
    EXPECT_FALSE(cache.FreeMemory(0)); // nothing left
}

TEST_F(CacheManager, APagedPictureComesBackWholeAtTheNextLock) {
    EImage holder(EImage::Important);
    auto picture = qvrTest::MakeNoise(7, 5, 42);
    picture->position = {-3, 9};
    picture->opacity = 77;
    const auto pixels = qvrTest::PixelsOf(*picture);
    Release(holder, std::move(picture));
    ASSERT_TRUE(cache.FreeMemory(0));
    EXPECT_TRUE(logged("Image data cached."));

    EImageLock scope(holder);
    ASSERT_TRUE(scope.Lock(-1));
    ASSERT_NE(scope.GetData(), nullptr);
    EXPECT_EQ(qvrTest::PixelsOf(*scope.GetData()), pixels);
    EXPECT_EQ(scope.GetData()->position, (CPoint{-3, 9}));
    EXPECT_EQ(scope.GetData()->opacity, 77);
    EXPECT_TRUE(OnDisk(holder)); // the file stays after a restore
}

TEST_F(CacheManager, FlagsAndTheDiskSettingDecideWhatIsWrittenThrownAwayOrKept) {
    EImage discardable(EImage::Discardable), important(EImage::Important), both(3), untouched(0);
    EPrefsEImage::SetCaching(true, false);
    for (EImage* holder : {&discardable, &important, &both, &untouched})
        Release(*holder, qvrTest::MakeNoise(10, 10, 2));

    EXPECT_TRUE(cache.FreeMemory(2 * Need10x10));
    EXPECT_FALSE(logged("successfully")); // the important picture's size didn't count
    EXPECT_FALSE(cache.FreeMemory(0));
    for (EImage* holder : {&discardable, &both, &important, &untouched}) {
        const bool kept = holder == &important || holder == &untouched;
        EImageLock scope(*holder);
        ASSERT_TRUE(scope.Lock(-1));
        EXPECT_EQ(scope.GetData() != nullptr, kept);
        EXPECT_EQ(holder->GetSize(), (CSize{10, 10}));
        EXPECT_FALSE(OnDisk(*holder));
    }
}

TEST_F(CacheManager, DiskFailuresLeaveThePictureInMemoryOrFailEveryLockUntilTheHolderDies) {
    auto holder = std::make_unique<EImage>(EImage::Important);
    Release(*holder, qvrTest::MakeNoise(4, 4, 4));
    qvrTest::WriteBytes(dir.File("virtual"), {1}); // a file where the directory should be
    EXPECT_FALSE(cache.FreeMemory(0));
    EXPECT_TRUE(logged("failed to cache image data to the file system."));
    std::filesystem::remove(dir.File("virtual"));
    ASSERT_TRUE(cache.FreeMemory(0)); // the picture was still there

    const std::string file = EImageCacheManager::VirtualFileName(EImageCacheManager::TokenOf(*holder));
    const auto bytes = qvrTest::ReadBytes(file);
    std::filesystem::remove(file);
    EXPECT_FALSE(EImageLock(*holder).Lock(-1));
    EXPECT_FALSE(EImageLock(*holder).Lock(-1));
    EXPECT_TRUE(logged("failed to restore cached data from the file system.\n       File:   " + file));
    qvrTest::WriteBytes(file, bytes);
    holder.reset();
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(CacheManager, AvailableMemoryFollowsThePreferences) {
    cache.physical = [] { return 1000L; };
    cache.pageFile = 500;
    EXPECT_EQ(cache.AvailableMemory(), 996); // the reserve counts as bytes
    EPrefsEImage::SetMemoryControl(true, 4, false);
    EXPECT_EQ(cache.AvailableMemory(), 1496);
    EPrefsEImage::SetMemoryControl(true, 2000, false);
    EXPECT_EQ(cache.AvailableMemory(), 0);
    EPrefsEImage::SetMemoryControl(false, 4, true);
    EXPECT_EQ(cache.AvailableMemory(), EImageCacheManager::Unlimited);
}

TEST_F(CacheManager, ARestoreShortOfMemoryFreesOthersFirstAndFailsIfThatDoesNotHelp) {
    EImage holder(EImage::Important), other(EImage::Discardable);
    Release(holder, qvrTest::MakeNoise(10, 10, 5));
    ASSERT_TRUE(cache.FreeMemory(0));
    const unsigned long token = EImageCacheManager::TokenOf(holder);
    cache.physical = [] { return 100L; };
    EXPECT_EQ(cache.VirtualLoad(token, false), nullptr);
    EXPECT_TRUE(logged("(type: discardable) from the file system."));
    EXPECT_FALSE(EImageLock(holder).Lock(-1)); // nothing to free
    EXPECT_TRUE(logged("(type: important) from the file system."));
    ASSERT_FALSE(trace.lines.empty());
    EXPECT_NE(trace.lines.back().find("bytes (memory-freeing HAS BEEN tried) !\n"), std::string::npos);

    Release(other, qvrTest::MakeNoise(10, 10, 6));
    int queries = 0;
    cache.physical = [&queries] { return ++queries < 2 ? 100L : 1L << 30; };
    EXPECT_TRUE(EImageLock(holder).Lock(-1)); // the other holder made room
    EImageLock scope(other);
    ASSERT_TRUE(scope.Lock(-1));
    EXPECT_EQ(scope.GetData(), nullptr);
}

TEST_F(CacheManager, RenderThreadsFindTheirPicturesWhilePagingGoesOn) {
    constexpr int HolderCount = 6;
    std::vector<std::unique_ptr<EImage>> holders;
    std::vector<std::atomic<std::uint32_t>> stamps(HolderCount);
    for (int i = 0; i < HolderCount; ++i)
        holders.push_back(std::make_unique<EImage>(EImage::Important));
    std::atomic<int> mismatches{0};
    auto render = [&](std::uint32_t thread) {
        for (std::uint32_t round = 1; round <= 60; ++round) {
            const auto i = static_cast<size_t>((round + thread) % HolderCount);
            EImageLock scope(*holders[i]);
            ASSERT_TRUE(scope.Lock(-1));
            EImageData* picture = scope.GetData();
            if (picture ? picture->GetRow(7)[5] != stamps[i] : stamps[i] != 0) ++mismatches;
            auto next = EImageData::New({8, 8}, EImageMemory::MayFree);
            stamps[i] = thread << 16 | round;
            next->Fill(stamps[i]);
            scope.SetData(std::move(next));
        }
    };
    std::atomic<bool> stop{false};
    std::thread pager([&] {
        while (!stop)
            cache.FreeMemory(0);
    });
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < 3; ++t)
        threads.emplace_back(render, t);
    for (auto& thread : threads)
        thread.join();
    stop = true;
    pager.join();
    EXPECT_EQ(mismatches, 0);
}
