#pragma once
// Decodes Targa files: colour-mapped, true-colour and grey pictures, each
// uncompressed (types 1, 2, 3) or run-length coded (types 9, 10, 11), rows
// bottom-up or top-down as the descriptor's origin bit says. Pixels of 8 bits
// go through the colour map, or a grey ramp for grey pictures; 15- and 16-bit
// pixels are A1R5G5B5 with each 5-bit channel widened to 8 bits. Files of 16
// and 32 bits per pixel carry alpha.
//
// Stateless: safe from any thread.

#include "imaging/CPicDecoder.h"

class CTGADecoder : public CPicDecoder {
protected:
    std::unique_ptr<EImageData> DoDecode(CDataSource& source) const override;
};
