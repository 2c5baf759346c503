#include "model/iObjectFrontEnd.h"

#include <atomic>

namespace {
std::atomic<iObjectFrontEnd*> installedHook{nullptr};
}

unsigned iObjectFrontEnd::TrackPopupMenu(const hMenu&, CPoint, CWnd*) {
    return 0;
}

void iObjectFrontEnd::ShowProperties(iObjectBase&) {}

void iObjectFrontEnd::CloseProperties(iObjectBase&) {}

void iObjectFrontEnd::OpenView(iObjectBase&) {}

void iObjectFrontEnd::RestoreView(iObjectBase&, const qvrCTreeData&) {}

iObjectFrontEnd& iObjectFrontEnd::Get() {
    static iObjectFrontEnd windowless;
    iObjectFrontEnd* hook = installedHook.load();
    return hook ? *hook : windowless;
}

void iObjectFrontEnd::Set(iObjectFrontEnd* hook) {
    installedHook.store(hook);
}
