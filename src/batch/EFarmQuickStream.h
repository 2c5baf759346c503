#pragma once
// The stream that a movie's chunks render into on a farm: one quick file
// (.qts) a frame, lossless, with alpha, position and opacity, numbered by
// frame. It stays out of the registry of streams, so users never see it.
// Safe from several threads, one file per call.

#include "output/EImageOutputSequence.h"

class EFarmQuickStream : public EImageOutputSequence {
public:
    EFarmQuickStream() : EImageOutputSequence("Quick file stream", "qts", Unlisted{}) {}

    static const EFarmQuickStream& Get();

    bool WriteImageFile(const std::string& fileName, const EImageData& image,
                        EImageOutputError& error) const override;
};
