#pragma once
// The stream of numbered BMP files, registered as "BMP Image stream": each
// frame becomes an uncompressed 24-bit bitmap, rows bottom-up, each row padded
// to four bytes with spaces. Safe from several threads, one file per call.

#include "output/EImageOutputSequence.h"

class EImageOutputStreamBMP : public EImageOutputSequence {
public:
    EImageOutputStreamBMP() : EImageOutputSequence("BMP Image stream", "bmp") {}

    bool WriteImageFile(const std::string& fileName, const EImageData& image,
                        EImageOutputError& error) const override;
};
