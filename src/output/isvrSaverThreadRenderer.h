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

#include "foundation/qvrCWorkerThread.h"

#include <cstdint>
#include <memory>

class EImageOutputHandle;
class EImageOutputSetup;
class isvrSaverWorkData;

class isvrSaverThreadRenderer : public qvrCWorkerThread {
public:
    isvrSaverThreadRenderer(std::shared_ptr<isvrSaverWorkData> work, unsigned index,
                            std::shared_ptr<const EImageOutputSetup> setup,
                            std::shared_ptr<EImageOutputHandle> sharedHandle);
    // Asks the thread to stop and waits 10 ms; a thread still running then is given up.
    ~isvrSaverThreadRenderer() override;

    // Asks the loop to end after the frame it is working on.
    void SignalStop() { Shared->StopEvent.Set(); }
    // True once the thread's run is over; waits up to `waitMs` for it.
    bool WaitForEnd(unsigned long waitMs) { return Shared->EndedEvent.Lock(waitMs); }

    // The results of rendering one frame.
    enum FrameResult : int { FrameSkip = -1, FrameGood = 0, FrameFatal = 1 };

    // Counts the thread as running before any thread of the run is let in.
    bool InitThreadData() override;
    void DoWork() override;

private:
    class Loop;
    // What the thread object shares with the loop in the thread.
    struct Context {
        std::shared_ptr<isvrSaverWorkData> Work;
        unsigned Index;
        std::shared_ptr<const EImageOutputSetup> Setup;
        std::shared_ptr<EImageOutputHandle> SharedHandle;
        qvrCEvent StopEvent{qvrCEvent::ResetMode::Auto};
        qvrCEvent EndedEvent{qvrCEvent::ResetMode::Manual};
    };

    std::shared_ptr<Context> Shared;
};
