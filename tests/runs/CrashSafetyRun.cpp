// Files written while the process is killed: a child process writes a file
// and is killed with SIGKILL at a random moment, a hundred times over. The
// file under its name must then be the previous one or the new one, whole,
// never a mix; a render killed and run again must leave only whole frames.

#include "QvrProgram.h"
#include "foundation/ScratchDirectory.h"

#include "foundation/hReport.h"
#include "foundation/iDataBase.h"
#include "foundation/qvrCRegKey.h"
#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"
#include "model/iProject.h"
#include "objects/isrcLayer.h"
#include "output/EImageOutputStream.h"
#include "output/isvrSaver.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int Kills = 100;

void writeAll(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// Starts `work` in a child process; its process id.
pid_t startChild(const std::function<void()>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        work();
        ::_exit(0);
    }
    return child;
}

// Kills the child after `delay`; true when it had not ended by then.
bool killAfter(pid_t child, std::chrono::microseconds delay) {
    std::this_thread::sleep_for(delay);
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status);
}

// How long `work` takes in a child process that is left to end.
std::chrono::microseconds timeOf(const std::function<void()>& work) {
    const auto start = Clock::now();
    int status = 0;
    ::waitpid(startChild(work), &status, 0);
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
}

class CrashSafety : public ::testing::Test {
protected:
    // Writes `before` under the name, has `write` replace it in a child that
    // is killed at random moments, and checks the name after every kill.
    void killWhileReplacing(const std::string& path, const std::string& before, const std::string& after,
                            const std::function<void()>& write) {
        ASSERT_NE(before, after);
        writeAll(path, before);
        const auto span = timeOf(write) * 5 / 4;
        ASSERT_EQ(ScratchDirectory::ReadAll(path), after) << "the write itself works";
        std::uniform_int_distribution<long> moment(0, span.count());
        int cut = 0;
        for (int round = 0; round < Kills; ++round) {
            writeAll(path, before);
            if (killAfter(startChild(write), std::chrono::microseconds(moment(random)))) ++cut;
            const std::string found = ScratchDirectory::ReadAll(path);
            ASSERT_TRUE(found == before || found == after)
                << "round " << round << ": " << found.size() << " bytes";
        }
        EXPECT_GT(cut, Kills / 4) << "most kills should land before the write ends";
    }

    ScratchDirectory home{"crash"};
    std::mt19937 random{17};
};

// A project of `count` layers, each named after `prefix`, saved to `path`.
std::string saveProject(const std::string& path, const std::string& prefix, int count) {
    iProject& project = iProject::GetStandard();
    project.Clear();
    for (int i = 0; i < count; ++i) {
        auto* layer =
            static_cast<isrcLayer*>(project.Adopt(std::make_unique<isrcLayer>(prefix + std::to_string(i))));
        layer->SetSize({32 + i, 24});
    }
    hReportRoot report("Saving");
    iDataBase().Save(path, DBMaskProject, 0, &report);
    return ScratchDirectory::ReadAll(path);
}

} // namespace

TEST_F(CrashSafety, AProjectSavedWhileKilledIsTheOldOrTheNewOne) {
    const std::string path = home.File("large.tsp");
    const std::string before = saveProject(path, "Old", 800);
    const std::string after = saveProject(home.File("new.tsp"), "New", 800);
    killWhileReplacing(path, before, after, [&] {
        hReportRoot report("Saving");
        iDataBase().Save(path, DBMaskProject, 0, &report);
    });
    iProject::GetStandard().Clear();
}

TEST_F(CrashSafety, TheRegistryFileWrittenWhileKilledIsTheOldOrTheNewOne) {
    ASSERT_TRUE(qvrCRegKey::OpenStore(home.Path.string()));
    qvrCRegKey key;
    ASSERT_TRUE(key.Open(qvrCRegKey::Root(), "Crash\\Test"));
    const std::string path = qvrCRegKey::GetStorePath();
    key.SetText("Value", std::string(400000, 'a'));
    const std::string before = ScratchDirectory::ReadAll(path);
    key.SetText("Value", std::string(400000, 'b'));
    const std::string after = ScratchDirectory::ReadAll(path);
    killWhileReplacing(path, before, after, [&] { key.SetText("Value", std::string(400000, 'b')); });
}

TEST_F(CrashSafety, AProxyWrittenWhileKilledIsTheOldOrTheNewOne) {
    auto noise = [](std::uint32_t seed) {
        auto picture = EImageData::New({1024, 768}, EImageMemory::NoFreeing);
        for (long y = 0; y < 768; ++y)
            for (long x = 0; x < 1024; ++x) {
                seed += 0x9E3779B9u;
                picture->GetRow(y)[x] = seed ^ (seed >> 13);
            }
        return picture;
    };
    const std::string path = home.File("pxy(frame.tga)_1024x768.qts");
    const auto newer = noise(2);
    EImageFileResult result;
    ASSERT_TRUE(EImageFileFormat::Save(*noise(1), path, result));
    const std::string before = ScratchDirectory::ReadAll(path);
    ASSERT_TRUE(EImageFileFormat::Save(*newer, home.File("newer.qts"), result));
    const std::string after = ScratchDirectory::ReadAll(home.File("newer.qts"));
    killWhileReplacing(path, before, after, [&] {
        EImageFileResult saved;
        EImageFileFormat::Save(*newer, path, saved);
    });
}

TEST_F(CrashSafety, ARenderKilledAndRunAgainLeavesOnlyWholeFrames) {
    iProject& project = iProject::GetStandard();
    project.Clear();
    auto* layer = static_cast<isrcLayer*>(project.Adopt(std::make_unique<isrcLayer>("Layer")));
    layer->SetSize({640, 480});
    auto* saver = static_cast<isvrSaver*>(project.Adopt(std::make_unique<isvrSaver>("Out")));
    saver->LinkParent(layer);
    saver->SetStream(EImageOutputStream::Find("BMP Image stream"));
    saver->SetFileName(home.File("frames/frame.bmp"));
    saver->SetSize({640, 480});
    saver->GetSetup().VideoEnd = 11;
    fs::create_directories(home.File("frames"));
    const std::string path = home.File("render.tsp");
    hReportRoot report("Saving");
    ASSERT_TRUE(iDataBase().Save(path, DBMaskProject, 0, &report));
    project.Clear();

    const std::uintmax_t frameBytes = 54 + 640 * 3 * 480;
    auto onlyWholeFrames = [&] {
        for (const auto& entry : fs::directory_iterator(home.File("frames")))
            if (entry.path().extension() == ".bmp" && entry.file_size() != frameBytes) return false;
        return true;
    };
    auto render = [&] {
        ::execl(
            "/bin/sh", "sh", "-c",
            ("QVR_HOME='" + home.Path.string() + "' exec '" QVR_PROGRAM "' render '" + path + "' 2>/dev/null")
                .c_str(),
            static_cast<char*>(nullptr));
    };
    const auto span = timeOf(render) * 5 / 4;
    std::uniform_int_distribution<long> moment(0, span.count());
    for (int round = 0; round < Kills; ++round) {
        killAfter(startChild(render), std::chrono::microseconds(moment(random)));
        ASSERT_TRUE(onlyWholeFrames()) << "round " << round;
    }
    EXPECT_EQ(RunQvr(home.Path.string(), "render '" + path + "'").ExitCode, 0);
    EXPECT_TRUE(onlyWholeFrames());
    EXPECT_TRUE(fs::exists(home.File("frames/frame0011.bmp")));
}
