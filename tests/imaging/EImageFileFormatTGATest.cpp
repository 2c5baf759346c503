#include "ImagingTestSupport.h"

#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sys/resource.h>

using namespace qvrTest;

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t A = 0xFF102030, B = 0xFF405060, C = 0xFF708090;
constexpr long Width = 3, Height = 2;
// Top row first; in bottom-up order the run of C goes on from the bottom row into the top row.
const std::vector<std::uint32_t> Picture = {C, A, A, B, C, C};
constexpr std::uint8_t MapFirst = 2;

struct TgaLayout {
    std::uint8_t type;
    std::uint8_t depth;
    bool topDown;
};

void append(Bytes& bytes, std::initializer_list<long> values) {
    for (long value : values)
        bytes.push_back(static_cast<std::uint8_t>(value));
}

// The bytes of one pixel in the layout; a mapped pixel is its colour's place in the colour map.
Bytes pixelBytes(std::uint32_t word, const TgaLayout& layout) {
    switch (layout.type & 7) {
    case 1:
        return {static_cast<std::uint8_t>(MapFirst + (word == A ? 0 : word == B ? 1 : 2))};
    case 3:
        return {static_cast<std::uint8_t>(word)};
    }
    Bytes bytes;
    for (int byte = 0; byte < (layout.depth + 7) / 8; ++byte)
        bytes.push_back(static_cast<std::uint8_t>(word >> (8 * byte)));
    return bytes;
}

// Runs of equal pixels become run packets, the rest raw packets of one pixel.
Bytes runLengthCoded(const std::vector<Bytes>& pixels) {
    Bytes bytes;
    for (size_t i = 0; i < pixels.size();) {
        size_t run = 1;
        while (i + run < pixels.size() && pixels[i + run] == pixels[i] && run < 128)
            ++run;
        bytes.push_back(static_cast<std::uint8_t>(run > 1 ? 0x80 | (run - 1) : 0));
        bytes.insert(bytes.end(), pixels[i].begin(), pixels[i].end());
        i += run;
    }
    return bytes;
}

Bytes encodeTga(const TgaLayout& layout, const std::vector<std::uint32_t>& words) {
    const bool mapped = (layout.type & 7) == 1;
    Bytes bytes;
    append(bytes, {2,
                   mapped ? 1 : 0,
                   layout.type,
                   MapFirst,
                   0,
                   mapped ? 3 : 0,
                   0,
                   mapped ? 24 : 0,
                   0,
                   0,
                   0,
                   0,
                   Width,
                   0,
                   Height,
                   0,
                   layout.depth,
                   layout.topDown ? 0x20 : 0,
                   'i',
                   'd'});
    if (mapped)
        for (std::uint32_t colour : {A, B, C})
            append(bytes, {colour & 0xFF, colour >> 8 & 0xFF, colour >> 16 & 0xFF});
    std::vector<Bytes> pixels;
    for (long row = 0; row < Height; ++row)
        for (long x = 0; x < Width; ++x)
            pixels.push_back(pixelBytes(
                words[static_cast<size_t>((layout.topDown ? row : Height - 1 - row) * Width + x)], layout));
    Bytes data = runLengthCoded(pixels);
    if (!(layout.type & 8)) {
        data.clear();
        for (const Bytes& pixel : pixels)
            data.insert(data.end(), pixel.begin(), pixel.end());
    }
    bytes.insert(bytes.end(), data.begin(), data.end());
    return bytes;
}

std::unique_ptr<EImageData> loadTga(const Bytes& bytes, EImageFileResult& result, CRect rect = {0, 0, 0, 0}) {
    const std::string path = ScratchFile("picture.tga");
    WriteBytes(path, bytes);
    return EImageFileFormat::Load(path, rect, result);
}

} // namespace

TEST(TgaFormat, EverySupportedTypeAndRowOrderGivesThePicture) {
    std::vector<std::uint32_t> grey;
    for (std::uint32_t word : Picture)
        grey.push_back(0xFF000000u | (word & 0xFF) * 0x010101u);
    for (const auto& [type, depth] :
         {std::pair{1, 8}, {9, 8}, {2, 24}, {2, 32}, {10, 24}, {10, 32}, {3, 8}, {11, 8}})
        for (bool topDown : {false, true}) {
            EImageFileResult result;
            const auto picture = loadTga(
                encodeTga({static_cast<std::uint8_t>(type), static_cast<std::uint8_t>(depth), topDown},
                          Picture),
                result);
            ASSERT_NE(picture, nullptr) << type << ": " << result.text;
            EXPECT_EQ(PixelsOf(*picture), (type & 7) == 3 ? grey : Picture)
                << "type " << type << " depth " << depth << " top-down " << topDown;
        }
}

TEST(TgaFormat, AlphaIsKeptFromFilesOf16And32Bits) {
    EImageFileResult result;
    const std::vector<std::uint32_t> translucent = {0x80102030, 0x00405060, 0xFF708090, 0x7F000000, 1, 2};
    const auto deep = loadTga(encodeTga({2, 32, true}, translucent), result);
    ASSERT_NE(deep, nullptr);
    EXPECT_EQ(PixelsOf(*deep), translucent);

    // A1R5G5B5: white without the alpha bit, pure blue, green and red with it; each channel widened to 8
    // bits.
    const std::vector<std::uint32_t> packed = {0x7FFF, 0x801F, 0x83E0, 0xFC00, 0x0421, 0x8000};
    const std::vector<std::uint32_t> widened = {0x00FFFFFF, 0xFF0000FF, 0xFF00FF00,
                                                0xFFFF0000, 0x00080808, 0xFF000000};
    const auto shallow = loadTga(encodeTga({2, 16, true}, packed), result);
    ASSERT_NE(shallow, nullptr);
    EXPECT_EQ(PixelsOf(*shallow), widened);
}

TEST(TgaFormat, RectangleLoadIsThePartOfThePicture) {
    EImageFileResult result;
    const auto part = loadTga(encodeTga({10, 24, false}, Picture), result, {1, -1, 3, 1});
    ASSERT_NE(part, nullptr);
    EXPECT_EQ(PixelsOf(*part), (std::vector<std::uint32_t>{A, A}));
    // A part of a picture without alpha gets the solid alpha channel too.
    const auto fifteen =
        loadTga(encodeTga({2, 15, true}, std::vector<std::uint32_t>(6, 0x7FFF)), result, {0, 0, 1, 1});
    ASSERT_NE(fifteen, nullptr);
    EXPECT_EQ(fifteen->GetRow(0)[0], 0xFFFFFFFFu);
}

TEST(TgaFormat, BrokenFilesFailWithoutTakingMemory) {
    const Bytes good = encodeTga({10, 24, false}, Picture);
    Bytes unknownType = good;
    unknownType[2] = 5;
    Bytes noDepth = encodeTga({2, 24, false}, Picture);
    noDepth[16] = 12;
    const Bytes broken[] = {{},
                            Bytes(good.begin(), good.begin() + 15),
                            Bytes(good.begin(), good.end() - 1),
                            Bytes(good.begin(), good.begin() + 30),
                            unknownType,
                            noDepth,
                            [&] {
                                Bytes huge = good;
                                huge[12] = huge[13] = huge[14] = huge[15] = 0x4E; // 20046 by 20046
                                return huge;
                            }()};
    for (const Bytes& bytes : broken) {
        TraceCapture trace;
        EImageFileResult result;
        EXPECT_EQ(loadTga(bytes, result), nullptr) << bytes.size();
        EXPECT_EQ(result.text, "Error while reading file");
    }
    Bytes empty = good;
    empty[12] = empty[13] = 0; // 0 by 2
    EImageFileResult refused;
    EXPECT_EQ(loadTga(empty, refused), nullptr);
    EXPECT_EQ(refused.text, "The picture in \"" + ScratchFile("picture.tga") + "\" is empty: 0 by 2 pixels");
    EImageFileInfo info;
    EXPECT_FALSE(EImageFileFormat::QueryFileInfo(ScratchFile("picture.tga"), info, refused));
    TraceCapture trace;
    EImageFileResult result;
    loadTga(unknownType, result);
    ASSERT_FALSE(trace.lines.empty());
    EXPECT_NE(trace.lines.back().find("Unknown TGA image type."), std::string::npos);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    EXPECT_LT(usage.ru_maxrss, 512L * 1024);
}
