#pragma once
// The AVI movie stream with a sound track, registered as "AVI video & audio
// stream": as the AVI video stream, with a silent 16-bit stereo track at
// 44100 Hz that runs as long as the pictures. Threads as EImageOutputStreamAVI.

#include "output/EImageOutputStreamAVI.h"

class EImageOutputStreamVtAVI : public EImageOutputStreamAVI {
public:
    EImageOutputStreamVtAVI() : EImageOutputStreamAVI("AVI video & audio stream", "avi") {}

protected:
    std::unique_ptr<qvrCAVIStream> CreateAVIStream() const override;
};
