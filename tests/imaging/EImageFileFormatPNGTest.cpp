#include "EncodedTestFiles.h"
#include "ImagingTestSupport.h"

#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <zlib.h>

using namespace qvrTest;

namespace {

std::unique_ptr<EImageData> loadPng(const Bytes& bytes, EImageFileResult& result) {
    const std::string path = ScratchFile("picture.png");
    WriteBytes(path, bytes);
    return EImageFileFormat::Load(path, {0, 0, 0, 0}, result);
}

PngPicture twoByTwo(int colourType, int bitDepth, Bytes rows) {
    PngPicture picture;
    picture.width = picture.height = 2;
    picture.colourType = colourType;
    picture.bitDepth = bitDepth;
    picture.rows = std::move(rows);
    return picture;
}

// Noise of 13 by 11 RGB pixels, stored plain or interlaced.
PngPicture noise(bool interlaced) {
    PngPicture picture;
    picture.width = 13;
    picture.height = 11;
    picture.interlaced = interlaced;
    std::uint32_t seed = 7;
    for (size_t i = 0; i < 13 * 11 * 3; ++i)
        picture.rows.push_back(static_cast<std::uint8_t>((seed = seed * 1664525u + 1013904223u) >> 24));
    return picture;
}

// Puts a new size into the header chunk and mends the chunk's check sum.
Bytes withHeaderSize(Bytes bytes, std::uint32_t width, std::uint32_t height) {
    for (int byte = 0; byte < 4; ++byte) {
        bytes[16 + byte] = static_cast<std::uint8_t>(width >> (24 - 8 * byte));
        bytes[20 + byte] = static_cast<std::uint8_t>(height >> (24 - 8 * byte));
    }
    const uLong sum = crc32(0, bytes.data() + 12, 17);
    for (int byte = 0; byte < 4; ++byte)
        bytes[29 + byte] = static_cast<std::uint8_t>(sum >> (24 - 8 * byte));
    return bytes;
}

} // namespace

TEST(PngFormat, EveryColourTypeGives8BitChannelsWithAlpha) {
    PngPicture palette = twoByTwo(PNG_COLOR_TYPE_PALETTE, 2, {0x10, 0xB0}); // indices 0 1 / 2 3
    palette.palette = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}};
    palette.transparency = {0, 0x80};
    const struct {
        PngPicture picture;
        std::vector<std::uint32_t> words;
    } cases[] = {
        {twoByTwo(PNG_COLOR_TYPE_GRAY, 8, {0x10, 0x20, 0x30, 0x40}),
         {0xFF101010, 0xFF202020, 0xFF303030, 0xFF404040}},
        {twoByTwo(PNG_COLOR_TYPE_GRAY, 16, {0x12, 0xFF, 0xAB, 0x01, 0, 0, 0xFF, 0xFF}),
         {0xFF121212, 0xFFABABAB, 0xFF000000, 0xFFFFFFFF}},
        {twoByTwo(PNG_COLOR_TYPE_GRAY_ALPHA, 8, {0x10, 0x00, 0x20, 0x80, 0x30, 0xFF, 0x40, 0x01}),
         {0x00101010, 0x80202020, 0xFF303030, 0x01404040}},
        {twoByTwo(PNG_COLOR_TYPE_RGB, 8, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}),
         {0xFF010203, 0xFF040506, 0xFF070809, 0xFF0A0B0C}},
        {twoByTwo(PNG_COLOR_TYPE_RGB_ALPHA, 16,
                  {1, 0xFF, 2,  0xFF, 3,  0xFF, 4,  0xFF, 5,  0, 6,  0, 7,  0, 8,  0,
                   9, 0,    10, 0,    11, 0,    12, 0,    13, 0, 14, 0, 15, 0, 16, 0}),
         {0x04010203, 0x08050607, 0x0C090A0B, 0x100D0E0F}},
        {palette, {0x00010203, 0x80040506, 0xFF070809, 0xFF0A0B0C}},
    };
    for (const auto& png : cases) {
        EImageFileResult result;
        const auto picture = loadPng(EncodePng(png.picture), result);
        ASSERT_NE(picture, nullptr) << result.text;
        EXPECT_EQ(PixelsOf(*picture), png.words) << "colour type " << png.picture.colourType;
        EXPECT_TRUE(picture->HasAlpha());
    }
}

TEST(PngFormat, InterlacedFileGivesThePlainFilesPixels) {
    EImageFileResult result;
    const auto plain = loadPng(EncodePng(noise(false)), result);
    const auto interlaced = loadPng(EncodePng(noise(true)), result);
    ASSERT_TRUE(plain && interlaced);
    EXPECT_EQ(PixelsOf(*interlaced), PixelsOf(*plain));
    EXPECT_EQ(plain->GetRow(0)[0] >> 24, 0xFFu);
}

TEST(PngFormat, BrokenFilesFailWithoutTakingMemory) {
    const Bytes good = EncodePng(noise(false));
    Bytes badSum = good;
    badSum[good.size() - 20] ^= 0x55;
    Bytes notPng = good;
    notPng[1] = 'J';
    const Bytes broken[] = {{},
                            notPng,
                            Bytes(good.begin(), good.begin() + 30),
                            Bytes(good.begin(), good.begin() + static_cast<long>(good.size() / 2)),
                            badSum,
                            withHeaderSize(good, 20000, 20000)};
    for (const Bytes& bytes : broken) {
        TraceCapture trace;
        EImageFileResult result;
        EXPECT_EQ(loadPng(bytes, result), nullptr) << bytes.size();
        EXPECT_EQ(result.text, "Error while reading file");
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    EXPECT_LT(usage.ru_maxrss, 512L * 1024);
}
