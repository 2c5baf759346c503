#include "batch/EFarmQuickStream.h"

#include "imaging/EImageFileFormat.h"

const EFarmQuickStream& EFarmQuickStream::Get() {
    static const EFarmQuickStream stream;
    return stream;
}

bool EFarmQuickStream::WriteImageFile(const std::string& fileName, const EImageData& image,
                                      EImageOutputError& error) const {
    EImageFileResult result;
    if (EImageFileFormat::Save(image, fileName, result)) return true;
    error.Set(FileErrorGeneric, OutputErrorCannotMake, result.text.empty() ? fileName : result.text);
    return false;
}
