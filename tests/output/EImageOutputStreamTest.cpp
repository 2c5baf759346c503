#include "output/EImageOutputStream.h"
#include "imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using qvrTest::ReadBytes;
using qvrTest::ScratchFile;
using qvrTest::WriteBytes;

TEST(OutputRegistry, HoldsTheThreeStreamsWithTheBmpSequenceFirst) {
    ASSERT_NE(EImageOutputStream::GetFirst(), nullptr);
    EXPECT_STREQ(EImageOutputStream::GetFirst()->GetName(), "BMP Image stream");
    std::vector<std::string> names;
    for (const EImageOutputStream* stream = EImageOutputStream::GetFirst(); stream;
         stream = stream->GetNext())
        names.push_back(stream->GetName());
    EXPECT_EQ(names,
              (std::vector<std::string>{"BMP Image stream", "AVI video & audio stream", "AVI video stream"}));
    EXPECT_EQ(EImageOutputStream::GetCount(), 3);
}

TEST(OutputRegistry, FindsNamesWithoutRegardToCase) {
    const EImageOutputStream* movie = EImageOutputStream::Find("avi VIDEO stream");
    ASSERT_NE(movie, nullptr);
    EXPECT_STREQ(movie->GetName(), "AVI video stream");
    EXPECT_STREQ(movie->GetExtension(), "avi");
    EXPECT_TRUE(movie->IsMovie());
    EXPECT_FALSE(movie->IsSequence());
    EXPECT_EQ(EImageOutputStream::Find("TIFF Image stream"), nullptr);
    EXPECT_EQ(EImageOutputStream::Find(""), nullptr);
}

TEST(OutputRegistry, ForcesTheExtensionOnlyBehindTheLastSeparator) {
    const EImageOutputStream& bmp = *EImageOutputStream::Find("BMP Image stream");
    EXPECT_EQ(bmp.ForceExtension(""), "");
    EXPECT_EQ(bmp.ForceExtension("out.dir/movie"), "out.dir/movie.bmp");
    EXPECT_EQ(bmp.ForceExtension("a.b.tga"), "a.b.bmp");
    EXPECT_EQ(bmp.ForceExtension("frame."), "frame.bmp");
    EXPECT_EQ(bmp.ForceExtension("/data/frame"), "/data/frame.bmp");
}

TEST(OutputSetup, BaseSetupNeedsNothing) {
    struct PlainSetup : EImageOutputSetup {
        bool IsValid() const override { return true; }
        void Repair() override {}
        void Reset() override {}
    } setup;
    EXPECT_EQ(setup.GetSetupString(), "");
    EXPECT_TRUE(setup.SetSetupString("anything"));
    EXPECT_EQ(setup.GetDescription(), "(no setup required)");
    std::string error = "old";
    EXPECT_TRUE(setup.Edit(nullptr, error));
    EXPECT_EQ(error, "");
}

TEST(OutputTestFile, LeavesAnExistingFileAsItWas) {
    const std::string path = ScratchFile("testfile-existing.bin");
    WriteBytes(path, {1, 2, 3});
    EXPECT_TRUE(EImageOutputStream::TestFile(path, EOutputDirectory::AsIs, nullptr));
    EXPECT_EQ(ReadBytes(path), (std::vector<std::uint8_t>{1, 2, 3}));
}

TEST(OutputTestFile, RemovesTheFileItCreated) {
    const std::string directory = ScratchFile("testfile-new");
    std::filesystem::remove_all(directory);
    const std::string path = directory + "/deeper/file.bmp";
    EImageOutputError error;
    EXPECT_FALSE(EImageOutputStream::TestFile(path, EOutputDirectory::AsIs, &error));
    EXPECT_EQ(error.Cause, FileErrorNotFound);
    EXPECT_EQ(error.OsError, ENOENT);
    EXPECT_EQ(error.Text, path);

    EXPECT_TRUE(EImageOutputStream::TestFile(path, EOutputDirectory::Create, &error));
    EXPECT_TRUE(std::filesystem::is_directory(directory + "/deeper"));
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(OutputTestFile, DirectoryThatCannotBeMadeFails) {
    const std::string blocker = ScratchFile("testfile-blocker");
    WriteBytes(blocker, {7});
    EImageOutputError error;
    EXPECT_FALSE(EImageOutputStream::TestFile(blocker + "/sub/file.bmp", EOutputDirectory::Create, &error));
    EXPECT_EQ(error.OsError, ENOTDIR);
    EXPECT_EQ(error.Cause, FileErrorBadPath);
    EXPECT_EQ(ReadBytes(blocker), std::vector<std::uint8_t>{7});
    EXPECT_FALSE(EImageOutputStream::TestFile(blocker + "/file.bmp", EOutputDirectory::AsIs, nullptr));
}

TEST(OutputError, CausesFollowFromTheErrorNumbers) {
    EXPECT_EQ(EImageOutputError::CauseOfOsError(0), FileErrorNone);
    EXPECT_EQ(EImageOutputError::CauseOfOsError(ENOSPC), FileErrorDiskFull);
    EXPECT_EQ(EImageOutputError::CauseOfOsError(EACCES), FileErrorAccessDenied);
    EXPECT_EQ(EImageOutputError::CauseOfOsError(OutputErrorInvalidName), FileErrorBadPath);
    EXPECT_EQ(EImageOutputError::CauseOfOsError(OutputErrorCannotMake), FileErrorAccessDenied);
    EXPECT_EQ(EImageOutputError::CauseOfOsError(OutputErrorOutOfMemory), FileErrorGeneric);
}

} // namespace
