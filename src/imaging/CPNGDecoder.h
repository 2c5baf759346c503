#pragma once
// Decodes PNG files with libpng into 32-bit pixels: grey, grey with alpha,
// RGB, RGBA and palette pictures of any bit depth. Sixteen-bit channels keep
// their high byte; pictures with an alpha channel or a transparency chunk
// carry alpha. Gamma and colour space chunks are not applied. libpng's
// errors end the decode with its message. Plain 8-bit RGB and RGBA files go
// the quick way of CPNGQuickRead, to the same bytes.
//
// Stateless: safe from any thread.

#include "imaging/CPicDecoder.h"

class CPNGDecoder : public CPicDecoder {
protected:
    std::unique_ptr<EImageData> DoDecode(CDataSource& source) const override;
};
