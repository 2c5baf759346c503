#include "output/EImageOutputHandle.h"
#include "OutputTestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using qvrTest::MakeNoise;
using qvrTest::ReadBytes;
using qvrTest::ScratchFile;

using qvrTest::BmpSequence;
using qvrTest::EmptyDirectory;

void ExpectError(const EImageOutputHandle& handle, long cause, long osError, const std::string& text) {
    const EImageOutputError error = handle.GetLastError();
    EXPECT_EQ(error.Cause, cause);
    EXPECT_EQ(error.OsError, osError);
    EXPECT_EQ(error.Text, text);
}

TEST(OutputHandle, OpenRefusesAnEmptyNameOrSize) {
    EImageOutputHandle handle(BmpSequence());
    EXPECT_FALSE(handle.Open("", {4, 4}, nullptr, 25, 1));
    ExpectError(handle, FileErrorBadPath, 123, "<empty file name>");
    EXPECT_FALSE(handle.Open(ScratchFile("sized"), {0, 4}, nullptr, 25, 1));
    ExpectError(handle, FileErrorGeneric, 11, ScratchFile("sized.bmp"));
    EXPECT_FALSE(handle.IsOpen());
}

TEST(OutputHandle, WritesNumberedFilesAndClosesOnce) {
    const std::string directory = EmptyDirectory("handle-frames");
    EImageOutputHandle handle(BmpSequence());
    ASSERT_TRUE(handle.Open(directory + "/shot.tga", {3, 2}, nullptr, 25, 1));
    EXPECT_EQ(handle.GetFileName(), directory + "/shot.bmp");
    EXPECT_EQ(handle.GetLastError().Text, "");
    auto picture = MakeNoise(3, 2, 5);
    EXPECT_TRUE(handle.Write(*picture, 0));
    EXPECT_TRUE(handle.Write(*picture, 12));
    EXPECT_TRUE(std::filesystem::exists(directory + "/shot0000.bmp"));
    EXPECT_TRUE(std::filesystem::exists(directory + "/shot0012.bmp"));
    EXPECT_FALSE(std::filesystem::exists(directory + "/shot.bmp"));

    qvrTest::TraceCapture trace;
    EXPECT_TRUE(handle.Close());
    EXPECT_FALSE(handle.IsOpen());
    EXPECT_TRUE(handle.Close());
    EXPECT_EQ(trace.lines, std::vector<std::string>{
                               "*** WARNING[EImageOutputHandle::Close()]: Tried to close a stream twice.\n"});
    EXPECT_FALSE(handle.Write(*picture, 1));
    ExpectError(handle, FileErrorNotFound, 6, "BMP Image stream:0");
}

TEST(OutputHandle, FrameOfAnotherSizeFailsBeforeAnyFileIsTouched) {
    const std::string directory = EmptyDirectory("handle-size");
    EImageOutputHandle handle(BmpSequence());
    ASSERT_TRUE(handle.Open(directory + "/f", {4, 4}, nullptr, 25, 1));
    EImageOutputError error;
    EXPECT_FALSE(handle.Write(*MakeNoise(4, 3, 1), 0, &error));
    EXPECT_EQ(error.Text, "BMP Image stream:0");
    ExpectError(handle, FileErrorGeneric, 11, "BMP Image stream:0");
    EXPECT_TRUE(std::filesystem::is_empty(directory));
}

TEST(OutputHandle, InvalidSetupIsDroppedForTheDefaults) {
    const std::string directory = EmptyDirectory("handle-setup");
    EImageOutputSequenceSetup setup(BmpSequence());
    setup.digits = 2;
    setup.ownNumbering = true;
    setup.step = 0;
    EImageOutputHandle handle(BmpSequence());
    ASSERT_TRUE(handle.Open(directory + "/f", {1, 1}, &setup, 25, 1));
    EXPECT_TRUE(handle.Write(*MakeNoise(1, 1, 1), 3));
    EXPECT_TRUE(std::filesystem::exists(directory + "/f0003.bmp"));
}

TEST(OutputHandle, DirectoryThatCannotBeCreatedFailsTheOpen) {
    const std::string blocker = ScratchFile("handle-blocker");
    qvrTest::WriteBytes(blocker, {1});
    EImageOutputHandle handle(BmpSequence());
    EXPECT_FALSE(handle.Open(blocker + "/frames/f", {2, 2}, nullptr, 25, 1));
    ExpectError(handle, FileErrorBadPath, ENOTDIR, blocker + "/frames/f.bmp");
}

TEST(OutputHandle, FullDiskFailsOneFrameAndLeavesTheOthers) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    const std::string directory = EmptyDirectory("handle-full");
    std::filesystem::create_symlink("/dev/full", directory + "/f0002.bmp");
    EImageOutputHandle handle(BmpSequence());
    ASSERT_TRUE(handle.Open(directory + "/f", {5, 3}, nullptr, 25, 1));
    auto picture = MakeNoise(5, 3, 9);
    ASSERT_TRUE(handle.Write(*picture, 0));
    ASSERT_TRUE(handle.Write(*picture, 1));
    const std::vector<std::uint8_t> first = ReadBytes(directory + "/f0000.bmp");

    EXPECT_FALSE(handle.Write(*picture, 2));
    ExpectError(handle, FileErrorDiskFull, ENOSPC, directory + "/f0002.bmp");
    EXPECT_TRUE(handle.Write(*picture, 3));
    EXPECT_EQ(first.size(), 54u + 16u * 3u);
    EXPECT_EQ(ReadBytes(directory + "/f0000.bmp"), first);
    EXPECT_EQ(ReadBytes(directory + "/f0001.bmp"), first);
    EXPECT_EQ(ReadBytes(directory + "/f0003.bmp"), first);
}

} // namespace
