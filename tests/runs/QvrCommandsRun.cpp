// Whole runs of the qvr program on projects that the test writes first.

#include "QvrProgram.h"
#include "foundation/ScratchDirectory.h"

#include "foundation/iDataBase.h"
#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"
#include "model/iProject.h"
#include "objects/isrcLayer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

class QvrRun : public ::testing::Test {
protected:
    QvrRunResult run(const std::string& arguments) { return RunQvr(home.Path.string(), arguments); }

    // A project with one red half-transparent solid layer of 64x48.
    std::string writeLayerProject() {
        iProject& project = iProject::GetStandard();
        project.Clear();
        auto* layer = static_cast<isrcLayer*>(project.Adopt(std::make_unique<isrcLayer>("Red")));
        layer->SetSize({64, 48});
        layer->GetRedValue().SetSingleKey(0, 255, false);
        layer->GetGreenValue().SetSingleKey(0, 0, false);
        layer->GetBlueValue().SetSingleKey(0, 0, false);
        layer->GetAlphaValue().SetSingleKey(0, 128, false);
        const std::string path = home.File("layer.tsp");
        hReportRoot report("Saving");
        iDataBase database;
        EXPECT_TRUE(database.Save(path, DBMaskProject, 0, &report));
        project.Clear();
        return path;
    }

    ScratchDirectory home{"run"};
};

} // namespace

TEST_F(QvrRun, VersionAndHelpNameTheProgram) {
    QvrRunResult version = run("--version");
    EXPECT_EQ(version.ExitCode, 0);
    EXPECT_EQ(version.Output.rfind("qvrTessarine ", 0), 0u);
    EXPECT_EQ(run("--help").ExitCode, 0);
    EXPECT_EQ(run("no-such-command").ExitCode, 2);
}

TEST_F(QvrRun, InfoListsTheElementsOfAProject) {
    const std::string project = writeLayerProject();
    QvrRunResult json = run("info '" + project + "' --json");
    EXPECT_EQ(json.ExitCode, 0) << json.Output;
    EXPECT_NE(json.Output.find("\"name\":\"Red\",\"class\":\"Loader\",\"type\":\"Solid\""), std::string::npos)
        << json.Output;
    EXPECT_NE(json.Output.find("\"Color Alpha\":1"), std::string::npos) << json.Output;
    EXPECT_EQ(run("info '" + home.File("missing.tsp") + "'").ExitCode, 2);
}

TEST_F(QvrRun, FrameRendersAPreviewIntoAQuickFile) {
    const std::string project = writeLayerProject();
    const std::string output = home.File("red.qts");
    QvrRunResult frame = run("frame '" + project + "' Red 0 -o '" + output + "' --display 16,12");
    ASSERT_EQ(frame.ExitCode, 0) << frame.Output;
    EImageFileResult result;
    std::unique_ptr<EImageData> picture = EImageFileFormat::Load(output, CRect{0, 0, 16, 12}, result);
    ASSERT_NE(picture, nullptr) << result.text;
    EXPECT_EQ(picture->GetSize(), (CSize{16, 12}));
    EXPECT_EQ(picture->GetRow(5)[7], 0x80FF0000u);
}

TEST_F(QvrRun, FrameRefusesBadRequests) {
    const std::string project = writeLayerProject();
    const std::string output = home.File("x.qts");
    EXPECT_EQ(run("frame '" + project + "' Nobody 0 -o '" + output + "'").ExitCode, 2);
    EXPECT_EQ(run("frame '" + project + "' Red zero -o '" + output + "'").ExitCode, 2);
    EXPECT_EQ(run("frame '" + project + "' Red 0 -o '" + output + "' --rect 1,2").ExitCode, 2);
    EXPECT_EQ(run("frame '" + project + "' Red 0").ExitCode, 2);
}

TEST_F(QvrRun, FrameAndConvertWriteBmpFiles) {
    const std::string project = writeLayerProject();
    const std::string bmp = home.File("red.bmp");
    QvrRunResult frame = run("frame '" + project + "' Red 0 -o '" + bmp + "' --display 16,12");
    ASSERT_EQ(frame.ExitCode, 0) << frame.Output;
    std::ifstream written(bmp, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(written), std::istreambuf_iterator<char>()};
    ASSERT_EQ(bytes.size(), 54u + 48u * 12u);
    EXPECT_EQ(bytes.substr(0, 2), "BM");
    EXPECT_EQ(bytes.substr(54, 3), std::string("\0\0\xFF", 3));

    const std::string quick = home.File("red.qts");
    ASSERT_EQ(run("frame '" + project + "' Red 0 -o '" + quick + "' --display 16,12").ExitCode, 0);
    const std::string converted = home.File("converted.bmp");
    QvrRunResult convert = run("convert '" + quick + "' '" + converted + "'");
    ASSERT_EQ(convert.ExitCode, 0) << convert.Output;
    std::ifstream again(converted, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(again), std::istreambuf_iterator<char>()), bytes);
    EXPECT_EQ(run("convert '" + quick + "' '" + home.File("missing/x.bmp") + "'").ExitCode, 1);
}

TEST_F(QvrRun, ConvertRefusesAnEmptyPictureByItsNameAndLeavesNoFile) {
    // A true-colour TGA file of 0 by 2 pixels.
    const std::string empty = home.File("empty.tga");
    std::ofstream(empty, std::ios::binary) << std::string("\0\0\2\0\0\0\0\0\0\0\0\0\0\0\2\0\x18\0", 18);
    for (const char* output : {"empty.bmp", "empty.qts"}) {
        const QvrRunResult convert = run("convert '" + empty + "' '" + home.File(output) + "'");
        EXPECT_NE(convert.ExitCode, 0) << output;
        EXPECT_NE(convert.Output.find(empty), std::string::npos) << convert.Output;
        EXPECT_NE(convert.Output.find("is empty"), std::string::npos) << convert.Output;
        EXPECT_FALSE(std::filesystem::exists(home.File(output))) << output;
    }
}
