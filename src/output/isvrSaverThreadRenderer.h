#pragma once
// One render thread of a standard saver's run: it takes frame numbers from the
// run's counter until none is left, renders each through the saver and writes
// it, through its own handle for a movie or the run's shared handle for a
// sequence. A frame that fails is stopped on, skipped, or replaced by the last
// good picture, as the run's settings say.
//
// Threads: the owner (isvrSaverWorkData) makes, stops and deletes the object;
// the loop runs in the thread and keeps everything it uses by shared pointer,
// so that a thread which has to be given up never touches freed data.

#include "output/iSaverThread.h"

#include <cstdint>
#include <memory>

class EImageOutputHandle;
class EImageOutputSetup;
class isvrSaverWorkData;

class isvrSaverThreadRenderer : public iSaverThread {
public:
    isvrSaverThreadRenderer(std::shared_ptr<isvrSaverWorkData> work, unsigned index,
                            std::shared_ptr<const EImageOutputSetup> setup,
                            std::shared_ptr<EImageOutputHandle> sharedHandle);

    // The results of rendering one frame.
    enum FrameResult : int { FrameSkip = -1, FrameGood = 0, FrameFatal = 1 };

private:
    class Loop;
};
