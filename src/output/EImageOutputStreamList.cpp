// The registered output streams. They are made in this one place so that the
// registry's order, newest first, is the same in every build: the BMP
// sequence, made last, is the default stream.

#include "output/EImageOutputStreamAVI.h"
#include "output/EImageOutputStreamBMP.h"
#include "output/EImageOutputStreamVtAVI.h"

namespace {

const EImageOutputStreamAVI aviStream;
const EImageOutputStreamVtAVI aviWithAudioStream;
const EImageOutputStreamBMP bmpStream;

} // namespace
