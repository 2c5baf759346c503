// The bundled showcase project, rendered by its own script over a few frames:
// the project file must stay loadable and every object in it must render.

#include "QvrProgram.h"
#include "foundation/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

// The blue, green and red bytes of a pixel of a bottom-up 24-bit BMP file.
std::string bmpPixel(const std::string& bytes, long width, long height, long x, long y) {
    const auto byteAt = [&](size_t at) { return static_cast<std::uint8_t>(bytes.at(at)); };
    const size_t pixels = byteAt(10) | byteAt(11) << 8 | byteAt(12) << 16 | byteAt(13) << 24;
    const size_t stride = static_cast<size_t>((width * 3 + 3) / 4 * 4);
    return bytes.substr(pixels + static_cast<size_t>(height - 1 - y) * stride + static_cast<size_t>(x) * 3, 3);
}

} // namespace

TEST(ShowcaseRun, BothSaversRenderTheProjectAsShipped) {
    ScratchDirectory work("showcase");
    const QvrRunResult run = RunShell("QVR_RENDER_OPTIONS='--first 24 --last 25' bash '" QVR_SOURCE_DIR
                                      "/examples/showcase/render.sh' '" QVR_PROGRAM "' '" +
                                      work.Path.string() + "'");
    ASSERT_EQ(run.ExitCode, 0) << run.Output;

    const std::string frame = ScratchDirectory::ReadAll(work.File("output/frames/frame0025.bmp"));
    ASSERT_EQ(frame.size(), 54u + 1920u * 3u * 1080u);
    // The backdrop shows in the top left corner, the cropped footage beside it.
    EXPECT_EQ(bmpPixel(frame, 1920, 1080, 5, 5), std::string("\x3C\x1E\x14", 3));
    EXPECT_NE(bmpPixel(frame, 1920, 1080, 100, 100), std::string("\x3C\x1E\x14", 3));
    EXPECT_FALSE(std::filesystem::exists(work.File("output/frames/frame0023.bmp")));

    const QvrRunResult probe = RunShell("ffprobe -v error -count_frames -show_entries "
                                        "stream=nb_read_frames,width,height,r_frame_rate -of csv=p=0 '" +
                                        work.File("output/showcase.avi") + "'");
    EXPECT_EQ(probe.Output, "1920,1080,25/1,2\n");
}
