#pragma once
// Decodes JPEG files with libjpeg, scan line by scan line straight into the
// picture's rows. Colour and grey files both give 32-bit pixels, a grey
// value going to blue, green and red alike, alpha 255. libjpeg's fatal
// errors, and the warnings that mean the data are broken or run out before
// the picture is complete, end the decode with libjpeg's message instead of
// a picture filled with made-up pixels.
//
// Stateless: safe from any thread.

#include "imaging/CPicDecoder.h"

class CJPEGDecoder : public CPicDecoder {
protected:
    std::unique_ptr<EImageData> DoDecode(CDataSource& source) const override;
};
