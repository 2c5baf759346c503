#include "output/ESaverFrontEnd.h"

#include <atomic>

namespace {
ESaverFrontEnd headless;
std::atomic<ESaverFrontEnd*> installed{&headless};
} // namespace

bool ESaverFrontEnd::RunSetup(iSaver&) {
    return false;
}

bool ESaverFrontEnd::RunExecution(iSaver&) {
    return false;
}

ESaverFrontEnd& ESaverFrontEnd::Get() {
    return *installed.load();
}

void ESaverFrontEnd::Set(ESaverFrontEnd* hook) {
    installed = hook ? hook : &headless;
}
