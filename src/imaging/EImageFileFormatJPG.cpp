#include "imaging/EImageFileFormatJPG.h"

#include "foundation/qvrTrace.h"

namespace {

EImageFileFormatJPG theJpegFormat;

constexpr std::uint8_t MarkerStart = 0xFF;
constexpr std::uint8_t StartOfImage = 0xD8;
constexpr std::uint8_t EndOfImage = 0xD9;
constexpr std::uint8_t StartOfScan = 0xDA;
// Every marker 0xC0 to 0xCF counts as a frame header.
constexpr std::uint8_t FrameFamilyMask = 0xF0;
constexpr std::uint8_t FrameFamily = 0xC0;

std::uint8_t readByte(EBinaryFile& file) {
    std::uint8_t byte;
    file.Read(&byte, 1);
    return byte;
}

long bigEndian16(const std::uint8_t* bytes) {
    return bytes[0] << 8 | bytes[1];
}

// Skips to the next 0xFF and past any fill bytes; the byte after them is the marker.
std::uint8_t nextMarker(EBinaryFile& file) {
    while (readByte(file) != MarkerStart) {
    }
    std::uint8_t marker;
    do {
        marker = readByte(file);
    } while (marker == MarkerStart);
    return marker;
}

bool refuse(const char* reason, EImageFileResult& result) {
    qvrTrace("*** ERROR[EImageFileFormatJPG::doQueryFileInfo()]: File contains %s.\n", reason);
    result.Set(EImageFileError::ReadError);
    return false;
}

} // namespace

EImageFileFormatJPG::EImageFileFormatJPG() : EImageFileFormatDecoded("JPEG image", "jpg") {}

bool EImageFileFormatJPG::doQueryFileInfo(EBinaryFile& file, EImageFileInfo& info, EImageFileResult& result) {
    std::uint8_t start[2];
    file.Read(start, sizeof start);
    if (start[0] != MarkerStart || start[1] != StartOfImage) return refuse("invalid chunks", result);
    const std::int64_t fileLength = file.GetLength();
    std::uint8_t marker = nextMarker(file);
    while ((marker & FrameFamilyMask) != FrameFamily) {
        if (marker == EndOfImage || marker == StartOfScan) return refuse("invalid chunks", result);
        std::uint8_t length[2];
        file.Read(length, sizeof length);
        const long skip = bigEndian16(length) - 2;
        if (skip < 0) return refuse("bad sized chunks", result);
        if (file.GetPosition() + skip > fileLength) return refuse("invalid chunks", result);
        file.Skip(skip);
        marker = nextMarker(file);
    }
    // Length, precision, height, width.
    std::uint8_t frame[7];
    file.Read(frame, sizeof frame);
    info.size = {bigEndian16(frame + 5), bigEndian16(frame + 3)};
    return true;
}
