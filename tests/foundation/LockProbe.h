#pragma once
// Tells whether another thread could take a critical section right now.

#include "foundation/qvrCSyncObjects.h"

#include <thread>

inline bool FreeForOtherThreads(qvrCCriticalSection& section) {
    bool entered = false;
    std::thread([&] {
        entered = section.Lock(0);
        if (entered) section.Unlock();
    }).join();
    return entered;
}
