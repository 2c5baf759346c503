#include "output/iSaverThread.h"

#include "foundation/qvrSplitWork.h"

#include "foundation/qvrTrace.h"
#include "output/iSaverWorkData.h"

namespace {

constexpr unsigned long EndWaitMs = 10;
constexpr unsigned long TerminateWaitMs = 50;
constexpr unsigned long DestroyWaitMs = 2000;

} // namespace

iSaverThread::iSaverThread(std::shared_ptr<iSaverWorkData> work, unsigned index,
                           qvrCEvent::ResetMode stopMode, const char* className)
    : ClassName(className), Shared(std::make_shared<Control>(std::move(work), index, stopMode)) {}

iSaverThread::~iSaverThread() {
    SignalStop();
    if (!WaitForEnd(EndWaitMs) && IsAlive()) {
        qvrTrace("*** WARNING[%s::~%s()]: Terminating thread.\n", ClassName, ClassName);
        Kill(TerminateWaitMs, true);
    }
    Destroy(DestroyWaitMs);
}

bool iSaverThread::InitThreadData() {
    Shared->Work->ThreadStarted(Shared->Index);
    return true;
}

// The body's data dies with the body; the owner may collect the thread from
// then on and waits only for the little that is left, so the finished message
// finds every thread ended.
void iSaverThread::DoWork() {
    const std::shared_ptr<Control> control = Shared;
    const std::shared_ptr<Body> body = TheBody;
    if (body) {
        // The thread keeps its core busy until its body ends: pictures are split only for spare cores.
        qvrBusyCore busy;
        (*body)(*control);
    }
    control->EndedEvent.Set();
    control->Work->ThreadEnded(control->Index);
}
