#include "ImagingTestSupport.h"

#include "imaging/EImageFileFormat.h"

#include <gtest/gtest.h>

using qvrTest::MakePicture;
using qvrTest::PixelsOf;
using qvrTest::ScratchFile;
using Bytes = std::vector<std::uint8_t>;

namespace {

constexpr std::uint32_t A = 0xFF112233, B = 0x80445566, C = 0x00778899;

void addWord(Bytes& bytes, std::uint32_t word) {
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<std::uint8_t>(word >> shift));
}

Bytes savedBytes(const EImageData& picture, const std::string& file) {
    EImageFileResult result;
    EXPECT_TRUE(EImageFileFormat::Save(picture, file, result)) << result.text;
    return qvrTest::ReadBytes(file);
}

// Rows of every kind: flat, long runs, noise.
std::unique_ptr<EImageData> makeMixed(long width, long height) {
    auto picture = qvrTest::MakeNoise(width, height, 9);
    for (long y = 0; y < height; y += 3)
        std::fill_n(picture->GetRow(y), width, A);
    for (long y = 1; y < height; y += 3)
        for (long x = 0; x < width; ++x)
            picture->GetRow(y)[x] = x < width / 3 ? B : C + static_cast<std::uint32_t>(x / 7);
    picture->position = {-12, 345};
    picture->opacity = 77;
    return picture;
}

std::string loadFailure(const std::string& file, const CRect& rect = {}) {
    EImageFileResult result;
    EXPECT_FALSE(EImageFileFormat::Load(file, rect, result));
    return result.text;
}

} // namespace

TEST(QuickFile, WritesHeaderTableAndEveryKindOfRowByteForByte) {
    auto picture = MakePicture(5, 3, {C, C, C, C, C, A, A, A, B, B, A, B, A, B, A});
    picture->position = {-2, 7};
    picture->opacity = 0x80;
    Bytes expected;
    auto words = [&](std::initializer_list<std::uint32_t> list) {
        for (std::uint32_t word : list)
            addWord(expected, word);
    };
    words({0x01535451u, 5u, 3u, 0xFFFFFFFEu, 7u, 0x80u}); // header, the opacity followed by zeros
    words({0u, 5u, 22u});                                 // row table
    expected.push_back(2);                                // flat row
    words({C});
    expected.push_back(1); // runs of 3 x A and 2 x B: length - 1, three zeros, the word
    words({2u, A, 1u, B});
    expected.push_back(0); // raw row
    words({A, B, A, B, A});
    EXPECT_EQ(savedBytes(*picture, ScratchFile("kinds.qts")), expected);
}

TEST(QuickFile, RowsTakeRunsOnlyWithinEightyPercentAndSplitRunsAt256) {
    auto flat = EImageData::New({5000, 2}, EImageMemory::NoFreeing);
    EXPECT_EQ(savedBytes(*flat, ScratchFile("flat.qts")).size(), 24u + 2 * 4 + 2 * 5);
    // Ten pixels leave room for four runs: the first row has four, the second five.
    auto tens = MakePicture(10, 2, {A, A, A, B, B, B, A, A, A, B, A, A, B, A, B, A, B, A, B, A});
    const Bytes bytes = savedBytes(*tens, ScratchFile("eighty.qts"));
    ASSERT_EQ(bytes.size(), 24u + 2 * 4 + (1 + 4 * 8) + (1 + 10 * 4));
    EXPECT_EQ(bytes[32], 1);
    EXPECT_EQ(bytes[32 + 33], 0);
    std::vector<std::uint32_t> row(301, A);
    row.back() = B;
    const Bytes split = savedBytes(*MakePicture(301, 1, row), ScratchFile("split.qts"));
    EXPECT_EQ((Bytes{split[28], split[29], split[37], split[45]}), (Bytes{1, 255, 43, 0}));
}

TEST(QuickFile, LoadsTheWholePictureOrAnyPartThroughTheRowTable) {
    auto picture = makeMixed(97, 41);
    const std::string file = ScratchFile("mixed.qts");
    savedBytes(*picture, file);
    EImageFileResult result;
    EImageFileInfo info;
    ASSERT_TRUE(EImageFileFormat::QueryFileInfo(file, info, result));
    EXPECT_EQ(info.size, (CSize{97, 41}));
    auto whole = EImageFileFormat::Load(file, {}, result);
    EXPECT_EQ(PixelsOf(*whole), PixelsOf(*picture));
    EXPECT_EQ(whole->position, picture->position);
    EXPECT_EQ(whole->opacity, 77);
    for (const CRect rect :
         {CRect{5, 0, 50, 3}, CRect{30, 17, 97, 41}, CRect{1, 1, 2, 40}, CRect{0, 40, 97, 41}}) {
        auto part = EImageFileFormat::Load(file, rect, result);
        EXPECT_EQ(PixelsOf(*part), PixelsOf(*picture->Extract(rect))) << rect.left << "," << rect.top;
    }
    EXPECT_EQ(PixelsOf(*EImageFileFormat::Load(file, {90, 35, 200, 200}, result)),
              PixelsOf(*picture->Extract({90, 35, 97, 41})));
}

TEST(QuickFile, BadMarksAndDamagedFilesFailWithTheReadError) {
    const std::string file = ScratchFile("damaged.qts");
    const Bytes good = savedBytes(*makeMixed(23, 9), file);
    for (size_t length = 0; length < good.size(); ++length) {
        qvrTest::WriteBytes(file, Bytes(good.begin(), good.begin() + static_cast<long>(length)));
        EXPECT_EQ(loadFailure(file), "Error while reading file") << "cut at " << length;
    }
    auto damaged = [&](size_t at, std::uint8_t value) {
        Bytes bytes = good;
        bytes[at] = value;
        qvrTest::WriteBytes(file, bytes);
    };
    const size_t rows = 24 + 9 * 4;
    damaged(rows, 3); // undefined row mode
    EXPECT_EQ(loadFailure(file), "Error while reading file");
    damaged(rows + 5 + 1, 200); // row 1's first run reaches past the row
    EXPECT_EQ(loadFailure(file), "Error while reading file");
    damaged(24 + 4 * 4 + 3, 0x7F); // row 4 said to lie far behind the end
    EXPECT_EQ(loadFailure(file, {0, 4, 23, 9}), "Error while reading file");
    damaged(11, 0xFF); // negative height
    EXPECT_EQ(loadFailure(file), "Error while reading file");

    damaged(3, 2);
    qvrTest::TraceCapture trace;
    EXPECT_EQ(loadFailure(file), "Error while reading file");
    EImageFileInfo info;
    EImageFileResult result;
    EXPECT_FALSE(EImageFileFormat::QueryFileInfo(file, info, result));
    EXPECT_EQ(trace.lines,
              (std::vector<std::string>{
                  "*** ERROR[EImageFileFormatQTS::QuickLoad()]: Can't read quick file \"" + file +
                      "\": Bad file mark !.\n",
                  "*** ERROR[EImageFileFormatQTS::QuickGetFileInfo()]: Can't read quick file \"" + file +
                      "\": Bad file mark !.\n"}));
}

TEST(QuickFile, SaveRefusesEmptyPicturesAndReportsWriteFailures) {
    EImageFileResult result;
    EXPECT_FALSE(EImageFileFormat::Save(*EImageData::New({0, 5}, EImageMemory::NoFreeing),
                                        ScratchFile("empty.qts"), result));
    EXPECT_EQ(result.number, EImageFileError::BadFunctionCall);
    const std::string full = ScratchFile("full.qts");
    std::filesystem::remove(full);
    std::filesystem::create_symlink("/dev/full", full);
    qvrTest::TraceCapture trace;
    EXPECT_FALSE(EImageFileFormat::Save(*makeMixed(64, 64), full, result));
    EXPECT_EQ(result.text, "No space left on device");
    EXPECT_EQ(trace.lines,
              std::vector<std::string>{"*** ERROR[EImageFileFormatQTS::doSave()]: Can't save quick "
                                       "file \"" +
                                       full + "\": No space left on device.\n"});
}
