#pragma once
// PNG files, extension "png", read through libpng. The size is read from the
// header chunk without libpng; alpha is kept. Stateless: safe from any thread.

#include "imaging/CPNGDecoder.h"
#include "imaging/EImageFileFormatDecoded.h"

class EImageFileFormatPNG : public EImageFileFormatDecoded {
public:
    EImageFileFormatPNG();

protected:
    bool doQueryFileInfo(EBinaryFile& file, EImageFileInfo& info, EImageFileResult& result) override;
    const CPicDecoder& GetDecoder() const override { return decoder; }

private:
    CPNGDecoder decoder;
};
