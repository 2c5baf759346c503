#include "output/EImageOutputStreamBMP.h"

#include "foundation/qvrCException.h"
#include "foundation/qvrTrace.h"
#include "imaging/EBinaryFile.h"
#include "imaging/EImageData.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <vector>

namespace {

constexpr std::uint32_t fileHeaderSize = 14;
constexpr std::uint32_t infoHeaderSize = 40;
constexpr std::uint8_t padByte = 0x20;
constexpr size_t WriteBlockSize = 1 << 20;

// Appends a little-endian value of `count` bytes.
void put(std::vector<std::uint8_t>& bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

// File header and 24-bit information header of a picture whose rows are `rowBytes` long.
std::vector<std::uint8_t> headers(const EImageData& image, std::uint32_t rowBytes) {
    const std::uint32_t offset = fileHeaderSize + infoHeaderSize;
    const auto height = static_cast<std::uint32_t>(image.GetHeight());
    std::vector<std::uint8_t> bytes{'B', 'M'};
    put(bytes, offset + rowBytes * height, 4);
    put(bytes, 0, 4); // two reserved words
    put(bytes, offset, 4);
    put(bytes, infoHeaderSize, 4);
    put(bytes, static_cast<std::uint32_t>(image.GetWidth()), 4);
    put(bytes, height, 4);
    put(bytes, 1, 2);                 // planes
    put(bytes, 24, 2);                // bits per pixel
    bytes.insert(bytes.end(), 24, 0); // no compression; size, resolution and colours unset
    return bytes;
}

EBinaryFile openImageFile(const std::string& fileName) {
    try {
        return EBinaryFile(fileName, EBinaryFile::Mode::Write);
    } catch (const qvrCFileException&) {
        qvrTraceVerbose("*** ERROR[EImageOutputStreamBMP::WriteImageFile()]: Failed to open image file.\n");
        throw;
    }
}

void writeBitmap(EBinaryFile& file, const EImageData& image) {
    const auto width = static_cast<size_t>(image.GetWidth());
    const size_t padding = (4 - width * 3 % 4) % 4;
    const std::vector<std::uint8_t> head = headers(image, static_cast<std::uint32_t>(width * 3 + padding));
    file.Write(head.data(), head.size());

    // Rows go out in blocks of about a megabyte rather than one by one.
    const size_t rowSize = width * 3 + padding;
    const size_t rowsPerBlock = std::max<size_t>(1, WriteBlockSize / std::max<size_t>(rowSize, 1));
    std::vector<std::uint8_t> block(rowSize * rowsPerBlock, padByte);
    size_t rowsInBlock = 0;
    for (long y = image.GetHeight() - 1; y >= 0; --y) {
        const auto* pixel = reinterpret_cast<const std::uint8_t*>(image.GetRow(y));
        std::uint8_t* row = block.data() + rowsInBlock * rowSize;
        for (size_t x = 0; x < width; ++x)
            for (size_t byte = 0; byte < 3; ++byte)
                row[x * 3 + byte] = pixel[x * 4 + byte];
        if (++rowsInBlock == rowsPerBlock || y == 0) {
            file.Write(block.data(), rowsInBlock * rowSize);
            rowsInBlock = 0;
        }
    }
}

} // namespace

bool EImageOutputStreamBMP::WriteImageFile(const std::string& fileName, const EImageData& image,
                                           EImageOutputError& error) const {
    try {
        EBinaryFile file = openImageFile(fileName);
        writeBitmap(file, image);
        file.Close();
        return true;
    } catch (const qvrCFileException& failure) {
        error.SetOsError(failure.ErrorCode, failure.Path);
    } catch (const std::bad_alloc&) {
        error.SetOsError(OutputErrorOutOfMemory, fileName);
    }
    return false;
}
