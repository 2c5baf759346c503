#include "foundation/qvrCRegKey.h"
#include "foundation/ScratchDirectory.h"
#include "foundation/iDataBase.h"
#include "foundation/qvrString.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

namespace fs = std::filesystem;

namespace {

class RegistryTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(qvrCRegKey::OpenStore(dir.Path.string())); }
    std::string storeFile() const { return dir.File(qvrCRegKey::StoreFileName); }
    static qvrCRegKey open(std::string_view path, qvrCRegKey::Access access = qvrCRegKey::Access::Create) {
        qvrCRegKey key;
        key.Open(qvrCRegKey::Root(), path, access);
        return key;
    }

    ScratchDirectory dir{"registry"};
};

} // namespace

TEST_F(RegistryTest, ValuesSetAreInTheFileAndComeBackAfterARead) {
    qvrCRegKey proxy = open("Engines\\ProxyManager");
    ASSERT_TRUE(proxy.IsOpen());
    EXPECT_TRUE(proxy.SetLong("Max shrink factor", -7));
    EXPECT_TRUE(proxy.SetText("Proxy directory", "/data/my proxies\n{x}"));
    EXPECT_TRUE(proxy.SetBool("Max time unused (use)", false));

    std::string text = ScratchDirectory::ReadAll(storeFile());
    EXPECT_EQ(text.rfind(iDataBase::Header, 0), 0u);
    EXPECT_EQ(text.substr(text.size() - std::string(iDataBase::Trailer).size()), iDataBase::Trailer);
    EXPECT_NE(text.find("qvrTessarine$_database = V1.10\n"), std::string::npos);
    EXPECT_NE(text.find("Engines =\n"), std::string::npos);
    EXPECT_NE(text.find("ProxyManager =\n"), std::string::npos);
    EXPECT_FALSE(fs::exists(storeFile() + ".tmp"));

    ASSERT_TRUE(qvrCRegKey::OpenStore(dir.Path.string()));
    qvrCRegKey again = open("engines\\PROXYMANAGER", qvrCRegKey::Access::OpenExisting);
    ASSERT_TRUE(again.IsOpen());
    EXPECT_EQ(again.GetLong("Max shrink factor", 5), -7);
    EXPECT_EQ(again.GetText("proxy directory", ""), "/data/my proxies\n{x}");
    EXPECT_FALSE(again.GetBool("Max time unused (use)", true));
}

TEST_F(RegistryTest, MissingOrUnreadableValuesGiveTheDefaults) {
    qvrCRegKey missing = open("Dialogs\\Nowhere", qvrCRegKey::Access::OpenExisting);
    EXPECT_FALSE(missing.IsOpen());
    EXPECT_EQ(missing.GetLong("LoopPause", 12), 12);
    EXPECT_FALSE(missing.SetLong("LoopPause", 1));

    qvrCRegKey playback = open("Dialogs\\Sequence\\Playback");
    playback.SetText("Style", "forward");
    EXPECT_EQ(playback.GetLong("Style", 3), 3);
    EXPECT_TRUE(playback.GetBool("Style", true));
    EXPECT_EQ(playback.GetText("Start", "none"), "none");
    EXPECT_EQ(playback.GetText("", "none"), "none");
    EXPECT_FALSE(playback.SetText("", "x"));
}

TEST_F(RegistryTest, AKeyOpenedBelowAParentJoinsThePathsWithABackslash) {
    qvrCRegKey dialogs = open("\\Dialogs\\");
    qvrCRegKey playback;
    ASSERT_TRUE(playback.Open(dialogs, "Sequence\\Playback"));
    EXPECT_EQ(playback.GetPath(), "Dialogs\\Sequence\\Playback");
    playback.SetLong("Start", 25);
    EXPECT_EQ(open("Dialogs\\Sequence\\Playback").GetLong("Start", 0), 25);

    qvrCRegKey remote = qvrCRegKey::Root("\\\\studio-2");
    qvrCRegKey sameKey;
    ASSERT_TRUE(sameKey.Open(remote, "Dialogs\\Sequence\\Playback", qvrCRegKey::Access::OpenExisting));
    EXPECT_EQ(sameKey.GetLong("Start", 0), 25);
}

TEST_F(RegistryTest, ANameIsEitherAValueOrASubKey) {
    qvrCRegKey renderer = open("Dialogs\\Renderer");
    renderer.SetBool("Saver", true);
    qvrCRegKey below;
    EXPECT_FALSE(below.Open(renderer, "Saver\\StatusWindow"));
    qvrCRegKey saver = open("Dialogs\\Renderer\\Vitrea");
    saver.SetText("StatusWindow", "1 2 3 4");
    EXPECT_FALSE(renderer.SetText("Vitrea", "overwrite the key"));
    EXPECT_EQ(saver.GetText("StatusWindow", ""), "1 2 3 4");
}

TEST_F(RegistryTest, DeletingASubTreeTakesEverythingBelowAndIsKeptInTheFile) {
    qvrCRegKey root = qvrCRegKey::Root();
    open("Dialogs\\Sequence\\Playback").SetLong("Start", 1);
    open("Dialogs\\Sequence\\Other").SetLong("Start", 2);
    open("Dialogs\\MatrixEffects").SetText("LastFile", "a.mfx");
    qvrCRegKey dialogs = open("Dialogs");

    EXPECT_FALSE(dialogs.DeleteSubTree(""));
    EXPECT_TRUE(dialogs.DeleteSubTree("SEQUENCE"));
    EXPECT_FALSE(dialogs.DeleteSubTree("Sequence"));
    qvrCRegKey effects = open("Dialogs\\MatrixEffects");
    EXPECT_FALSE(effects.DeleteSubTree("LastFile")) << "a value is no sub-tree";
    EXPECT_TRUE(effects.DeleteValue("LastFile"));
    EXPECT_FALSE(effects.DeleteValue("LastFile"));

    open("Engines").SetLong("Kept", 1);
    ASSERT_TRUE(qvrCRegKey::OpenStore(dir.Path.string()));
    EXPECT_FALSE(open("Dialogs\\Sequence", qvrCRegKey::Access::OpenExisting).IsOpen());
    EXPECT_EQ(open("Dialogs\\MatrixEffects").GetText("LastFile", "gone"), "gone");
    EXPECT_EQ(open("Engines").GetLong("Kept", 0), 1);
}

TEST_F(RegistryTest, AFailedWriteLeavesThePreviousFileWhole) {
    qvrCRegKey key = open("Engines\\ProxyManager");
    ASSERT_TRUE(key.SetLong("Ideal proxy wid", 720));
    const std::string before = ScratchDirectory::ReadAll(storeFile());
    fs::create_directories(storeFile() + ".tmp/blocker");
    EXPECT_FALSE(key.SetLong("Ideal proxy wid", 1024));
    EXPECT_EQ(ScratchDirectory::ReadAll(storeFile()), before);
    EXPECT_EQ(key.GetLong("Ideal proxy wid", 0), 1024) << "the value stays in memory";
}

TEST_F(RegistryTest, AFileThatIsNoDatabaseGivesAnEmptyStore) {
    open("Engines").SetLong("Kept", 1);
    std::ofstream(storeFile(), std::ios::binary) << "   Something else = V1\n    {\n      A := 1\n    }\n";
    EXPECT_FALSE(qvrCRegKey::OpenStore(dir.Path.string()));
    EXPECT_FALSE(open("Engines", qvrCRegKey::Access::OpenExisting).IsOpen());
}

TEST_F(RegistryTest, KeysSetFromSeveralThreadsAreAllKept) {
    constexpr int threadCount = 4;
    constexpr int valueCount = 40;
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back([t] {
            qvrCRegKey key = open(qvrFormat("Threads\\T%d", t));
            for (int i = 0; i < valueCount; ++i)
                key.SetLong(qvrFormat("V%d", i), t * 1000 + i);
        });
    for (std::thread& thread : threads)
        thread.join();
    ASSERT_TRUE(qvrCRegKey::OpenStore(dir.Path.string()));
    for (int t = 0; t < threadCount; ++t) {
        qvrCRegKey key = open(qvrFormat("Threads\\T%d", t));
        for (int i = 0; i < valueCount; ++i)
            EXPECT_EQ(key.GetLong(qvrFormat("V%d", i), -1), t * 1000 + i);
    }
}
