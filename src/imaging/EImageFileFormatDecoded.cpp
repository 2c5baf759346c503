#include "imaging/EImageFileFormatDecoded.h"

#include "foundation/ELog.h"
#include "foundation/EPrefsEImage.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImageCache.h"
#include "imaging/EImageData.h"

#include <algorithm>
#include <climits>
#include <fstream>
#include <new>

namespace {

constexpr long LoadOverhead = 10000;
constexpr long UnwatchedMemory = 0x7fffffff;

// A figure of /proc/meminfo in bytes, or -1 when there is none.
long memoryStatus(const std::string& key) {
    std::ifstream status("/proc/meminfo");
    std::string name;
    long kilobytes = 0;
    std::string rest;
    while (status >> name >> kilobytes && std::getline(status, rest))
        if (name == key) return kilobytes * 1024;
    return -1;
}

// The memory that a load may take: the available physical memory, plus the
// free swap unless only physical memory counts, less the reserve, which is
// taken as a number of bytes. Unwatched memory counts as 0x7fffffff bytes; a
// system that gives no figure refuses nothing.
long availableMemory() {
    std::uint32_t reserve = 0;
    bool physicalOnly = true;
    if (!EPrefsEImage::cacheOn(reserve, physicalOnly)) return UnwatchedMemory;
    const long physical = memoryStatus("MemAvailable:");
    if (physical < 0) return LONG_MAX;
    const long swap = physicalOnly ? 0 : std::max(memoryStatus("SwapFree:"), 0L);
    return std::max(physical + swap - static_cast<long>(reserve), 0L);
}

void freeAllMemory() {
    if (EImageCache* cache = EImageCache::Get()) cache->FreeMemory(0);
}

} // namespace

std::unique_ptr<EImageData> EImageFileFormatDecoded::doLoad(EBinaryFile& file, const CRect& rect,
                                                            EImageFileResult& result) {
    return LoadUsingPaintLib(GetDecoder(), file, rect, result);
}

std::unique_ptr<EImageData> EImageFileFormatDecoded::LoadUsingPaintLib(const CPicDecoder& decoder,
                                                                       EBinaryFile& file, const CRect& rect,
                                                                       EImageFileResult& result) {
    EImageFileInfo info;
    if (!doQueryFileInfo(file, info, result) || !EnoughMemoryFor(file, info.size, result)) return nullptr;
    std::unique_ptr<EImageData> picture = DecodeFreeingMemory(decoder, file, result);
    if (!picture) return nullptr;
    const bool solidAlpha = !picture->HasAlpha() || IgnoreFileAlpha();
    const CRect part = ClipLoadRect(rect, picture->GetSize());
    if (part.IsRectEmpty())
        picture = EImageData::New({part.Width(), part.Height()}, EImageMemory::MayFree);
    else if (part != CRect{0, 0, picture->GetWidth(), picture->GetHeight()})
        picture = picture->Extract(part);
    if (!picture) {
        result.Set(EImageFileError::OutOfMemory);
        return nullptr;
    }
    if (solidAlpha) MakeSolidAlpha(*picture, file.GetName());
    return picture;
}

bool EImageFileFormatDecoded::EnoughMemoryFor(EBinaryFile& file, CSize size, EImageFileResult& result) {
    long required = 0;
    if (__builtin_mul_overflow(size.cx, size.cy, &required) ||
        __builtin_mul_overflow(required, 4L, &required) ||
        __builtin_add_overflow(required, file.GetLength() + LoadOverhead, &required))
        required = LONG_MAX;
    long available = availableMemory();
    if (available < required) {
        freeAllMemory();
        available = availableMemory();
    }
    if (available >= required) return true;
    result.Set(EImageFileError::OutOfMemory);
    ELog::Log(ELog::LevelFailure, "Image loader",
              qvrFormat("LOW ON MEMORY !\nLoading an image is been aborted because it would require too much "
                        "of the\navailable physical memory !!\nFile: %s\nRequired memory: %9ld\nAvailable:  "
                        "     %9ld (plus ~4MB system memory).",
                        file.GetName().c_str(), required, available));
    return false;
}

std::unique_ptr<EImageData> EImageFileFormatDecoded::DecodeFreeingMemory(const CPicDecoder& decoder,
                                                                         EBinaryFile& file,
                                                                         EImageFileResult& result) {
    for (bool freed = false;; freed = true) {
        try {
            return decoder.MakeBmpFromFile(file);
        } catch (const CPicDecoderException& error) {
            if (error.GetNumber() != CPicDecoderException::NoMemory) {
                qvrTrace("*** ERROR[EImageFileFormat::LoadUsingPaintLib()]: Can't load %s: %s !\n",
                         file.GetName().c_str(), error.what());
                result.Set(EImageFileError::ReadError);
                return nullptr;
            }
        } catch (const std::bad_alloc&) {
        }
        if (freed) break;
        qvrTrace(
            "*** NOTE[EImageFileFormat::LoadUsingPaintLib()]: Out of memory - trying to free some memory.\n");
        freeAllMemory();
    }
    qvrTrace("*** ERROR[EImageFileFormat::LoadUsingPaintLib()]: Can't load %s - out of memory and freeing "
             "memory has failed !\n",
             file.GetName().c_str());
    result.Set(EImageFileError::OutOfMemory);
    return nullptr;
}

void EImageFileFormatDecoded::MakeSolidAlpha(EImageData& picture, const std::string& fileName) {
    qvrTrace("*** WARNING[EImageFileFormat::LoadUsingPaintLib()]: Image \"%s\" does not have an "
             "alpha-channel; making a solid maximum alpha channel.\n",
             fileName.c_str());
    for (long y = 0; y < picture.GetHeight(); ++y) {
        std::uint32_t* row = picture.GetRow(y);
        for (long x = 0; x < picture.GetWidth(); ++x)
            row[x] |= 0xFF000000u;
    }
    picture.SetHasAlpha(true);
}
