#include "QvrPictureFile.h"

#include "foundation/qvrCException.h"
#include "foundation/qvrString.h"
#include "imaging/EImageFileFormat.h"
#include "output/EImageOutputSequence.h"

#include <filesystem>

namespace {

bool hasExtension(const std::string& path, const char* extension) {
    return qvrEqualNoCase(std::filesystem::path(path).extension().string(), extension);
}

bool writeBitmap(const EImageData& picture, const std::string& path, std::string& problem) {
    const auto* bmp = dynamic_cast<const EImageOutputSequence*>(EImageOutputStream::Find("BMP Image stream"));
    EImageOutputError error;
    if (bmp && bmp->WriteImageFile(path, picture, error)) return true;
    problem =
        error.OsError == OutputErrorOutOfMemory ? "out of memory" : qvrErrorText::FromCode(error.OsError);
    return false;
}

} // namespace

bool QvrPictureFile::CanWrite(const std::string& path) {
    return hasExtension(path, ".qts") || hasExtension(path, ".bmp");
}

bool QvrPictureFile::Write(const EImageData& picture, const std::string& path, std::string& problem) {
    if (hasExtension(path, ".bmp")) return writeBitmap(picture, path, problem);
    EImageFileResult result;
    if (EImageFileFormat::Save(picture, path, result)) return true;
    problem = result.text;
    return false;
}
