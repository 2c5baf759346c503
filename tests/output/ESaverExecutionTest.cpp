#include "OutputProbes.h"

#include "foundation/ScratchDirectory.h"
#include "foundation/qvrCRegKey.h"
#include "model/ScriptedUserInterface.h"
#include "output/ESaverExecution.h"
#include "output/isvrSaver.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

class RecordingView : public ESaverExecution::View {
public:
    void AppendLine(const std::string& line) override { Lines.push_back(line); }
    void RemoveFirstLines(size_t count) override {
        Lines.erase(Lines.begin(), Lines.begin() + static_cast<long>(std::min(count, Lines.size())));
        Removed += count;
    }
    void PlaySound(ESaverExecution::Sound sound) override { Sounds.push_back(sound); }
    void MinimizeMainWindow() override { Events.push_back("minimize"); }
    void RestoreMainWindow() override { Events.push_back("restore"); }
    void Close() override { Events.push_back("close"); }

    std::vector<std::string> Lines;
    size_t Removed = 0;
    std::vector<ESaverExecution::Sound> Sounds;
    std::vector<std::string> Events;
};

class SaverExecution : public ::testing::Test {
protected:
    SaverExecution() {
        MemoryStream::TheSequence().Reset();
        saver.SetSize({16, 12});
        saver.SetFileName("frames.mem");
        saver.SetStream(&MemoryStream::TheSequence());
        saver.LinkParent(&source);
        setup.VideoStart = 0;
        setup.VideoEnd = 2;
        setup.MiscThreadCnt = 1;
        setup.MiscMinimize = false;
        setup.LogFile = scratch.File("render.rlog");
    }

    // Pumps messages as a window would until the run is over.
    static void runToEnd(ESaverExecution& run) {
        for (int round = 0; round < 600 && run.GetState() != ESaverExecution::StateOver; ++round)
            if (run.Wait(100)) run.DispatchMessages();
        ASSERT_EQ(run.GetState(), ESaverExecution::StateOver);
    }

    FrameSource source{"Source"};
    isvrSaver saver{"Saver"};
    iSaverSetup setup;
    RecordingView view;
    ScriptedUserInterface ui;
    ScratchDirectory scratch{"execution"};
};

} // namespace

TEST_F(SaverExecution, ARunLogsEveryLineAfterTheHeaderAndEndsFinished) {
    ESaverExecution run(saver, setup, view);
    EXPECT_EQ(run.GetStateText(), " Initializing threads...");
    EXPECT_FALSE(run.IsButtonEnabled());
    run.Open();
    EXPECT_EQ(run.GetButtonText(), std::string("&Abort"));
    runToEnd(run);
    EXPECT_EQ(run.GetStateText(), " Finished.");
    EXPECT_EQ(run.GetButtonText(), std::string("&Close"));
    EXPECT_EQ(view.Sounds, std::vector<ESaverExecution::Sound>{ESaverExecution::Sound::Exclamation});
    EXPECT_EQ(run.GetCountsText(), " Total number of frames: 3; done: 3 (0 error(s))");
    EXPECT_EQ(run.GetTimesText().rfind("Finished - elapsed time: ", 0), 0u);
    EXPECT_EQ(run.GetProgressRange(), 3u);
    EXPECT_EQ(run.GetProgressPosition(), 3u);

    const std::string log = ScratchDirectory::ReadAll(setup.LogFile);
    const std::string head = "qvrTessarine isvrSaver rendering log file:\r\nLog file created: ";
    ASSERT_EQ(log.rfind(head, 0), 0u) << log;
    const size_t body = log.find("\n\n", head.size());
    ASSERT_NE(body, std::string::npos);
    std::string lines;
    for (const std::string& line : view.Lines)
        lines += line;
    EXPECT_EQ(log.substr(body + 2), lines);
    EXPECT_EQ(view.Lines.size(), 6u);
    EXPECT_NE(std::find(view.Lines.begin(), view.Lines.end(), "Thread #01: Saving frame 2.\r\n"),
              view.Lines.end());
}

TEST_F(SaverExecution, TheRememberedWarningsOnlyBoxKeepsTheProgressLinesOut) {
    source.FailingFrames = {1};
    qvrCRegKey settings;
    ASSERT_TRUE(settings.Open(qvrCRegKey::Root(), "Dialogs\\Renderer\\Saver"));
    settings.SetBool("WarningsOnly", true);
    ESaverExecution run(saver, setup, view);
    run.Open();
    settings.SetBool("WarningsOnly", false);
    EXPECT_TRUE(run.GetWarningsOnly());
    runToEnd(run);
    EXPECT_EQ(view.Lines,
              std::vector<std::string>{
                  "*** Thread #01 ERROR: Failed to render frame 1: Probe failure - skipping frame\r\n"});
    EXPECT_EQ(run.GetCountsText(), " Total number of frames: 3; done: 3 (1 error(s))");
}

TEST_F(SaverExecution, AStopBeforeTheThreadsStartStillEndsTheRunAborted) {
    source.Gate.Reset();
    setup.VideoEnd = 50;
    ESaverExecution run(saver, setup, view);
    run.Open();
    ASSERT_EQ(run.GetState(), ESaverExecution::StateStarting);
    run.OnButton();
    EXPECT_EQ(ui.Messages, std::vector<std::string>{"The threads have not yet started.\nSend stop now ?"});
    EXPECT_TRUE(run.WasStopSent());
    source.Gate.Set();
    runToEnd(run);
    EXPECT_EQ(run.GetStateText(), " Aborted.");
    EXPECT_EQ(view.Sounds, std::vector<ESaverExecution::Sound>{ESaverExecution::Sound::Beep});
}

TEST_F(SaverExecution, TheAbortQuestionCanBeDeclined) {
    source.Gate.Reset();
    setup.VideoEnd = 50;
    ESaverExecution run(saver, setup, view);
    run.Open();
    for (int round = 0; round < 600 && run.GetState() != ESaverExecution::StateRunning; ++round)
        if (run.Wait(100)) run.DispatchMessages();
    ASSERT_EQ(run.GetStateText(), " Rendering in progress...");
    ui.Answer = IDNO;
    run.OnButton();
    EXPECT_EQ(ui.Messages.back(), "Are you sure you want\nto abort ?");
    EXPECT_EQ(run.GetState(), ESaverExecution::StateRunning);
    ui.Answer = IDYES;
    run.OnButton();
    EXPECT_EQ(run.GetStateText(), " Aborting...");
    run.OnButton();
    EXPECT_EQ(ui.Messages.back().rfind("If the threads do not stop within an acceptable time,", 0), 0u);
    source.Gate.Set();
    runToEnd(run);
    EXPECT_EQ(run.GetStateText(), " Aborted.");
}

TEST_F(SaverExecution, AFailedStartIsTheFinalStateAndCloseRemembersTheBox) {
    saver.SetFileName("");
    setup.MiscMinimize = true;
    ESaverExecution run(saver, setup, view);
    run.Open();
    EXPECT_EQ(run.GetState(), ESaverExecution::StateOver);
    EXPECT_EQ(run.GetStateText(), " Failed to start threads: Invalid setup !");
    EXPECT_TRUE(view.Events.empty());
    run.SetWarningsOnly(true);
    run.OnButton();
    EXPECT_TRUE(run.IsClosed());
    EXPECT_EQ(view.Events, std::vector<std::string>{"close"});
    qvrCRegKey settings;
    ASSERT_TRUE(
        settings.Open(qvrCRegKey::Root(), "Dialogs\\Renderer\\Saver", qvrCRegKey::Access::OpenExisting));
    EXPECT_TRUE(settings.GetBool("WarningsOnly", false));
    settings.SetBool("WarningsOnly", false);
}

TEST_F(SaverExecution, TheMainWindowIsMinimizedForTheRun) {
    setup.MiscMinimize = true;
    ESaverExecution run(saver, setup, view);
    run.Open();
    runToEnd(run);
    EXPECT_EQ(view.Events, (std::vector<std::string>{"minimize", "restore"}));
}

TEST_F(SaverExecution, ALogThatCannotBeCreatedIsDroppedWithAMessage) {
    setup.LogFile = scratch.File("missing/dir/render.rlog");
    ESaverExecution run(saver, setup, view);
    run.Open();
    ASSERT_EQ(ui.Messages.size(), 1u);
    EXPECT_EQ(ui.Messages[0].rfind("ERROR CREATING LOFILE \"" + setup.LogFile + "\": ", 0), 0u);
    EXPECT_EQ(run.GetLogFile(), "");
    runToEnd(run);
    EXPECT_EQ(run.GetStateText(), " Finished.");
}

TEST_F(SaverExecution, TheMessageViewDropsItsFirst200LinesWhenFull) {
    setup.VideoEnd = 149;
    setup.LogKeep = false;
    ESaverExecution run(saver, setup, view);
    run.Open();
    runToEnd(run);
    EXPECT_GE(view.Removed, 200u);
    EXPECT_EQ(view.Removed % 200, 0u);
    EXPECT_EQ(view.Lines.size() + view.Removed, 300u);
    EXPECT_EQ(view.Lines.back(), "Thread #01: Saving frame 149.\r\n");
}
