#include "imaging/EImageFileFormatPNG.h"

#include "foundation/qvrTrace.h"

#include <cstring>

namespace {

EImageFileFormatPNG thePngFormat;

// The signature, then the header chunk: length, type, width, height.
constexpr std::uint8_t Signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr size_t HeaderBytes = 24;

long bigEndian32(const std::uint8_t* bytes) {
    return static_cast<std::int32_t>(std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
                                     std::uint32_t{bytes[2]} << 8 | bytes[3]);
}

} // namespace

EImageFileFormatPNG::EImageFileFormatPNG() : EImageFileFormatDecoded("PNG image", "png") {}

bool EImageFileFormatPNG::doQueryFileInfo(EBinaryFile& file, EImageFileInfo& info, EImageFileResult& result) {
    std::uint8_t header[HeaderBytes];
    file.Read(header, sizeof header);
    const CSize size{bigEndian32(header + 16), bigEndian32(header + 20)};
    if (std::memcmp(header, Signature, sizeof Signature) != 0 || std::memcmp(header + 12, "IHDR", 4) != 0 ||
        size.cx < 0 || size.cy < 0) {
        qvrTrace("*** ERROR[EImageFileFormatPNG::doQueryFileInfo()]: File contains invalid chunks.\n");
        result.Set(EImageFileError::ReadError);
        return false;
    }
    info.size = size;
    return true;
}
