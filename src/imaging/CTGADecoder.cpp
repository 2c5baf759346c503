#include "imaging/CTGADecoder.h"

#include "imaging/EImageData.h"

#include <algorithm>
#include <array>

namespace {

constexpr size_t HeaderSize = 18;
constexpr std::uint8_t TopDownOrigin = 0x20;
constexpr std::uint8_t RunPacket = 0x80;
constexpr long LongestPacket = 128;
constexpr std::uint8_t RunLengthTypes = 8;

enum TgaType : std::uint8_t { ColourMapped = 1, TrueColour = 2, Grey = 3 };

using Palette = std::array<std::uint32_t, 256>;

struct TgaHeader {
    std::uint8_t idLength;
    std::uint8_t colourMapType;
    std::uint8_t imageType;
    long mapFirst;
    long mapLength;
    std::uint8_t mapEntryBits;
    long width;
    long height;
    std::uint8_t depth;
    std::uint8_t descriptor;

    TgaType BaseType() const { return static_cast<TgaType>(imageType & ~RunLengthTypes); }
    bool IsRunLength() const { return (imageType & RunLengthTypes) != 0; }
};

long littleEndian16(const std::uint8_t* bytes) {
    return bytes[0] | bytes[1] << 8;
}

TgaHeader readHeader(CDataSource& source) {
    const std::uint8_t* bytes = source.ReadNBytes(HeaderSize);
    return {bytes[0],
            bytes[1],
            bytes[2],
            littleEndian16(bytes + 3),
            littleEndian16(bytes + 5),
            bytes[7],
            littleEndian16(bytes + 12),
            littleEndian16(bytes + 14),
            bytes[16],
            bytes[17]};
}

[[noreturn]] void unsupported(const char* text) {
    throw CPicDecoderException(CPicDecoderException::FormatUnknown, text);
}

std::uint8_t widen5(unsigned value) {
    return static_cast<std::uint8_t>(value << 3 | value >> 2);
}

// One pixel of 1 (through the palette), 2, 3 or 4 bytes as a word 0xAARRGGBB.
std::uint32_t pixelWord(const std::uint8_t* bytes, size_t size, const Palette& palette) {
    switch (size) {
    case 1:
        return palette[bytes[0]];
    case 2: {
        const unsigned value = static_cast<unsigned>(littleEndian16(bytes));
        return (value & 0x8000 ? 0xFF000000u : 0) | std::uint32_t{widen5(value >> 10 & 31)} << 16 |
               std::uint32_t{widen5(value >> 5 & 31)} << 8 | widen5(value & 31);
    }
    case 3:
        return 0xFF000000u | std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[1]} << 8 | bytes[0];
    default:
        return std::uint32_t{bytes[3]} << 24 | std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[1]} << 8 |
               bytes[0];
    }
}

// Bytes of a pixel or colour map entry of the given bits; 0 for sizes that aren't read.
size_t entryBytes(std::uint8_t bits) {
    switch (bits) {
    case 15:
    case 16:
        return 2;
    case 24:
        return 3;
    case 32:
        return 4;
    default:
        return 0;
    }
}

size_t pixelBytes(const TgaHeader& header) {
    if (header.BaseType() != TrueColour) {
        if (header.depth != 8) unsupported("Unsupported TGA pixel depth.");
        return 1;
    }
    const size_t bytes = entryBytes(header.depth);
    if (bytes == 0) unsupported("Unsupported TGA pixel depth.");
    return bytes;
}

// The colour map of the file, read into its place from the first entry index
// on, or the grey ramp of a grey picture. A map is read past in any case.
Palette readPalette(CDataSource& source, const TgaHeader& header) {
    Palette palette{};
    if (header.colourMapType == 1) {
        const size_t bytes = entryBytes(header.mapEntryBits);
        if (bytes == 0) unsupported("Unsupported TGA colour map entry size.");
        for (long i = 0; i < header.mapLength; ++i) {
            const std::uint8_t* entry = source.ReadNBytes(bytes);
            if (header.mapFirst + i < static_cast<long>(palette.size()))
                palette[static_cast<size_t>(header.mapFirst + i)] = pixelWord(entry, bytes, palette);
        }
    }
    if (header.BaseType() == Grey)
        for (std::uint32_t i = 0; i < palette.size(); ++i)
            palette[i] = 0xFF000000u | i * 0x010101u;
    return palette;
}

// Hands out the pixels of the file in order. Run-length packets may go on
// from one row into the next.
class PixelReader {
public:
    PixelReader(CDataSource& dataSource, const TgaHeader& header, const Palette& colours)
        : source(dataSource), palette(colours), size(pixelBytes(header)), runLength(header.IsRunLength()) {}

    // The fewest bytes in which the pixels of a picture can be coded.
    std::int64_t SmallestData(std::int64_t pixels) const {
        return runLength
                   ? (pixels + LongestPacket - 1) / LongestPacket * (1 + static_cast<std::int64_t>(size))
                   : pixels * static_cast<std::int64_t>(size);
    }

    void ReadRow(std::uint32_t* row, long width) {
        if (!runLength) {
            const std::uint8_t* bytes = source.ReadNBytes(static_cast<size_t>(width) * size);
            for (long x = 0; x < width; ++x)
                row[x] = pixelWord(bytes + static_cast<size_t>(x) * size, size, palette);
            return;
        }
        for (long x = 0; x < width; ++x)
            row[x] = NextPacketPixel();
    }

private:
    std::uint32_t NextPacketPixel() {
        if (packetLeft == 0) {
            const std::uint8_t packet = *source.ReadNBytes(1);
            packetLeft = (packet & ~RunPacket) + 1;
            repeating = (packet & RunPacket) != 0;
            if (repeating) word = ReadPixel();
        }
        --packetLeft;
        return repeating ? word : ReadPixel();
    }

    std::uint32_t ReadPixel() { return pixelWord(source.ReadNBytes(size), size, palette); }

    CDataSource& source;
    const Palette& palette;
    size_t size;
    bool runLength;
    long packetLeft = 0;
    bool repeating = false;
    std::uint32_t word = 0;
};

} // namespace

std::unique_ptr<EImageData> CTGADecoder::DoDecode(CDataSource& source) const {
    const TgaHeader header = readHeader(source);
    const TgaType type = header.BaseType();
    if (type != ColourMapped && type != TrueColour && type != Grey)
        throw CPicDecoderException(CPicDecoderException::FormatUnknown, "Unknown TGA image type.");
    source.Skip(header.idLength);
    const Palette palette = readPalette(source, header);
    PixelReader reader(source, header, palette);
    // A file too short for its picture fails before the picture is made.
    if (reader.SmallestData(std::int64_t{header.width} * header.height) >
        static_cast<std::int64_t>(source.GetBytesLeft()))
        throw CPicDecoderException::EndOfData();
    std::unique_ptr<EImageData> picture =
        CreateBmp({header.width, header.height}, header.depth == 16 || header.depth == 32);
    const bool topDown = (header.descriptor & TopDownOrigin) != 0;
    for (long y = 0; y < header.height; ++y)
        reader.ReadRow(picture->GetRow(topDown ? y : header.height - 1 - y), header.width);
    return picture;
}
