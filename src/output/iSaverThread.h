#pragma once
// One render thread of a saver's run. The thread counts itself as running in
// the run before any thread is let in, runs its body, and counts itself out.
// A derived class gives the body, which keeps everything it uses by shared
// pointer: a thread that doesn't stop in time is given up and goes on unseen
// after this object is gone.
//
// Threads: the owner (the run) makes, stops and deletes the object; the body
// runs in the thread.

#include "foundation/qvrCSyncObjects.h"
#include "foundation/qvrCWorkerThread.h"

#include <functional>
#include <memory>

class iSaverWorkData;

class iSaverThread : public qvrCWorkerThread {
public:
    // Asks the thread to stop and waits 10 ms; a thread still running then is given up.
    ~iSaverThread() override;

    // Asks the body to end at its next stop test.
    void SignalStop() { Shared->StopEvent.Set(); }
    // True once the thread's run is over and the thread has left its last
    // step, so that the object may go; waits up to `waitMs` for each.
    bool WaitForEnd(unsigned long waitMs) {
        return Shared->EndedEvent.Lock(waitMs) && WaitForThreadEnd(waitMs);
    }

    // Counts the thread as running before any thread of the run is let in.
    bool InitThreadData() override;
    void DoWork() override;

protected:
    // What the thread object shares with the body in the thread.
    struct Control {
        Control(std::shared_ptr<iSaverWorkData> work, unsigned index, qvrCEvent::ResetMode stopMode)
            : Work(std::move(work)), Index(index), StopEvent(stopMode) {}
        const std::shared_ptr<iSaverWorkData> Work;
        const unsigned Index;
        qvrCEvent StopEvent;
        qvrCEvent EndedEvent{qvrCEvent::ResetMode::Manual};
    };
    using Body = std::function<void(Control&)>;

    // `className` names the thread in the debug line of a forced end.
    iSaverThread(std::shared_ptr<iSaverWorkData> work, unsigned index, qvrCEvent::ResetMode stopMode,
                 const char* className);
    // Sets the body; the derived constructor calls it once.
    void setBody(Body body) { TheBody = std::make_shared<Body>(std::move(body)); }

private:
    const char* ClassName;
    std::shared_ptr<Control> Shared;
    std::shared_ptr<Body> TheBody;
};
