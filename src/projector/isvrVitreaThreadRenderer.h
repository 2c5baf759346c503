#pragma once
// One render thread of a projector array's run. It takes one whole projector
// at a time: opens the projector's stream, builds its pixel map, and then for
// every frame of the range has the saver render the projector's window,
// resamples it through the map into the projector's picture and writes it.
// A projector that can't be prepared, or whose stream refuses a frame, is
// reported and left; the thread goes on with the next projector. A stop, a
// fatal render failure, or any failure while errors stop the run end the
// thread.
//
// Threads: the owner (isvrVitreaWorkData) makes, stops and deletes the
// object; the loop runs in the thread and keeps everything it uses by shared
// pointer, so that a thread which has to be given up never touches freed data.

#include "output/iSaverThread.h"

#include <memory>

class EImageOutputSetup;
class isvrVitreaWorkData;

class isvrVitreaThreadRenderer : public iSaverThread {
public:
    isvrVitreaThreadRenderer(std::shared_ptr<isvrVitreaWorkData> work, unsigned index,
                             std::shared_ptr<const EImageOutputSetup> setup);

private:
    class Loop;
};
