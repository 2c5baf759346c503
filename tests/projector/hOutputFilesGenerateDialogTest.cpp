#include "projector/QuickSetupProfile.h"

#include "model/ScriptedUserInterface.h"
#include "projector/LOutputFiles.h"
#include "projector/hOutputFilesGenerateDialog.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* Bmp = "BMP Image stream";
constexpr const char* Avi = "AVI video stream";

LOutputFiles outputsOf(const char* streamType) {
    LOutputFiles outputs;
    outputs.StreamType = streamType;
    return outputs;
}

// Answers the file dialog with a set file and remembers the request.
class ExampleChooser : public ScriptedUserInterface {
public:
    std::optional<std::string> AskFile(const EFileDialogRequest& request) override {
        Asked = request;
        return Chosen;
    }
    std::optional<std::string> Chosen;
    EFileDialogRequest Asked;
};

} // namespace

TEST(OutputFilesGenerateDialog, HintsAtTheFramePlaceholderOnlyForSequences) {
    LOutputFiles sequence = outputsOf(Bmp);
    LOutputFiles movie = outputsOf(Avi);
    EXPECT_EQ(hOutputFilesGenerateDialog(sequence).GetHint(),
              "Please use a \"<P>\" for the projector, a \"<F>\" for the frame !");
    EXPECT_EQ(hOutputFilesGenerateDialog(movie).GetHint(),
              "Please use a \"<P>\" as a placeholder for the projector.");
}

TEST(OutputFilesGenerateDialog, ComplainsAboutMissingPartsInOrder) {
    QuickSetupProfile profile;
    ScriptedUserInterface ui;
    LOutputFiles outputs = outputsOf(Bmp);
    hOutputFilesGenerateDialog dialog(outputs);
    dialog.Directory = "render/<P>";
    EXPECT_FALSE(dialog.Accept());
    dialog.File = "shot.bmp";
    dialog.Directory = "render";
    EXPECT_FALSE(dialog.Accept());
    dialog.Directory = "render/<P>";
    EXPECT_FALSE(dialog.Accept());
    EXPECT_EQ(ui.Messages, (std::vector<std::string>{
                               "You cannot leave the file name empty !",
                               "You have to put a \"<P>\" in either the\nfile name or the directory !",
                               "For this output format,\nyou have to put a \"<F>\" in either the\nfile name "
                               "or the directory !"}));
    EXPECT_EQ(outputs.ProjectorFiles[0], "");
}

TEST(OutputFilesGenerateDialog, AcceptedPatternsFillTheFilesAndAreRemembered) {
    QuickSetupProfile profile;
    LOutputFiles movie = outputsOf(Avi);
    {
        hOutputFilesGenerateDialog dialog(movie);
        dialog.Directory = "render";
        dialog.File = "projector<P>";
        ASSERT_TRUE(dialog.Accept()) << "a movie needs no frame placeholder";
    }
    EXPECT_EQ(movie.GetOutputName(17), "render/projector18.avi");
    hOutputFilesGenerateDialog again(movie);
    EXPECT_EQ(again.Directory, "render");
    EXPECT_EQ(again.File, "projector<P>");
}

TEST(OutputFilesGenerateDialog, AnExampleFileGetsThePlaceholdersItLacks) {
    LOutputFiles sequence = outputsOf(Bmp);
    LOutputFiles movie = outputsOf(Avi);
    hOutputFilesGenerateDialog forSequence(sequence);
    forSequence.TakeExample("/data/shots/take");
    EXPECT_EQ(forSequence.Directory, "/data/shots");
    EXPECT_EQ(forSequence.File, "take<P>_<F>");
    forSequence.TakeExample("/data/shots/take.v2.bmp");
    EXPECT_EQ(forSequence.File, "take.v2<P><F>.bmp");
    forSequence.TakeExample("/data/<P>/take_<F>.bmp");
    EXPECT_EQ(forSequence.File, "take_<F>.bmp");
    hOutputFilesGenerateDialog forMovie(movie);
    forMovie.TakeExample("/data/shots/take.avi");
    EXPECT_EQ(forMovie.File, "take<P>.avi");
}

TEST(OutputFilesGenerateDialog, ChoosesTheExampleThroughAFileDialog) {
    ExampleChooser ui;
    LOutputFiles sequence = outputsOf(Bmp);
    hOutputFilesGenerateDialog dialog(sequence);
    dialog.File = "kept";
    EXPECT_FALSE(dialog.ChooseExample());
    EXPECT_EQ(ui.Asked.Title, "Select an example file...");
    EXPECT_FALSE(ui.Asked.Save);
    EXPECT_EQ(dialog.File, "kept");
    ui.Chosen = "/in/a.bmp";
    EXPECT_TRUE(dialog.ChooseExample());
    EXPECT_EQ(dialog.File, "a<P><F>.bmp");
}
