// An image format's reader: the size query (for JPEG the program's own
// header scan), the whole picture and a part of it. QVR_FUZZ_EXTENSION names
// the format.
#include "FuzzSupport.h"

#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = qvrFuzz::WriteInput(data, size, "input." QVR_FUZZ_EXTENSION);
    EImageFileResult result;
    EImageFileInfo info;
    EImageFileFormat::QueryFileInfo(path, info, result);
    EImageFileFormat::Load(path, {0, 0, 0, 0}, result);
    EImageFileFormat::Load(path, {1, 1, 7, 5}, result);
    return 0;
}
