#pragma once
// Targa files, extension "tga". The size is read from the header; alpha is
// kept for files of 16 and 32 bits per pixel. Stateless: safe from any thread.

#include "imaging/CTGADecoder.h"
#include "imaging/EImageFileFormatDecoded.h"

class EImageFileFormatTGA : public EImageFileFormatDecoded {
public:
    EImageFileFormatTGA();

protected:
    bool doQueryFileInfo(EBinaryFile& file, EImageFileInfo& info, EImageFileResult& result) override;
    const CPicDecoder& GetDecoder() const override { return decoder; }

private:
    CTGADecoder decoder;
};
