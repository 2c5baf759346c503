#include "imaging/EImageFileFormat.h"

#include "foundation/qvrCException.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImageData.h"

#include <algorithm>
#include <new>

namespace {

// The head of the registry; constant-initialised, so formats may register
// from any static constructor.
EImageFileFormat* firstFormat = nullptr;

const char* fixedText(EImageFileError error) {
    switch (error) {
    case EImageFileError::None:
        return "";
    case EImageFileError::UnknownFormat:
        return "Unknown file format";
    case EImageFileError::OutOfMemory:
        return "Out of memory";
    case EImageFileError::BadFunctionCall:
        return "Bad function call; please contact author";
    case EImageFileError::ReadError:
        return "Error while reading file";
    }
    return "";
}

// A file whose picture has a side of 0 is refused. Sizes too large for
// memory are refused where pictures are made, before memory is asked for.
bool refuseEmptyPicture(const std::string& fileName, CSize size, EImageFileResult& result) {
    if (size.cx > 0 && size.cy > 0) return false;
    result.Set(EImageFileError::ReadError, qvrFormat("The picture in \"%s\" is empty: %ld by %ld pixels",
                                                     fileName.c_str(), size.cx, size.cy));
    return true;
}

bool asksForWholePicture(const CRect& rect) {
    return rect.left == 0 && rect.top == 0 && rect.right == 0 && rect.bottom == 0;
}

} // namespace

void EImageFileResult::Set(EImageFileError error) {
    Set(error, fixedText(error));
}

void EImageFileResult::Set(EImageFileError error, std::string reason) {
    number = error;
    text = std::move(reason);
}

EImageFileFormat::EImageFileFormat(std::string formatName, std::string formatExtension)
    : name(std::move(formatName)), extension(std::move(formatExtension)), next(firstFormat) {
    firstFormat = this;
    qvrTrace("> EImageFileFormat \"%s\" registered for extension \"%s\" !\n", name.c_str(),
             extension.c_str());
}

EImageFileFormat::~EImageFileFormat() {
    for (EImageFileFormat** link = &firstFormat; *link; link = &(*link)->next) {
        if (*link == this) {
            *link = next;
            break;
        }
    }
}

EImageFileFormat* EImageFileFormat::Find(std::string_view wanted) {
    for (EImageFileFormat* format = firstFormat; format; format = format->next)
        if (qvrEqualNoCase(format->extension, wanted)) return format;
    return nullptr;
}

EImageFileFormat* EImageFileFormat::FindForFile(const std::string& fileName) {
    const size_t nameStart =
        fileName.find_last_of('/') == std::string::npos ? 0 : fileName.find_last_of('/') + 1;
    const size_t point = fileName.find_last_of('.');
    if (point == std::string::npos || point < nameStart) return nullptr;
    return Find(std::string_view(fileName).substr(point + 1));
}

CRect EImageFileFormat::ClipLoadRect(const CRect& rect, CSize size) {
    if (asksForWholePicture(rect)) return {0, 0, size.cx, size.cy};
    CRect clipped{std::max(rect.left, 0L), std::max(rect.top, 0L), std::min(rect.right, size.cx),
                  std::min(rect.bottom, size.cy)};
    clipped.left = std::min(clipped.left, clipped.right);
    clipped.top = std::min(clipped.top, clipped.bottom);
    return clipped;
}

bool EImageFileFormat::doSave(const EImageData&, EBinaryFile&, EImageFileResult& result) {
    result.Set(EImageFileError::BadFunctionCall);
    return false;
}

bool EImageFileFormat::RunOnFile(const std::string& fileName, EBinaryFile::Mode mode,
                                 EImageFileResult& result, const FileOperation& operation) {
    if (fileName.empty()) {
        result.Set(EImageFileError::BadFunctionCall);
        return false;
    }
    EImageFileFormat* format = FindForFile(fileName);
    if (!format) {
        result.Set(EImageFileError::UnknownFormat);
        return false;
    }
    try {
        EBinaryFile file(fileName, mode);
        if (!operation(*format, file)) return false;
        file.Close();
        return true;
    } catch (const std::bad_alloc&) {
        result.Set(EImageFileError::OutOfMemory);
    } catch (const std::exception& error) {
        if (mode == EBinaryFile::Mode::Read)
            result.Set(EImageFileError::ReadError);
        else
            result.Set(EImageFileError::ReadError, qvrErrorText::FromException(error));
    }
    return false;
}

std::unique_ptr<EImageData> EImageFileFormat::Load(const std::string& fileName, const CRect& rect,
                                                   EImageFileResult& result) {
    if (rect.IsRectEmpty() && !asksForWholePicture(rect)) {
        result.Set(EImageFileError::BadFunctionCall);
        return nullptr;
    }
    std::unique_ptr<EImageData> picture;
    const bool loaded = RunOnFile(fileName, EBinaryFile::Mode::Read, result, [&](auto& format, auto& file) {
        picture = format.doLoad(file, rect, result);
        return picture &&
               !(asksForWholePicture(rect) && refuseEmptyPicture(fileName, picture->GetSize(), result));
    });
    if (!loaded) picture.reset();
    return picture;
}

bool EImageFileFormat::Save(const EImageData& picture, const std::string& fileName,
                            EImageFileResult& result) {
    return RunOnFile(fileName, EBinaryFile::Mode::Write, result,
                     [&](auto& format, auto& file) { return format.doSave(picture, file, result); });
}

bool EImageFileFormat::QueryFileInfo(const std::string& fileName, EImageFileInfo& info,
                                     EImageFileResult& result) {
    return RunOnFile(fileName, EBinaryFile::Mode::Read, result, [&](auto& format, auto& file) {
        return format.doQueryFileInfo(file, info, result) && !refuseEmptyPicture(fileName, info.size, result);
    });
}
