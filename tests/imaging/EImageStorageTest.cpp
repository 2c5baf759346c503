#include "imaging/EImageStorage.h"

#include "ImagingTestSupport.h"
#include "foundation/EEnvironment.h"
#include "foundation/ELog.h"
#include "foundation/EPrefsLog.h"
#include "foundation/ScratchDirectory.h"
#include "foundation/TraceCapture.h"
#include "foundation/qvrCRegKey.h"
#include "model/ScriptedUserInterface.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

// A word that tells where it came from: 0xFF, then x in 10 bits and y in 10 bits.
std::unique_ptr<EImageData> MakeCoordinates(long width, long height) {
    std::vector<std::uint32_t> words;
    for (long y = 0; y < height; ++y)
        for (long x = 0; x < width; ++x)
            words.push_back(0xFF000000u | static_cast<std::uint32_t>(x << 10 | y));
    return qvrTest::MakePicture(width, height, words);
}

// Sets both access and change time back: the later of them counts as the last use.
void setAge(const std::string& path, std::chrono::hours age) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(
        std::chrono::system_clock::now().time_since_epoch() - age);
    const timespec times[2] = {{seconds.count(), 0}, {seconds.count(), 0}};
    ::utimensat(AT_FDCWD, path.c_str(), times, 0);
}

class ImageStorageTest : public ::testing::Test {
protected:
    void SetUp() override {
        EPrefsLog::StoreSettings(home.File("storage.log"), false, ELog::LevelMessage);
        EProxySettings settings;
        settings.idealProxySize = {100, 100};
        settings.proxyDirectory = home.File("proxies");
        storage.SetSettings(settings);
        storage.EmptyInfoCache();
        fs::create_directories(footage);
    }
    void TearDown() override {
        storage.EmptyInfoCache();
        EPrefsLog::Get().Reset();
    }

    // A 400 by 300 original, whose proxy is 100 by 75 (shrink factor 4).
    void writeOriginal(const std::string& name = "orig.qts") {
        original = MakeCoordinates(400, 300);
        saveAs(*original, footage + "/" + name);
    }
    static void saveAs(const EImageData& picture, const std::string& path) {
        EImageFileResult result;
        ASSERT_TRUE(EImageFileFormat::Save(picture, path, result)) << result.text;
    }
    std::string proxyPath(CSize size, const std::string& name = "orig.qts") const {
        return home.File("proxies") + footage +
               qvrFormat("/pxy(%s)_%ldx%ld.qts", name.c_str(), size.cx, size.cy);
    }
    std::unique_ptr<EImageData> load(CRect rect, EImageSource source, CRect& delivered, CSize hint = {}) {
        EImageFileResult result;
        auto picture = storage.LoadImage(footage, "orig.qts", {rect, source, hint}, delivered, result);
        EXPECT_TRUE(picture) << result.text;
        return picture;
    }
    std::vector<std::uint32_t> expectedProxy() const {
        return qvrTest::PixelsOf(*original->Resized({100, 75}, EImageFilter::Fast));
    }
    std::string logText() const { return ScratchDirectory::ReadAll(home.File("storage.log")); }

    ScratchDirectory home{"storage"};
    std::string footage = home.File("footage");
    EImageStorage& storage = EImageStorage::Get();
    std::unique_ptr<EImageData> original;
};

} // namespace

TEST(ProxySettings, ShrinkFactorFollowsTheIdealSizeUpToTheMaximum) {
    EProxySettings settings;
    std::uint32_t factor = 0;
    EXPECT_EQ(settings.GetProxySize({2048, 1556}, factor), (CSize{683, 519}));
    EXPECT_EQ(factor, 3u);
    EXPECT_EQ(settings.GetProxySize({720, 576}, factor), (CSize{720, 576}));
    EXPECT_EQ(factor, 1u);
    EXPECT_EQ(settings.GetProxySize({721, 577}, factor), (CSize{721, 577}));
    EXPECT_EQ(factor, 1u);
    EXPECT_EQ(settings.GetProxySize({3840, 2160}, factor), (CSize{768, 432}));
    EXPECT_EQ(factor, 5u);
    settings.maxShrinkFactor = 2;
    EXPECT_EQ(settings.GetProxySize({3840, 2160}, factor), (CSize{1920, 1080}));
}

TEST(ProxySettings, ReadingMovesValuesIntoRangeAndFilteringWithoutRulesIsNoCleanUp) {
    qvrCRegKey root = qvrCRegKey::Root();
    root.DeleteSubTree(EProxySettings::RegistryKey);
    qvrCRegKey key;
    ASSERT_TRUE(key.Open(root, EProxySettings::RegistryKey));
    key.SetLong("Max hrs unused (value)", 30);
    key.SetLong("Max shrink factor", 0);
    key.SetLong("Ideal proxy wid", 100000);
    key.SetLong("Proxy clean-up mode", 2);
    key.SetBool("Max time unused (use)", false);
    EProxySettings settings;
    settings.Read(key);
    EXPECT_EQ(settings.maxHoursUnused, 23);
    EXPECT_EQ(settings.maxShrinkFactor, 1);
    EXPECT_EQ(settings.idealProxySize.cx, 25000);
    EXPECT_EQ(settings.cleanUpMode, EProxyCleanUp::None);
    EXPECT_TRUE(settings.Write(key));
    EXPECT_EQ(key.GetLong("Proxy clean-up mode", -1), 1);
    // Defaults are what a missing value gives: they stay out of the store.
    EXPECT_EQ(key.GetText("Max days unused (value)", "missing"), "missing");
    root.DeleteSubTree(EProxySettings::RegistryKey);
}

TEST(ProxyFileName, SourceDirectoryBecomesAPathBelowTheProxyDirectory) {
    using Proxy = EImageStorage::ImageFileInfo::ProxyInfo;
    const CSize size{10, 8};
    EXPECT_EQ(Proxy::GenerateFileName("/footage/a", "x.tga", size), "footage/a/pxy(x.tga)_10x8.qts");
    EXPECT_EQ(Proxy::GenerateFileName("//server/share", "x.tga", size), "server/share/pxy(x.tga)_10x8.qts");
    EXPECT_EQ(Proxy::GenerateFileName("../up", "x.tga", size), "/up/pxy(x.tga)_10x8.qts");
    EXPECT_EQ(Proxy::GenerateFileName("./here", "x.tga", size), "/here/pxy(x.tga)_10x8.qts");
    EXPECT_EQ(Proxy::GenerateFileName(".hidden", "x.tga", size), ".hidden/pxy(x.tga)_10x8.qts");
    EXPECT_EQ(Proxy::GenerateFileName("c:/x", "x.tga", size), "c/x/pxy(x.tga)_10x8.qts");
    EXPECT_EQ(Proxy::GenerateFileName("", "x.tga", size), "pxy(x.tga)_10x8.qts");
}

TEST_F(ImageStorageTest, FirstProxyLoadMakesTheProxyFileAndWidensTheRectangleToItsGrid) {
    writeOriginal();
    CRect delivered;
    auto whole = load({0, 0, 400, 300}, EImageSource::Proxy, delivered);
    EXPECT_EQ(delivered, (CRect{0, 0, 400, 300}));
    EXPECT_EQ(qvrTest::PixelsOf(*whole), expectedProxy());
    EXPECT_TRUE(fs::exists(proxyPath({100, 75})));

    auto part = load({5, 6, 21, 30}, EImageSource::Proxy, delivered);
    EXPECT_EQ(delivered, (CRect{8, 8, 24, 32}));
    EXPECT_EQ(part->GetSize(), (CSize{4, 6}));
}

TEST_F(ImageStorageTest, EmptySpanAtProxyScaleGrowsByOneColumn) {
    writeOriginal();
    CRect delivered;
    auto atLeftEdge = load({0, 0, 0, 40}, EImageSource::Proxy, delivered);
    EXPECT_EQ(delivered, (CRect{0, 0, 4, 40}));
    EXPECT_EQ(atLeftEdge->GetSize(), (CSize{1, 10}));
    load({40, 0, 40, 40}, EImageSource::Proxy, delivered);
    EXPECT_EQ(delivered, (CRect{36, 0, 40, 40}));
}

TEST_F(ImageStorageTest, OriginalsLoadExactlyAndTheSizeHintScales) {
    writeOriginal();
    CRect delivered;
    auto part = load({10, 20, 30, 25}, EImageSource::Original, delivered);
    EXPECT_EQ(delivered, (CRect{10, 20, 30, 25}));
    EXPECT_EQ(qvrTest::PixelsOf(*part), qvrTest::PixelsOf(*original->Extract({10, 20, 30, 25})));
    auto shown = load({0, 0, 400, 300}, EImageSource::Proxy, delivered, {50, 40});
    EXPECT_EQ(shown->GetSize(), (CSize{50, 40}));
}

TEST_F(ImageStorageTest, SizeComesFromTheCacheUntilItIsEmptied) {
    writeOriginal();
    CSize size;
    EImageFileResult result;
    ASSERT_TRUE(storage.QueryImageInfo(footage, "orig.qts", EProxyCreation::No, size, result));
    EXPECT_EQ(size, (CSize{400, 300}));
    saveAs(*MakeCoordinates(20, 10), footage + "/orig.qts");
    storage.QueryImageInfo(footage, "orig.qts", EProxyCreation::No, size, result);
    EXPECT_EQ(size, (CSize{400, 300}));
    storage.EmptyInfoCache();
    storage.QueryImageInfo(footage, "orig.qts", EProxyCreation::Yes, size, result);
    EXPECT_EQ(size, (CSize{20, 10}));
    EXPECT_TRUE(fs::exists(proxyPath({20, 10})));
    EXPECT_NE(logText().find("Cache has 1 entries."), std::string::npos);
}

TEST_F(ImageStorageTest, FailuresNameTheirCause) {
    CSize size;
    CRect delivered;
    EImageFileResult unknown, missing, unnamed;
    std::ofstream(footage + "/notes.txt") << "text";
    EXPECT_FALSE(storage.QueryImageInfo(footage, "notes.txt", EProxyCreation::No, size, unknown));
    EXPECT_EQ(unknown.text, "Unknown file format");
    EXPECT_FALSE(storage.QueryImageInfo(footage, "gone.qts", EProxyCreation::No, size, missing));
    EXPECT_EQ(missing.number, EImageFileError::ReadError);
    EXPECT_FALSE(storage.LoadImage(footage, "", {}, delivered, unnamed));
    EXPECT_EQ(unnamed.text, "Bad function call; please contact author");
    EXPECT_EQ(storage.GetInfoCacheCount(), 0);
}

TEST_F(ImageStorageTest, ProxyIsReusedWhileUpToDateAndOfTheRightSize) {
    writeOriginal();
    setAge(footage + "/orig.qts", std::chrono::hours(1));
    fs::create_directories(fs::path(proxyPath({100, 75})).parent_path());
    auto marker = qvrTest::MakePicture(1, 1, {0xFF123456})->Resized({100, 75}, EImageFilter::Fast);
    saveAs(*marker, proxyPath({100, 75}));
    CRect delivered;
    EXPECT_EQ(qvrTest::PixelsOf(*load({0, 0, 400, 300}, EImageSource::Proxy, delivered)),
              qvrTest::PixelsOf(*marker));
}

TEST_F(ImageStorageTest, ProxyOlderThanTheOriginalOrOfAnotherSizeIsMadeAnew) {
    writeOriginal();
    auto marker = qvrTest::MakePicture(1, 1, {0xFF123456})->Resized({100, 75}, EImageFilter::Fast);
    fs::create_directories(fs::path(proxyPath({100, 75})).parent_path());
    saveAs(*marker, proxyPath({100, 75}));
    setAge(proxyPath({100, 75}), std::chrono::hours(1));
    CRect delivered;
    EXPECT_EQ(qvrTest::PixelsOf(*load({0, 0, 400, 300}, EImageSource::Proxy, delivered)), expectedProxy());
    EXPECT_NE(logText().find("is out of date - generating new one."), std::string::npos);

    storage.EmptyInfoCache();
    saveAs(*qvrTest::MakeNoise(50, 50, 3), proxyPath({100, 75}));
    EXPECT_EQ(qvrTest::PixelsOf(*load({0, 0, 400, 300}, EImageSource::Proxy, delivered)), expectedProxy());
}

TEST_F(ImageStorageTest, UnreadableProxyIsRebuiltOnceAndASecondFailureIsReported) {
    writeOriginal();
    CRect delivered;
    load({0, 0, 400, 300}, EImageSource::Proxy, delivered);
    storage.EmptyInfoCache();
    fs::resize_file(proxyPath({100, 75}), 24 + 75 * 4 + 40);
    TraceCapture trace;
    EXPECT_EQ(qvrTest::PixelsOf(*load({0, 0, 400, 300}, EImageSource::Proxy, delivered)), expectedProxy());
    EXPECT_TRUE(trace.Contains(" ... since we have file problems, we re-create the file.\n"));

    storage.EmptyInfoCache();
    fs::resize_file(proxyPath({100, 75}), 24 + 75 * 4 + 40);
    EImageFileResult result;
    CSize size;
    ASSERT_TRUE(storage.QueryImageInfo(footage, "orig.qts", EProxyCreation::No, size, result));
    fs::remove(footage + "/orig.qts");
    EXPECT_FALSE(storage.LoadImage(footage, "orig.qts", {{0, 0, 400, 300}, EImageSource::Proxy, {}},
                                   delivered, result));
    EXPECT_EQ(result.text, "Error while reading file");
}

TEST_F(ImageStorageTest, ProxyDirectoryThatCannotBeMadeFallsBackToTheDefault) {
    ASSERT_TRUE(EEnvironment::Get().Gather());
    std::ofstream(home.File("plain-file")) << "x";
    qvrCRegKey key;
    ASSERT_TRUE(key.Open(qvrCRegKey::Root(), EProxySettings::RegistryKey));
    key.SetText("Proxy directory", home.File("plain-file") + "/proxies/");
    storage.LoadSettings();
    EXPECT_EQ(storage.GetProxyDirectory(), EProxySettings::DefaultDirectory());
    EXPECT_EQ(key.GetText("Proxy directory", ""), EProxySettings::DefaultDirectory());
    EXPECT_NE(logText().find("Can't access proxy directory \"" + home.File("plain-file") + "/proxies\""),
              std::string::npos);
    qvrCRegKey::Root().DeleteSubTree(EProxySettings::RegistryKey);
}

// ------------------------------------------------------------ the directory

namespace {

class ProxyDirectoryTest : public ImageStorageTest {
protected:
    std::string makeFile(const std::string& name, std::uintmax_t length, std::chrono::hours age) {
        const std::string path = home.File("proxies/" + name);
        fs::create_directories(fs::path(path).parent_path());
        std::ofstream(path).close();
        fs::resize_file(path, length);
        setAge(path, age);
        return path;
    }
    void useRules(bool time, bool diskUse) {
        EProxySettings settings = storage.GetSettings();
        settings.useMaxTimeUnused = time;
        settings.useMaxDiskSpaceUsed = diskUse;
        settings.maxDiskSpaceUsed = 1;
        storage.SetSettings(settings);
    }
};

} // namespace

TEST_F(ProxyDirectoryTest, FilesUnusedForLongerThanAllowedGoWhateverTheirSize) {
    const std::string old = makeFile("a/old.qts", 10, std::chrono::hours(7 * 24));
    const std::string recent = makeFile("a/b/recent.qts", 10, std::chrono::hours(1));
    useRules(true, false);
    EXPECT_TRUE(storage.FilterProxyDir(EProxyConfirmation::No));
    EXPECT_FALSE(fs::exists(old));
    EXPECT_TRUE(fs::exists(recent));
    EXPECT_NE(logText().find("Proxy directory emptied !"), std::string::npos);
}

TEST_F(ProxyDirectoryTest, DiskUseAboveTheLimitDeletesTheLeastRecentlyUsedFirst) {
    const std::string oldest = makeFile("oldest.qts", 600000, std::chrono::hours(3));
    const std::string middle = makeFile("x/middle.qts", 600000, std::chrono::hours(2));
    const std::string newest = makeFile("newest.qts", 600000, std::chrono::hours(1));
    useRules(false, true);
    EXPECT_TRUE(storage.FilterProxyDir(EProxyConfirmation::No));
    EXPECT_FALSE(fs::exists(oldest));
    EXPECT_FALSE(fs::exists(middle));
    EXPECT_FALSE(fs::exists(home.File("proxies/x")));
    EXPECT_TRUE(fs::exists(newest));

    EProxyDirectoryUsage usage;
    ASSERT_TRUE(storage.QueryProxyDirSize(usage));
    EXPECT_EQ(usage.fileCount, 1);
    EXPECT_EQ(usage.bytes, 600000u);
}

TEST_F(ProxyDirectoryTest, FilterWithoutRulesDoesNothing) {
    const std::string old = makeFile("old.qts", 10, std::chrono::hours(1000));
    useRules(false, false);
    TraceCapture trace;
    EXPECT_TRUE(storage.FilterProxyDir(EProxyConfirmation::No));
    EXPECT_TRUE(fs::exists(old));
    EXPECT_TRUE(trace.Contains("*** NOTE[EImageStorage::FilterProxyDir()]: Nothing to do.\n"));
}

TEST_F(ProxyDirectoryTest, EmptyingDeletesEverythingUnlessTheUserDeclines) {
    makeFile("a/b/one.qts", 10, std::chrono::hours(1));
    makeFile("two.qts", 10, std::chrono::hours(1));
    {
        ScriptedUserInterface user;
        user.Answer = IDNO;
        EXPECT_FALSE(storage.EmptyProxyDir(EProxyConfirmation::Yes));
        EXPECT_EQ(user.Messages.size(), 1u);
    }
    EXPECT_TRUE(fs::exists(home.File("proxies/two.qts")));
    EXPECT_TRUE(storage.EmptyProxyDir(EProxyConfirmation::No));
    EXPECT_TRUE(fs::is_empty(home.File("proxies")));
    EXPECT_NE(logText().find("Proxy directory empties !"), std::string::npos);
}

TEST_F(ProxyDirectoryTest, MovingCopiesTheProxiesAndDeletesTheOldOnes) {
    makeFile("a/one.qts", 10, std::chrono::hours(1));
    const std::string target = home.File("moved");
    ASSERT_TRUE(storage.MoveProxyDir(target));
    EXPECT_EQ(storage.GetProxyDirectory(), target);
    EXPECT_TRUE(fs::exists(target + "/a/one.qts"));
    EXPECT_FALSE(fs::exists(home.File("proxies/a/one.qts")));
    qvrCRegKey::Root().DeleteSubTree(EProxySettings::RegistryKey);
}
