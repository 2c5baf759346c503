#pragma once
// Holds a preference section's lock on a thread of its own while it lives, so
// that readers on other threads run into the section's time-out.

#include "foundation/EPrefs.h"

#include <future>
#include <thread>

class SectionLockHolder {
public:
    explicit SectionLockHolder(const EPrefsSection& section)
        : Holder([this, &section] {
              EPrefsSection::Lock lock = section.TryLock();
              Locked.set_value();
              Release.get_future().wait();
          }) {
        Locked.get_future().wait();
    }
    ~SectionLockHolder() {
        Release.set_value();
        Holder.join();
    }
    SectionLockHolder(const SectionLockHolder&) = delete;
    SectionLockHolder& operator=(const SectionLockHolder&) = delete;

private:
    std::promise<void> Locked;
    std::promise<void> Release;
    std::thread Holder; // last, so that it starts after the promises exist
};
