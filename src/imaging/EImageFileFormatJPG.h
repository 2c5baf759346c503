#pragma once
// JPEG files, extension "jpg", read through libjpeg. The file's size is found
// by a scan of its markers up to the first frame header, without libjpeg.
// Pictures always get a solid alpha channel. Stateless: safe from any thread.

#include "imaging/CJPEGDecoder.h"
#include "imaging/EImageFileFormatDecoded.h"

class EImageFileFormatJPG : public EImageFileFormatDecoded {
public:
    EImageFileFormatJPG();
    bool IgnoreFileAlpha() const override { return true; }

protected:
    bool doQueryFileInfo(EBinaryFile& file, EImageFileInfo& info, EImageFileResult& result) override;
    const CPicDecoder& GetDecoder() const override { return decoder; }

private:
    CJPEGDecoder decoder;
};
