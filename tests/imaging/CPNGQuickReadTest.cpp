#include "EncodedTestFiles.h"
#include "ImagingTestSupport.h"

#include "imaging/CPNGQuickRead.h"
#include "imaging/EImageData.h"

#include <gtest/gtest.h>

#include <string>
#include <zlib.h>

using namespace qvrTest;

namespace {

// A PNG put together chunk by chunk, so that the filters, the chunk layout
// and the faults are the test's own choice.
class HandMadePng {
public:
    HandMadePng(std::uint32_t width, std::uint32_t height, std::uint8_t colourType, std::uint8_t depth = 8,
                std::uint8_t interlace = 0) {
        bytes = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
        Bytes header;
        appendWord(header, width);
        appendWord(header, height);
        header.insert(header.end(), {depth, colourType, 0, 0, interlace});
        Add("IHDR", header);
    }

    void Add(const std::string& type, const Bytes& data) {
        Bytes chunk(type.begin(), type.end());
        chunk.insert(chunk.end(), data.begin(), data.end());
        appendWord(bytes, static_cast<std::uint32_t>(data.size()));
        bytes.insert(bytes.end(), chunk.begin(), chunk.end());
        appendWord(bytes,
                   static_cast<std::uint32_t>(crc32(0, chunk.data(), static_cast<uInt>(chunk.size()))));
    }

    // The rows, each with its filter byte, compressed into `parts` IDAT chunks.
    void AddRows(const Bytes& filteredRows, size_t parts = 1) {
        uLongf size = compressBound(static_cast<uLong>(filteredRows.size()));
        Bytes stream(size);
        compress(stream.data(), &size, filteredRows.data(), static_cast<uLong>(filteredRows.size()));
        stream.resize(size);
        for (size_t part = 0; part < parts; ++part)
            Add("IDAT", Bytes(stream.begin() + static_cast<long>(part * size / parts),
                              stream.begin() + static_cast<long>((part + 1) * size / parts)));
    }

    Bytes End() {
        Add("IEND", {});
        return bytes;
    }

private:
    static void appendWord(Bytes& target, std::uint32_t word) {
        for (int shift = 24; shift >= 0; shift -= 8)
            target.push_back(static_cast<std::uint8_t>(word >> shift));
    }

    Bytes bytes;
};

// Rows of noise, row y filtered with filter y % 5 as its byte says: the
// bytes are taken as already filtered, which any byte values may be.
Bytes filteredNoise(std::uint32_t width, std::uint32_t height, int channels, std::uint8_t firstFilter = 0) {
    Bytes rows;
    std::uint32_t seed = 11;
    for (std::uint32_t y = 0; y < height; ++y) {
        rows.push_back(static_cast<std::uint8_t>((firstFilter + y) % 5));
        for (std::uint32_t i = 0; i < width * static_cast<std::uint32_t>(channels); ++i)
            rows.push_back(static_cast<std::uint8_t>((seed = seed * 1664525u + 1013904223u) >> 24));
    }
    return rows;
}

// libpng's own reading of the file, as blue, green, red and alpha words.
std::vector<std::uint32_t> libpngPixels(const Bytes& file) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, file.data(), file.size())) return {};
    image.format = PNG_FORMAT_BGRA;
    std::vector<std::uint32_t> pixels(PNG_IMAGE_SIZE(image) / 4);
    if (!png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr)) pixels.clear();
    png_image_free(&image);
    return pixels;
}

std::unique_ptr<EImageData> quickPicture(const Bytes& file) {
    const CPNGQuickRead quick(file.data(), file.size());
    if (!quick.IsPlain()) return nullptr;
    auto picture = EImageData::New(quick.GetSize(), EImageMemory::NoFreeing);
    picture->SetHasAlpha(quick.HasAlpha());
    return quick.ReadRows(*picture) ? std::move(picture) : nullptr;
}

bool isPlain(const Bytes& file) {
    return CPNGQuickRead(file.data(), file.size()).IsPlain();
}

} // namespace

TEST(PngQuickRead, EveryFilterOfRgbAndRgbaGivesLibpngsPixels) {
    for (std::uint8_t colourType : {std::uint8_t{2}, std::uint8_t{6}}) {
        const int channels = colourType == 6 ? 4 : 3;
        for (std::uint8_t firstFilter = 0; firstFilter < 5; ++firstFilter) {
            HandMadePng png(37, 23, colourType);
            png.AddRows(filteredNoise(37, 23, channels, firstFilter), 3);
            const Bytes file = png.End();
            const auto picture = quickPicture(file);
            ASSERT_TRUE(picture) << channels << " channels";
            EXPECT_EQ(picture->HasAlpha(), channels == 4);
            EXPECT_EQ(PixelsOf(*picture), libpngPixels(file))
                << channels << " channels, filter " << +firstFilter;
        }
    }
}

TEST(PngQuickRead, FilesThatChangeThePixelsOtherwiseAreLeftToLibpng) {
    const Bytes rows = filteredNoise(5, 4, 3);
    const auto fileWith = [&](auto&& addChunks) {
        HandMadePng png(5, 4, 2);
        addChunks(png);
        return png.End();
    };
    // Ancillary chunks before and between nothing that matters are passed over.
    EXPECT_TRUE(isPlain(fileWith([&](HandMadePng& png) {
        png.Add("tEXt", Bytes{'a', 0, 'b'});
        png.AddRows(rows, 2);
    })));
    EXPECT_FALSE(isPlain(fileWith([&](HandMadePng& png) {
        png.Add("tRNS", Bytes{0, 1, 0, 2, 0, 3});
        png.AddRows(rows);
    })));
    EXPECT_FALSE(isPlain(fileWith([&](HandMadePng& png) {
        png.Add("PLTE", Bytes{1, 2, 3});
        png.AddRows(rows);
    })));
    EXPECT_FALSE(isPlain(fileWith([&](HandMadePng& png) { // data split by another chunk
        png.AddRows(rows);
        png.Add("tEXt", Bytes{'a', 0, 'b'});
        png.AddRows(rows);
    })));
    HandMadePng wide(5, 4, 2, 16);
    wide.AddRows(filteredNoise(10, 4, 3));
    EXPECT_FALSE(isPlain(wide.End()));
    HandMadePng interlaced(5, 4, 2, 8, 1);
    interlaced.AddRows(rows);
    EXPECT_FALSE(isPlain(interlaced.End()));
    HandMadePng unended(5, 4, 2);
    unended.AddRows(rows);
    Bytes noEnd = unended.End();
    noEnd.resize(noEnd.size() - 12);
    EXPECT_FALSE(isPlain(noEnd));
    Bytes badSum = fileWith([&](HandMadePng& png) { png.AddRows(rows); });
    badSum[45] ^= 1; // a byte of the compressed data
    EXPECT_FALSE(isPlain(badSum));
}

TEST(PngQuickRead, AFaultInTheStreamLeavesTheFileToLibpng) {
    const auto readsRows = [](const Bytes& rows) {
        HandMadePng png(5, 4, 2);
        png.AddRows(rows);
        const Bytes file = png.End();
        EXPECT_TRUE(isPlain(file));
        return quickPicture(file) != nullptr;
    };
    const Bytes rows = filteredNoise(5, 4, 3);
    EXPECT_TRUE(readsRows(rows));
    Bytes unknownFilter = rows;
    unknownFilter[16] = 5;
    EXPECT_FALSE(readsRows(unknownFilter));
    EXPECT_FALSE(readsRows(Bytes(rows.begin(), rows.end() - 1)));
    Bytes tooMany = rows;
    tooMany.push_back(0);
    EXPECT_FALSE(readsRows(tooMany));
}
