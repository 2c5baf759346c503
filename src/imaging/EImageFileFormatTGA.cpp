#include "imaging/EImageFileFormatTGA.h"

namespace {

EImageFileFormatTGA theTargaFormat;

constexpr std::int64_t SizeOffset = 12;

} // namespace

EImageFileFormatTGA::EImageFileFormatTGA() : EImageFileFormatDecoded("TGA image", "tga") {}

bool EImageFileFormatTGA::doQueryFileInfo(EBinaryFile& file, EImageFileInfo& info, EImageFileResult&) {
    std::uint8_t size[4];
    file.Seek(SizeOffset);
    file.Read(size, sizeof size);
    info.size = {size[0] | size[1] << 8, size[2] | size[3] << 8};
    return true;
}
