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
    void reread() { ASSERT_TRUE(qvrCRegKey::OpenStore(dir.Path.string())); }

    ScratchDirectory dir{"registry"};
};

} // namespace

TEST_F(RegistryTest, ValuesSetAreInTheFileAndComeBackAfterARead) {
    qvrCRegKey proxy = open("Engines\\ProxyManager");
    EXPECT_TRUE(proxy.SetLong("Max shrink factor", -7));
    EXPECT_TRUE(proxy.SetText("Proxy directory", "/data/my proxies\n{x}"));
    EXPECT_TRUE(proxy.SetBool("Max time unused (use)", false));

    std::string text = ScratchDirectory::ReadAll(storeFile());
    EXPECT_EQ(text.rfind(iDataBase::Header, 0), 0u);
    EXPECT_EQ(text.substr(text.size() - std::string(iDataBase::Trailer).size()), iDataBase::Trailer);
    EXPECT_NE(text.find("   qvrTessarine$_database = V1.10\n"), std::string::npos);
    EXPECT_NE(text.find("\n      Engines =\n       {\n         ProxyManager =\n"), std::string::npos);
    EXPECT_FALSE(fs::exists(storeFile() + ".tmp"));

    reread();
    qvrCRegKey again = open("engines\\PROXYMANAGER", qvrCRegKey::Access::OpenExisting);
    ASSERT_TRUE(again.IsOpen());
    EXPECT_EQ(again.GetLong("Max shrink factor", 5), -7);
    EXPECT_EQ(again.GetText("proxy directory", ""), "/data/my proxies\n{x}");
    EXPECT_FALSE(again.GetBool("Max time unused (use)", true));
}

TEST_F(RegistryTest, MissingBadOrMisplacedValuesGiveTheDefaults) {
    qvrCRegKey missing = open("Dialogs\\Nowhere", qvrCRegKey::Access::OpenExisting);
    EXPECT_FALSE(missing.IsOpen());
    EXPECT_EQ(missing.GetLong("LoopPause", 12), 12);
    EXPECT_FALSE(missing.SetLong("LoopPause", 1));

    qvrCRegKey renderer = open("Dialogs\\Renderer");
    renderer.SetText("Style", "forward");
    EXPECT_EQ(renderer.GetLong("Style", 3), 3);
    EXPECT_TRUE(renderer.GetBool("Style", true));
    EXPECT_FALSE(renderer.SetText("", "x"));

    qvrCRegKey below;
    EXPECT_FALSE(below.Open(renderer, "Style\\StatusWindow")) << "a value can't hold keys";
    open("Dialogs\\Renderer\\Saver").SetText("StatusWindow", "1 2 3 4");
    EXPECT_FALSE(renderer.SetText("Saver", "overwrite the key"));
    EXPECT_EQ(renderer.GetText("Saver", "a key is no value"), "a key is no value");
}

TEST_F(RegistryTest, AKeyOpenedBelowAParentJoinsThePathsWithABackslash) {
    qvrCRegKey dialogs = open("\\Dialogs\\");
    qvrCRegKey playback;
    ASSERT_TRUE(playback.Open(dialogs, "Sequence\\Playback"));
    EXPECT_EQ(playback.GetPath(), "Dialogs\\Sequence\\Playback");
    playback.SetLong("Start", 25);

    qvrCRegKey sameKey;
    ASSERT_TRUE(sameKey.Open(qvrCRegKey::Root("\\\\studio-2"), "Dialogs\\Sequence\\Playback",
                             qvrCRegKey::Access::OpenExisting));
    EXPECT_EQ(sameKey.GetLong("Start", 0), 25);
}

TEST_F(RegistryTest, DeletingASubTreeTakesEverythingBelowAndIsKeptInTheFile) {
    open("Dialogs\\Sequence\\Playback").SetLong("Start", 1);
    open("Dialogs\\Sequence\\Other").SetLong("Start", 2);
    qvrCRegKey effects = open("Dialogs\\MatrixEffects");
    effects.SetText("LastFile", "a.mfx");
    effects.SetText("Kept", "yes");
    qvrCRegKey dialogs = open("Dialogs");

    EXPECT_FALSE(dialogs.DeleteSubTree("")) << "a key can't delete itself";
    EXPECT_TRUE(dialogs.DeleteSubTree("SEQUENCE"));
    EXPECT_FALSE(effects.DeleteSubTree("LastFile")) << "a value is no sub-tree";
    EXPECT_TRUE(effects.DeleteValue("LastFile"));

    reread();
    EXPECT_FALSE(open("Dialogs\\Sequence", qvrCRegKey::Access::OpenExisting).IsOpen());
    EXPECT_EQ(effects.GetText("LastFile", "gone"), "gone");
    EXPECT_EQ(effects.GetText("Kept", ""), "yes");
}

TEST_F(RegistryTest, AFailedWriteLeavesThePreviousFileWhole) {
    qvrCRegKey key = open("Engines\\ProxyManager");
    ASSERT_TRUE(key.SetLong("Ideal proxy wid", 720));
    const std::string before = ScratchDirectory::ReadAll(storeFile());
    fs::create_directories(storeFile() + ".tmp/blocker");
    EXPECT_FALSE(key.SetLong("Ideal proxy wid", 1024));
    EXPECT_EQ(ScratchDirectory::ReadAll(storeFile()), before);

    std::ofstream(storeFile(), std::ios::binary) << "   Something else = V1\n    {\n      A := 1\n    }\n";
    EXPECT_FALSE(qvrCRegKey::OpenStore(dir.Path.string()));
    EXPECT_FALSE(open("Engines", qvrCRegKey::Access::OpenExisting).IsOpen()) << "a foreign file is not taken";
}

TEST_F(RegistryTest, KeysSetFromSeveralThreadsAreAllKept) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            qvrCRegKey key = open(qvrFormat("Threads\\T%d", t));
            for (int i = 0; i < 40; ++i)
                key.SetLong(qvrFormat("V%d", i), t * 1000 + i);
        });
    for (std::thread& thread : threads)
        thread.join();
    reread();
    for (int t = 0; t < 4; ++t)
        for (int i = 0; i < 40; ++i)
            EXPECT_EQ(open(qvrFormat("Threads\\T%d", t)).GetLong(qvrFormat("V%d", i), -1), t * 1000 + i);
}
