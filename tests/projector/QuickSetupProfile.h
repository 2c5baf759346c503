#pragma once
// Empties the saver's part of the user's profile before and after a test, so
// that the dialogs of the quick setup start from their defaults.

#include "foundation/qvrCRegKey.h"

class QuickSetupProfile {
public:
    QuickSetupProfile() { clear(); }
    ~QuickSetupProfile() { clear(); }
    QuickSetupProfile(const QuickSetupProfile&) = delete;
    QuickSetupProfile& operator=(const QuickSetupProfile&) = delete;

private:
    static void clear() { qvrCRegKey::Root().DeleteSubTree("Vitrea:18 saver"); }
};
