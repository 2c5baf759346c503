#include "ImagingTestSupport.h"

#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"

#include <gtest/gtest.h>

#include <filesystem>

using qvrTest::MakeNumbered;
using qvrTest::MakePicture;
using qvrTest::PixelsOf;
using qvrTest::ReadBytes;
using qvrTest::ScratchFile;
using qvrTest::WriteBytes;

namespace {

constexpr std::uint32_t A = 0xFF112233;
constexpr std::uint32_t B = 0x80445566;
constexpr std::uint32_t C = 0x00778899;

struct ByteBuilder {
    ByteBuilder& Word(std::uint32_t word) {
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<std::uint8_t>(word >> shift));
        return *this;
    }
    ByteBuilder& Byte(std::uint8_t byte) {
        bytes.push_back(byte);
        return *this;
    }
    ByteBuilder& Run(std::uint8_t lengthLessOne, std::uint32_t word) {
        return Byte(lengthLessOne).Byte(0).Byte(0).Byte(0).Word(word);
    }
    std::vector<std::uint8_t> bytes;
};

std::vector<std::uint8_t> savedBytes(const EImageData& picture, const std::string& name) {
    const std::string file = ScratchFile(name);
    EImageFileResult result;
    EXPECT_TRUE(EImageFileFormat::Save(picture, file, result)) << result.text;
    return ReadBytes(file);
}

// The mode byte of row y in a saved file of the given height.
std::uint8_t rowMode(const std::vector<std::uint8_t>& bytes, long height, long y) {
    const size_t entry = 24 + static_cast<size_t>(y) * 4;
    const std::uint32_t offset =
        bytes[entry] | bytes[entry + 1] << 8 | bytes[entry + 2] << 16 | bytes[entry + 3] << 24;
    return bytes[24 + static_cast<size_t>(height) * 4 + offset];
}

// A picture with rows of every kind: flat, short runs, long runs, noise.
std::unique_ptr<EImageData> makeMixed(long width, long height) {
    auto picture = MakeNumbered(width, height);
    for (long y = 0; y < height; ++y) {
        std::uint32_t* row = picture->GetRow(y);
        for (long x = 0; x < width; ++x) {
            switch (y % 4) {
            case 0:
                row[x] = A;
                break;
            case 1:
                row[x] = x < width / 3 ? B : C + static_cast<std::uint32_t>(x / 7);
                break;
            case 2:
                row[x] = static_cast<std::uint32_t>(x * 2654435761u ^ static_cast<std::uint32_t>(y));
                break;
            default:
                break;
            }
        }
    }
    picture->position = {-12, 345};
    picture->opacity = 77;
    return picture;
}

EImageFileResult loadFails(const std::string& file, const CRect& rect = {}) {
    EImageFileResult result;
    EXPECT_FALSE(EImageFileFormat::Load(file, rect, result));
    return result;
}

} // namespace

TEST(QuickFile, WritesHeaderTableAndEveryKindOfRowByteForByte) {
    auto picture = MakePicture(5, 3,
                               {C, C, C, C, C, //
                                A, A, A, B, B, //
                                A, B, A, B, A});
    picture->position = {-2, 7};
    picture->opacity = 0x80;
    ByteBuilder expected;
    expected.Word(0x01535451).Word(5).Word(3).Word(0xFFFFFFFE).Word(7).Byte(0x80).Byte(0).Byte(0).Byte(0);
    expected.Word(0).Word(5).Word(22);
    expected.Byte(2).Word(C);
    expected.Byte(1).Run(2, A).Run(1, B);
    expected.Byte(0).Word(A).Word(B).Word(A).Word(B).Word(A);
    EXPECT_EQ(savedBytes(*picture, "kinds.qts"), expected.bytes);
}

TEST(QuickFile, FlatRowsTakeFiveBytesWhateverTheirWidth) {
    auto wide = EImageData::New({5000, 2}, EImageMemory::NoFreeing);
    wide->Fill(B);
    EXPECT_EQ(savedBytes(*wide, "wide.qts").size(), 24u + 2 * 4 + 2 * 5);

    auto narrow = MakePicture(1, 3, {A, B, C}); // one pixel is always a whole row
    EXPECT_EQ(savedBytes(*narrow, "narrow.qts").size(), 24u + 3 * 4 + 3 * 5);
}

TEST(QuickFile, RunsAreUsedOnlyWithinEightyPercentOfTheRawRow) {
    // Ten pixels leave room for 8 pixels' worth of bytes: four runs.
    auto picture = MakePicture(10, 2, {A, A, A, B, B, B, A, A, A, B, //
                                       A, A, B, A, B, A, B, A, B, A});
    const auto bytes = savedBytes(*picture, "eighty.qts");
    EXPECT_EQ(rowMode(bytes, 2, 0), 1);
    EXPECT_EQ(rowMode(bytes, 2, 1), 0);
    EXPECT_EQ(bytes.size(), 24u + 2 * 4 + (1 + 4 * 8) + (1 + 10 * 4));
}

TEST(QuickFile, RunsLongerThan256PixelsAreSplit) {
    std::vector<std::uint32_t> row(301, A);
    row.back() = B;
    const auto bytes = savedBytes(*MakePicture(301, 1, row), "split.qts");
    ASSERT_EQ(bytes.size(), 24u + 4 + 1 + 3 * 8);
    EXPECT_EQ(bytes[28], 1);
    EXPECT_EQ(bytes[29], 255);
    EXPECT_EQ(bytes[37], 43);
    EXPECT_EQ(bytes[45], 0);
}

TEST(QuickFile, RoundTripKeepsPixelsPositionAndOpacity) {
    auto picture = makeMixed(97, 41);
    const std::string file = ScratchFile("roundtrip.qts");
    EImageFileResult result;
    ASSERT_TRUE(EImageFileFormat::Save(*picture, file, result));

    EImageFileInfo info;
    ASSERT_TRUE(EImageFileFormat::QueryFileInfo(file, info, result));
    EXPECT_EQ(info.size, (CSize{97, 41}));

    auto loaded = EImageFileFormat::Load(file, {0, 0, 0, 0}, result);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(PixelsOf(*loaded), PixelsOf(*picture));
    EXPECT_EQ(loaded->position, (CPoint{-12, 345}));
    EXPECT_EQ(loaded->opacity, 77);
}

TEST(QuickFile, PartialLoadsGiveThePartAloneThroughTheRowTable) {
    auto picture = makeMixed(97, 41);
    const std::string file = ScratchFile("partial.qts");
    EImageFileResult result;
    ASSERT_TRUE(EImageFileFormat::Save(*picture, file, result));
    for (const CRect rect : {CRect{0, 0, 97, 41}, CRect{5, 0, 50, 3}, CRect{30, 17, 97, 41},
                             CRect{1, 1, 2, 40}, CRect{96, 39, 97, 41}, CRect{0, 40, 97, 41}}) {
        auto part = EImageFileFormat::Load(file, rect, result);
        ASSERT_TRUE(part) << rect.left << "," << rect.top;
        EXPECT_EQ(PixelsOf(*part), PixelsOf(*picture->Extract(rect))) << rect.left << "," << rect.top;
        EXPECT_EQ(part->opacity, 77);
    }
    auto clipped = EImageFileFormat::Load(file, {90, 35, 200, 200}, result);
    ASSERT_TRUE(clipped);
    EXPECT_EQ(PixelsOf(*clipped), PixelsOf(*picture->Extract({90, 35, 97, 41})));
}

TEST(QuickFile, ABadMarkIsRefusedByLoadAndQuery) {
    const std::string file = ScratchFile("badmark.qts");
    auto bytes = savedBytes(*MakeNumbered(4, 4), "badmark.qts");
    bytes[3] = 2;
    WriteBytes(file, bytes);
    qvrTest::TraceCapture trace;
    const EImageFileResult result = loadFails(file);
    EXPECT_EQ(result.number, EImageFileError::ReadError);
    EXPECT_EQ(result.text, "Error while reading file");
    EImageFileInfo info;
    EImageFileResult queried;
    EXPECT_FALSE(EImageFileFormat::QueryFileInfo(file, info, queried));
    EXPECT_EQ(queried.text, "Error while reading file");
    ASSERT_EQ(trace.lines.size(), 2u);
    EXPECT_EQ(trace.lines[0], "*** ERROR[EImageFileFormatQTS::QuickLoad()]: Can't read quick file \"" + file +
                                  "\": Bad file mark !.\n");
    EXPECT_EQ(trace.lines[1], "*** ERROR[EImageFileFormatQTS::QuickGetFileInfo()]: Can't read quick file \"" +
                                  file + "\": Bad file mark !.\n");
}

TEST(QuickFile, DamagedFilesFailWithTheReadErrorAndNeverReadPastTheirData) {
    const auto good = savedBytes(*makeMixed(23, 9), "damaged.qts");
    const std::string file = ScratchFile("damaged.qts");
    for (size_t length = 0; length < good.size(); ++length) {
        WriteBytes(file, std::vector<std::uint8_t>(good.begin(), good.begin() + static_cast<long>(length)));
        EXPECT_EQ(loadFails(file).number, EImageFileError::ReadError) << "cut at " << length;
    }

    auto undefinedMode = good;
    undefinedMode[24 + 9 * 4] = 3;
    WriteBytes(file, undefinedMode);
    EXPECT_EQ(loadFails(file).text, "Error while reading file");

    auto overrun = good;
    ASSERT_EQ(rowMode(good, 9, 1), 1);
    const size_t secondRow = 24 + 9 * 4 + 5; // row 0 is flat
    overrun[secondRow + 1] = 200;            // the first run now reaches past the row
    WriteBytes(file, overrun);
    EXPECT_EQ(loadFails(file).text, "Error while reading file");

    auto farTable = good;
    farTable[24 + 4 * 4 + 3] = 0x7F; // row 4 said to lie far behind the end
    WriteBytes(file, farTable);
    EXPECT_EQ(loadFails(file, {0, 4, 23, 9}).text, "Error while reading file");

    auto negative = good;
    negative[11] = 0xFF;
    WriteBytes(file, negative);
    EXPECT_EQ(loadFails(file).text, "Error while reading file");
}

TEST(QuickFile, SaveRefusesEmptyPicturesAndReportsWriteFailures) {
    EImageFileResult result;
    auto empty = EImageData::New({0, 5}, EImageMemory::NoFreeing);
    EXPECT_FALSE(EImageFileFormat::Save(*empty, ScratchFile("empty.qts"), result));
    EXPECT_EQ(result.number, EImageFileError::BadFunctionCall);

    EXPECT_FALSE(EImageFileFormat::Save(*MakeNumbered(2, 2), ScratchFile("no/such/dir/x.qts"), result));
    EXPECT_FALSE(result.text.empty());

    const std::string full = ScratchFile("full.qts");
    std::filesystem::remove(full);
    std::filesystem::create_symlink("/dev/full", full);
    qvrTest::TraceCapture trace;
    EXPECT_FALSE(EImageFileFormat::Save(*MakeNumbered(64, 64), full, result));
    EXPECT_EQ(result.text, "No space left on device");
    ASSERT_EQ(trace.lines.size(), 1u);
    EXPECT_EQ(trace.lines[0], "*** ERROR[EImageFileFormatQTS::doSave()]: Can't save quick file \"" + full +
                                  "\": No space left on device.\n");
}
