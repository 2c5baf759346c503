#include "output/EImageOutputStreamAVI.h"
#include "MovieReader.h"
#include "imaging/ImagingTestSupport.h"
#include "output/EImageOutputHandle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <sys/resource.h>

namespace {

using qvrTest::MakeNoise;
using qvrTest::PixelsOf;
using qvrTest::ReadMovie;
using qvrTest::ScratchFile;

const EImageOutputStream& AviStream() {
    return *EImageOutputStream::Find("AVI video stream");
}

const EImageOutputStream& AviWithAudioStream() {
    return *EImageOutputStream::Find("AVI video & audio stream");
}

long HandlerOf(const char* encoderName) {
    qvrCAVIStream::Options::LoadCompressors();
    const auto& list = qvrCAVIStream::Options::GetCompressors();
    const auto found = std::find_if(list.begin(), list.end(), [&](const qvrCAVICompressor& compressor) {
        return compressor.Name == encoderName;
    });
    return found == list.end() ? 0 : found->Handler;
}

// Writes `count` noise frames and gives them back as the movie should hold them.
std::vector<std::vector<std::uint32_t>> WriteMovie(const EImageOutputStream& stream, const std::string& path,
                                                   CSize size, const EImageOutputSetup* setup, int count,
                                                   unsigned long rate = 25, unsigned long rateStep = 1) {
    std::vector<std::vector<std::uint32_t>> written;
    EImageOutputHandle handle(stream);
    EXPECT_TRUE(handle.Open(path, size, setup, rate, rateStep)) << handle.GetLastError().Text;
    for (int frame = 0; frame < count; ++frame) {
        auto picture = MakeNoise(size.cx, size.cy, 100u + static_cast<std::uint32_t>(frame));
        EXPECT_TRUE(handle.Write(*picture, frame)) << handle.GetLastError().Text;
        written.push_back(PixelsOf(*picture));
    }
    EXPECT_TRUE(handle.Close()) << handle.GetLastError().Text;
    return written;
}

TEST(AVIStream, UncompressedMovieDecodesToTheWrittenPixels) {
    const std::string path = ScratchFile("plain.avi");
    const auto written = WriteMovie(AviStream(), path, {7, 5}, nullptr, 3);

    const qvrTest::MovieContents movie = ReadMovie(path);
    ASSERT_TRUE(movie.opened);
    EXPECT_EQ(movie.width, 7);
    EXPECT_EQ(movie.height, 5);
    EXPECT_EQ(movie.framesInHeader, 3);
    EXPECT_EQ(av_cmp_q(movie.frameRate, AVRational{25, 1}), 0);
    EXPECT_EQ(movie.videoCodec, "rawvideo");
    EXPECT_EQ(movie.videoTitle, "qvrCAVIStream");
    EXPECT_EQ(movie.audioRate, 0);
    EXPECT_EQ(movie.frames, written);
}

TEST(AVIStream, RateIsNumeratorOverDenominator) {
    const std::string path = ScratchFile("ntsc.avi");
    WriteMovie(AviStream(), path, {4, 4}, nullptr, 4, 30000, 1001);

    const qvrTest::MovieContents movie = ReadMovie(path);
    EXPECT_EQ(movie.framesInHeader, 4);
    EXPECT_EQ(movie.frames.size(), 4u);
    EXPECT_EQ(av_cmp_q(movie.frameRate, AVRational{30000, 1001}), 0);
}

TEST(AVIStream, LosslessCompressorGivesThePixelsBack) {
    const long ffv1 = HandlerOf("ffv1");
    if (ffv1 == 0) GTEST_SKIP() << "no FFV1 encoder";
    qvrCAVIStream::Options options;
    options.Handler = ffv1;
    const EImageOutputStreamAVISetup setup(options);
    const std::string path = ScratchFile("ffv1.avi");
    const auto written = WriteMovie(AviStream(), path, {9, 6}, &setup, 3);

    const qvrTest::MovieContents movie = ReadMovie(path);
    EXPECT_EQ(movie.videoCodec, "ffv1");
    EXPECT_EQ(movie.framesInHeader, 3);
    EXPECT_EQ(movie.frames, written);
}

TEST(AVIStream, MotionJpegMovieHasEveryFrame) {
    const long mjpeg = HandlerOf("mjpeg");
    if (mjpeg == 0) GTEST_SKIP() << "no MJPEG encoder";
    qvrCAVIStream::Options options;
    options.Handler = mjpeg;
    options.Quality = 9000;
    options.Flags = qvrCAVIStream::Options::FlagKeyFrames;
    options.KeyFrameInterval = 1;
    const EImageOutputStreamAVISetup setup(options);
    const std::string path = ScratchFile("mjpeg.avi");
    WriteMovie(AviStream(), path, {32, 16}, &setup, 5);

    const qvrTest::MovieContents movie = ReadMovie(path);
    EXPECT_EQ(movie.videoCodec, "mjpeg");
    EXPECT_EQ(movie.width, 32);
    EXPECT_EQ(movie.height, 16);
    EXPECT_EQ(movie.framesInHeader, 5);
    EXPECT_EQ(movie.frames.size(), 5u);
}

TEST(AVIStream, AudioStreamAddsASilentTrackAsLongAsThePictures) {
    const std::string path = ScratchFile("audio.avi");
    const auto written = WriteMovie(AviWithAudioStream(), path, {5, 3}, nullptr, 10);

    const qvrTest::MovieContents movie = ReadMovie(path);
    EXPECT_EQ(movie.frames, written);
    EXPECT_EQ(movie.audioCodec, "pcm_s16le");
    EXPECT_EQ(movie.audioRate, 44100);
    EXPECT_EQ(movie.audioChannels, 2);
    EXPECT_EQ(movie.audioTitle, "VitreaAudio");
    EXPECT_DOUBLE_EQ(movie.audioSeconds, 10 * 1764 / 44100.0);
}

TEST(AVIStream, PathThatCannotBeCreatedFailsBeforeTheMuxer) {
    const std::string blocker = ScratchFile("avi-blocker");
    qvrTest::WriteBytes(blocker, {1});
    EImageOutputHandle handle(AviStream());
    EXPECT_FALSE(handle.Open(blocker + "/movie", {4, 4}, nullptr, 25, 1));
    const EImageOutputError error = handle.GetLastError();
    EXPECT_EQ(error.Cause, FileErrorAccessDenied);
    EXPECT_EQ(error.OsError, OutputErrorBadFormat);
    EXPECT_EQ(error.Text, "Can't open " + blocker + "/movie.avi: Not a directory.");
}

TEST(AVIStream, FullDiskFailsTheMovieWithItsName) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    const std::string path = ScratchFile("full.avi");
    std::filesystem::remove(path);
    std::filesystem::create_symlink("/dev/full", path);
    EImageOutputHandle handle(AviStream());
    bool failed = !handle.Open(path, {64, 64}, nullptr, 25, 1);
    auto picture = MakeNoise(64, 64, 1);
    for (int frame = 0; frame < 50 && !failed; ++frame)
        failed = !handle.Write(*picture, frame);
    failed = failed || !handle.Close();
    EXPECT_TRUE(failed);
    const EImageOutputError error = handle.GetLastError();
    EXPECT_NE(error.Text.find(path), std::string::npos) << error.Text;
    EXPECT_NE(error.Text.find("No space left on device"), std::string::npos) << error.Text;
    std::filesystem::remove(path);
}

TEST(AVIStream, AFailedWriteEndsTheMovieAfterItsWholeFramesWithTheirIndex) {
    const std::string path = ScratchFile("cut.avi");
    EImageOutputHandle handle(AviStream());
    ASSERT_TRUE(handle.Open(path, {32, 24}, nullptr, 25, 1)) << handle.GetLastError().Text;
    // The file may grow by three frames and a half, as if the disk were full then.
    const auto frameBytes = 32u * 24u * 4u + 8u;
    rlimit previous{};
    getrlimit(RLIMIT_FSIZE, &previous);
    rlimit limit = previous;
    limit.rlim_cur = std::filesystem::file_size(path) + frameBytes * 7 / 2;
    const auto previousSignal = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
    std::vector<std::vector<std::uint32_t>> written;
    for (std::uint32_t frame = 0; frame < 10; ++frame) {
        auto picture = MakeNoise(32, 24, frame);
        if (!handle.Write(*picture, frame)) break;
        written.push_back(PixelsOf(*picture));
    }
    const std::string failure = handle.GetLastError().Text;
    EXPECT_FALSE(handle.Write(*MakeNoise(32, 24, 99), 11)) << "nothing more goes into the movie";
    EXPECT_EQ(handle.GetLastError().Text, failure);
    handle.Close();
    setrlimit(RLIMIT_FSIZE, &previous);
    std::signal(SIGXFSZ, previousSignal);
    EXPECT_EQ(written.size(), 3u);
    EXPECT_NE(failure.find("File too large"), std::string::npos) << failure;
    const qvrTest::MovieContents movie = ReadMovie(path);
    ASSERT_TRUE(movie.opened);
    EXPECT_EQ(movie.frames, written) << "the frames before the failure stay readable";
    const std::vector<std::uint8_t> file = qvrTest::ReadBytes(path);
    const std::string bytes(file.begin(), file.end());
    EXPECT_NE(bytes.find("idx1"), std::string::npos) << "the movie has its index";
}

TEST(AVIStream, UnknownCompressorFailsToOpen) {
    qvrCAVIStream::Options options;
    options.Handler = 0x21212121; // "!!!!"
    const EImageOutputStreamAVISetup setup(options);
    EXPECT_EQ(setup.GetDescription(), "Compression: !!!!");
    EImageOutputHandle handle(AviStream());
    const std::string path = ScratchFile("unknown.avi");
    EXPECT_FALSE(handle.Open(path, {4, 4}, &setup, 25, 1));
    EXPECT_EQ(handle.GetLastError().Text, "Can't open " + path + ": No compressor.");
}

TEST(AVISetup, TextHoldsTheSixOptions) {
    EImageOutputStreamAVISetup setup;
    EXPECT_EQ(setup.GetSetupString(), "AVI0|0|-1|0|0|0");
    EXPECT_EQ(setup.GetDescription(), "<Uncompressed>");
    ASSERT_TRUE(setup.SetSetupString("AVI1196444237|10|7500|204800|6|0"));
    EXPECT_EQ(setup.GetSetupString(), "AVI1196444237|10|7500|204800|6|0");
    EXPECT_EQ(setup.GetOptions().Quality, 7500);
    if (HandlerOf("mjpeg") == 1196444237) {
        EXPECT_EQ(
            setup.GetDescription(),
            "Compression: MJPEG (Motion JPEG), Quality: 75%, Key every 10th frame, Data rate: 200 KB/s");
    }

    for (const char* bad : {"AV", "AVI", "AVX0|0|-1|0|0|0", "AVI0|0|-1|0|0", "AVI0|0|x|0|0|0"}) {
        ASSERT_TRUE(setup.SetSetupString("AVI1|2|3|4|0|6"));
        EXPECT_FALSE(setup.SetSetupString(bad)) << bad;
        EXPECT_EQ(setup.GetSetupString(), "AVI0|0|-1|0|0|0") << bad;
    }
}

TEST(AVISetup, QualityMinusOneIsLeftOutOfTheDescription) {
    EImageOutputStreamAVISetup setup;
    ASSERT_TRUE(setup.SetSetupString("AVI1196444237|0|-1|0|0|0"));
    EXPECT_EQ(setup.GetDescription().find("Quality"), std::string::npos);
}

TEST(AVICompressors, ListHoldsTheCommonEncodersOnce) {
    EXPECT_EQ(HandlerOf("mjpeg"), MKTAG('M', 'J', 'P', 'G'));
    EXPECT_EQ(HandlerOf("ffv1"), MKTAG('F', 'F', 'V', '1'));
    const auto& list = qvrCAVIStream::Options::GetCompressors();
    for (const qvrCAVICompressor& compressor : list)
        EXPECT_EQ(std::count_if(
                      list.begin(), list.end(),
                      [&](const qvrCAVICompressor& other) { return other.Handler == compressor.Handler; }),
                  1)
            << compressor.Name;
    qvrCAVIStream::Options::FreeCompressors();
    EXPECT_TRUE(qvrCAVIStream::Options::GetCompressors().empty());
}

} // namespace
