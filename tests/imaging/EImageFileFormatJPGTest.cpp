#include "EncodedTestFiles.h"
#include "ImagingTestSupport.h"

#include "foundation/EPrefsEImage.h"
#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sys/resource.h>

using namespace qvrTest;

namespace {

constexpr std::uint32_t Quarters[4] = {0xFF2040C0, 0xFFC04020, 0xFF40C020, 0xFFF0F0F0};

// 32 by 32 pixels, each 16 by 16 quarter of one colour, so that JPEG keeps them nearly exact.
std::vector<std::uint32_t> quarterPixels() {
    std::vector<std::uint32_t> pixels;
    for (long y = 0; y < 32; ++y)
        for (long x = 0; x < 32; ++x)
            pixels.push_back(Quarters[(y / 16) * 2 + x / 16]);
    return pixels;
}

bool isNear(std::uint32_t actual, std::uint32_t expected) {
    for (int shift = 0; shift < 32; shift += 8)
        if (std::abs(static_cast<int>((actual >> shift) & 0xFF) -
                     static_cast<int>((expected >> shift) & 0xFF)) > 6)
            return false;
    return true;
}

std::string fileOf(const std::string& name, const Bytes& bytes) {
    const std::string path = ScratchFile(name);
    WriteBytes(path, bytes);
    return path;
}

Bytes::iterator findMarker(Bytes& bytes, std::uint8_t code) {
    const std::uint8_t marker[] = {0xFF, code};
    return std::search(bytes.begin(), bytes.end(), std::begin(marker), std::end(marker));
}

// Gives the frame header of a file made by libjpeg another size.
Bytes withFrameSize(Bytes bytes, std::uint16_t width, std::uint16_t height) {
    const auto frame = findMarker(bytes, 0xC0);
    frame[5] = static_cast<std::uint8_t>(height >> 8);
    frame[6] = static_cast<std::uint8_t>(height);
    frame[7] = static_cast<std::uint8_t>(width >> 8);
    frame[8] = static_cast<std::uint8_t>(width);
    return bytes;
}

// The failure of a load, checked to leave no picture.
std::string loadFailure(const std::string& path) {
    EImageFileResult result;
    EXPECT_EQ(EImageFileFormat::Load(path, {0, 0, 0, 0}, result), nullptr) << path;
    return result.text;
}

} // namespace

TEST(JpegFormat, ColourAndGreyFilesLoadWithASolidAlphaChannel) {
    TraceCapture trace;
    EImageFileResult result;
    const auto colour = EImageFileFormat::Load(fileOf("colour.jpg", EncodeJpeg(32, 32, quarterPixels())),
                                               {0, 0, 0, 0}, result);
    ASSERT_NE(colour, nullptr) << result.text;
    EXPECT_TRUE(colour->HasAlpha());
    const std::vector<std::uint32_t> expected = quarterPixels(), pixels = PixelsOf(*colour);
    ASSERT_EQ(pixels.size(), expected.size());
    for (size_t i = 0; i < pixels.size(); ++i)
        ASSERT_TRUE(isNear(pixels[i], expected[i]) && pixels[i] >> 24 == 0xFF)
            << i << ": " << std::hex << pixels[i];
    EXPECT_NE(trace.lines.back().find("alpha-channel; making a solid maximum alpha channel"),
              std::string::npos);

    const auto grey = EImageFileFormat::Load(
        fileOf("grey.jpg", EncodeJpeg(32, 32, quarterPixels(), JpegColours::Grey)), {0, 0, 0, 0}, result);
    ASSERT_NE(grey, nullptr) << result.text;
    for (std::uint32_t pixel : PixelsOf(*grey))
        ASSERT_EQ(pixel, 0xFF000000u | (pixel & 0xFF) * 0x010101u) << std::hex << pixel;
    EXPECT_TRUE(isNear(grey->GetRow(0)[0], 0xFF000000u | (Quarters[0] & 0xFF) * 0x010101u));
}

TEST(JpegFormat, HeaderScanTakesTheFirstMarkerOfTheFrameFamilyAndRefusesBrokenChunks) {
    const struct {
        Bytes bytes;
        CSize size; // or the failure's debug line
        const char* trace;
    } cases[] = {
        {EncodeJpeg(40, 24, std::vector<std::uint32_t>(960)), {40, 24}, nullptr},
        // An application chunk, fill bytes, then a table chunk of the family, whose bytes are read as a size.
        {{0xFF, 0xD8, 0xFF, 0xE1, 0, 4, 0xAA, 0xBB, 0, 0xFF, 0xFF, 0xC4, 0, 0x11, 8, 0, 5, 0, 7},
         {7, 5},
         nullptr},
        {{}, {}, nullptr},
        {{0xFF, 0xD9, 0xFF, 0xC0}, {}, "File contains invalid chunks"},
        {{0xFF, 0xD8, 0xFF, 0xDA, 0x00, 0x08}, {}, "File contains invalid chunks"},
        {{0xFF, 0xD8, 0xFF, 0xE0, 0x00, 0x01, 0xFF, 0xC0}, {}, "File contains bad sized chunks"},
        {{0xFF, 0xD8, 0xFF, 0xE0, 0x00, 0x10, 0x4A, 0x46}, {}, "File contains invalid chunks"},
    };
    for (const auto& file : cases) {
        TraceCapture trace;
        EImageFileInfo info;
        EImageFileResult result;
        const bool known = EImageFileFormat::QueryFileInfo(fileOf("scan.jpg", file.bytes), info, result);
        EXPECT_EQ(known, file.size.cx > 0);
        EXPECT_EQ(info.size, file.size);
        EXPECT_EQ(result.text, known ? "" : "Error while reading file");
        if (file.trace) {
            EXPECT_NE(trace.lines.at(0).find(file.trace), std::string::npos) << trace.lines[0];
        }
    }
}

TEST(JpegFormat, BrokenDataFailsTheLoadInsteadOfMakingUpPixels) {
    const Bytes good = EncodeJpeg(32, 32, quarterPixels());
    Bytes endTooEarly = good;
    const auto scan = findMarker(endTooEarly, 0xDA);
    std::fill(scan + 20, endTooEarly.end(), 0xD9);
    scan[20] = 0xFF;
    const Bytes broken[] = {Bytes(good.begin(), good.begin() + static_cast<long>(good.size() * 6 / 10)),
                            Bytes(good.begin(), good.begin() + 200), endTooEarly,
                            withFrameSize(good, 20000, 20000)};
    for (const Bytes& bytes : broken) {
        TraceCapture trace;
        EXPECT_EQ(loadFailure(fileOf("data.jpg", bytes)), "Error while reading file");
        ASSERT_FALSE(trace.lines.empty());
        EXPECT_NE(trace.lines.back().find("*** ERROR[EImageFileFormat::LoadUsingPaintLib()]: Can't load"),
                  std::string::npos);
    }
    // The 20000 by 20000 picture was made, but only what was decoded of it took memory.
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    EXPECT_LT(usage.ru_maxrss, 1024L * 1024);
}

TEST(JpegFormat, PictureLargerThanTheMemoryIsRefusedAfterFreeingMemory) {
    FakeImageCache cache;
    EPrefsEImage::SetMemoryControl(false, EPrefsEImage::DefaultMinFreeMem, EPrefsEImage::DefaultPhysicalOnly);
    const std::string failure =
        loadFailure(fileOf("huge.jpg", withFrameSize(EncodeJpeg(32, 32, quarterPixels()), 65500, 65500)));
    EPrefsEImage::SetMemoryControl(true, EPrefsEImage::DefaultMinFreeMem, EPrefsEImage::DefaultPhysicalOnly);
    EXPECT_EQ(failure, "Out of memory");
    EXPECT_EQ(cache.freeRequests, std::vector<long>{0});
}
