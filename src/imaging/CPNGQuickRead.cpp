#include "imaging/CPNGQuickRead.h"

#include "imaging/EImageData.h"

#include <libdeflate.h>
#include <png.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

constexpr std::array<std::uint8_t, 8> signature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::uint32_t largestLength = 0x7FFFFFFF;
// The sizes beyond which libpng refuses a file.
constexpr std::uint32_t widestPicture = PNG_USER_WIDTH_MAX;
constexpr std::uint32_t tallestPicture = PNG_USER_HEIGHT_MAX;

std::uint32_t bigEndian(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           bytes[3];
}

bool isType(const std::uint8_t* type, const char (&name)[5]) {
    return std::memcmp(type, name, 4) == 0;
}

// Critical chunks have an upper-case first letter.
bool isCritical(const std::uint8_t* type) {
    return (type[0] & 0x20) == 0;
}

struct FreeDecompressor {
    void operator()(libdeflate_decompressor* decompressor) const {
        libdeflate_free_decompressor(decompressor);
    }
};

struct FreeBytes {
    void operator()(std::uint8_t* bytes) const { std::free(bytes); }
};

// The neighbour nearest to left + above - above left; ties go to the left, then above.
std::uint8_t paeth(std::uint8_t left, std::uint8_t above, std::uint8_t aboveLeft) {
    const int toLeft = std::abs(above - aboveLeft);
    const int toAbove = std::abs(left - aboveLeft);
    const int toAboveLeft = std::abs(left + above - 2 * aboveLeft);
    const std::uint8_t aboveOrCorner = toAbove <= toAboveLeft ? above : aboveLeft;
    return toLeft <= toAbove && toLeft <= toAboveLeft ? left : aboveOrCorner;
}

// Undoes a row's filter in place; `previous` is the unfiltered row above, or
// zeros for the first. The first pixel has no left neighbour, which counts as
// 0: for it the average takes half the byte above and Paeth the byte above.
// False for an unknown filter.
bool unfilter(std::uint8_t filter, std::uint8_t* row, const std::uint8_t* previous, size_t length,
              size_t step) {
    switch (filter) {
    case 0:
        return true;
    case 1:
        for (size_t i = step; i < length; ++i)
            row[i] = static_cast<std::uint8_t>(row[i] + row[i - step]);
        return true;
    case 2:
        for (size_t i = 0; i < length; ++i)
            row[i] = static_cast<std::uint8_t>(row[i] + previous[i]);
        return true;
    case 3:
        for (size_t i = 0; i < step; ++i)
            row[i] = static_cast<std::uint8_t>(row[i] + (previous[i] >> 1));
        for (size_t i = step; i < length; ++i)
            row[i] = static_cast<std::uint8_t>(row[i] + ((row[i - step] + previous[i]) >> 1));
        return true;
    case 4:
        for (size_t i = 0; i < step; ++i)
            row[i] = static_cast<std::uint8_t>(row[i] + previous[i]);
        for (size_t i = step; i < length; ++i)
            row[i] =
                static_cast<std::uint8_t>(row[i] + paeth(row[i - step], previous[i], previous[i - step]));
        return true;
    default:
        return false;
    }
}

// Red, green, blue (and alpha) bytes into blue, green, red, alpha words.
void storePixels(const std::uint8_t* row, std::uint32_t* pixels, long width, int channels) {
    for (long x = 0; x < width; ++x, row += channels) {
        const std::uint32_t alpha = channels == 4 ? row[3] : 0xFFu;
        pixels[x] = alpha << 24 | std::uint32_t{row[0]} << 16 | std::uint32_t{row[1]} << 8 | row[2];
    }
}

} // namespace

CPNGQuickRead::CPNGQuickRead(const std::uint8_t* bytes, std::size_t size) {
    if (size < signature.size() || std::memcmp(bytes, signature.data(), signature.size()) != 0) return;
    size_t position = signature.size();
    bool idatSeen = false;
    bool idatEnded = false;
    for (bool first = true;; first = false) {
        if (size - position < 12) return;
        const std::uint32_t length = bigEndian(bytes + position);
        if (length > largestLength || length > size - position - 12) return;
        const std::uint8_t* type = bytes + position + 4;
        const std::uint8_t* data = type + 4;
        if (libdeflate_crc32(0, type, length + 4) != bigEndian(data + length)) return;
        position += 12 + size_t{length};
        if (first != isType(type, "IHDR")) return;
        if (first) {
            if (!readHeader(data, length)) return;
        } else if (isType(type, "IDAT")) {
            if (idatEnded) return;
            idatSeen = true;
            stream.insert(stream.end(), data, data + length);
        } else if (isType(type, "IEND")) {
            plain = idatSeen;
            return;
        } else {
            // A palette, a transparency chunk or an unknown critical chunk changes the pixels.
            if (isCritical(type) || isType(type, "tRNS")) return;
            idatEnded = idatSeen;
        }
    }
}

bool CPNGQuickRead::readHeader(const std::uint8_t* data, std::uint32_t length) {
    if (length != 13) return false;
    const std::uint32_t fileWidth = bigEndian(data);
    const std::uint32_t fileHeight = bigEndian(data + 4);
    const std::uint8_t depth = data[8], colourType = data[9];
    const std::uint8_t compression = data[10], filterMethod = data[11], interlace = data[12];
    if (fileWidth == 0 || fileHeight == 0 || fileWidth > widestPicture || fileHeight > tallestPicture)
        return false;
    if (depth != 8 || (colourType != 2 && colourType != 6) || compression != 0 || filterMethod != 0 ||
        interlace != 0)
        return false;
    width = static_cast<long>(fileWidth);
    height = static_cast<long>(fileHeight);
    channels = colourType == 6 ? 4 : 3;
    return true;
}

bool CPNGQuickRead::ReadRows(EImageData& picture) const {
    if (!plain || picture.GetSize() != GetSize()) return false;
    const size_t rowLength = 1 + static_cast<size_t>(width) * static_cast<size_t>(channels);
    size_t rawSize = 0;
    if (__builtin_mul_overflow(rowLength, static_cast<size_t>(height), &rawSize)) return false;
    const std::unique_ptr<std::uint8_t, FreeBytes> raw(static_cast<std::uint8_t*>(std::malloc(rawSize)));
    const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(
        libdeflate_alloc_decompressor());
    if (!raw || !decompressor) return false;
    if (libdeflate_zlib_decompress(decompressor.get(), stream.data(), stream.size(), raw.get(), rawSize,
                                   nullptr) != LIBDEFLATE_SUCCESS)
        return false;
    return unfilterRows(raw.get(), picture);
}

bool CPNGQuickRead::unfilterRows(std::uint8_t* raw, EImageData& picture) const {
    const size_t length = static_cast<size_t>(width) * static_cast<size_t>(channels);
    const std::vector<std::uint8_t> zeros(length, 0);
    const std::uint8_t* previous = zeros.data();
    for (long y = 0; y < height; ++y, raw += length + 1) {
        std::uint8_t* row = raw + 1;
        if (!unfilter(raw[0], row, previous, length, static_cast<size_t>(channels))) return false;
        storePixels(row, picture.GetRow(y), width, channels);
        previous = row;
    }
    return true;
}
