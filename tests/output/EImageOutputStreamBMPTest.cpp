#include "OutputTestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using qvrTest::MakePicture;
using qvrTest::ReadBytes;
using qvrTest::ScratchFile;
using Bytes = std::vector<std::uint8_t>;

using qvrTest::BmpSequence;

// The 54 header bytes of a 24-bit picture of the size, the pixel rows `rowBytes` long.
Bytes Headers(std::uint8_t width, std::uint8_t height, std::uint8_t rowBytes) {
    const auto fileSize = static_cast<std::uint8_t>(54 + rowBytes * height);
    Bytes bytes = {'B', 'M', fileSize, 0,     0, 0, 0, 0,      0, 0, 54, 0, 0, 0,  40,
                   0,   0,   0,        width, 0, 0, 0, height, 0, 0, 0,  1, 0, 24, 0};
    bytes.resize(54, 0);
    return bytes;
}

TEST(BMPWriter, NarrowRowsArePaddedWithSpacesBottomRowFirst) {
    const std::string path = ScratchFile("narrow.bmp");
    auto picture = MakePicture(1, 2, {0xFF112233, 0x80445566});
    EImageOutputError error;
    ASSERT_TRUE(BmpSequence().WriteImageFile(path, *picture, error));

    Bytes expected = Headers(1, 2, 4);
    const Bytes pixels = {0x66, 0x55, 0x44, 0x20, 0x33, 0x22, 0x11, 0x20};
    expected.insert(expected.end(), pixels.begin(), pixels.end());
    EXPECT_EQ(ReadBytes(path), expected);
}

TEST(BMPWriter, RowsOfFourPixelsNeedNoPadding) {
    const std::string path = ScratchFile("four.bmp");
    auto picture = MakePicture(4, 1, {0x00010203, 0x00040506, 0x00070809, 0x000A0B0C});
    EImageOutputError error;
    ASSERT_TRUE(BmpSequence().WriteImageFile(path, *picture, error));

    Bytes expected = Headers(4, 1, 12);
    const Bytes pixels = {3, 2, 1, 6, 5, 4, 9, 8, 7, 12, 11, 10};
    expected.insert(expected.end(), pixels.begin(), pixels.end());
    EXPECT_EQ(ReadBytes(path), expected);
}

TEST(BMPWriter, WidthTwoTakesTwoPadBytes) {
    const std::string path = ScratchFile("two.bmp");
    auto picture = MakePicture(2, 1, {0x00ABCDEF, 0x00123456});
    EImageOutputError error;
    ASSERT_TRUE(BmpSequence().WriteImageFile(path, *picture, error));
    const Bytes bytes = ReadBytes(path);
    ASSERT_EQ(bytes.size(), 62u);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 54), Headers(2, 1, 8));
    EXPECT_EQ(Bytes(bytes.begin() + 54, bytes.end()),
              (Bytes{0xEF, 0xCD, 0xAB, 0x56, 0x34, 0x12, 0x20, 0x20}));
}

TEST(BMPWriter, ATallPictureKeepsEveryRowInItsPlace) {
    // 1001 pixels make rows of 3003 bytes and a pad byte; 700 rows are more than one write's worth.
    const long width = 1001;
    const long height = 700;
    std::vector<std::uint32_t> words(static_cast<size_t>(width * height));
    for (size_t i = 0; i < words.size(); ++i) words[i] = static_cast<std::uint32_t>(i * 2654435761u);
    const std::string path = ScratchFile("tall.bmp");
    EImageOutputError error;
    ASSERT_TRUE(BmpSequence().WriteImageFile(path, *MakePicture(width, height, words), error));

    const Bytes bytes = ReadBytes(path);
    const size_t rowBytes = 3004;
    ASSERT_EQ(bytes.size(), 54 + rowBytes * height);
    for (long y : {0L, 1L, 348L, 349L, 350L, 698L, 699L}) {
        const size_t row = 54 + static_cast<size_t>(height - 1 - y) * rowBytes;
        for (long x : {0L, 1000L}) {
            const std::uint32_t word = words[static_cast<size_t>(y * width + x)];
            const size_t at = row + static_cast<size_t>(x) * 3;
            EXPECT_EQ(Bytes(bytes.begin() + at, bytes.begin() + at + 3),
                      (Bytes{static_cast<std::uint8_t>(word), static_cast<std::uint8_t>(word >> 8),
                             static_cast<std::uint8_t>(word >> 16)}))
                << x << "," << y;
        }
        EXPECT_EQ(bytes[row + rowBytes - 1], 0x20) << y;
    }
}

TEST(BMPWriter, FileThatCannotBeOpenedFillsTheRecord) {
    const std::string directory = ScratchFile("bmp-missing-dir");
    std::filesystem::remove_all(directory);
    auto picture = MakePicture(1, 1, {0});
    EImageOutputError error;
    EXPECT_FALSE(BmpSequence().WriteImageFile(directory + "/x.bmp", *picture, error));
    EXPECT_EQ(error.Cause, FileErrorNotFound);
    EXPECT_EQ(error.OsError, ENOENT);
    EXPECT_EQ(error.Text, directory + "/x.bmp");
}

} // namespace
