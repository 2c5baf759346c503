#pragma once
// The ids of the application's texts in the string table, by name.

#include "foundation/EStringTable.h"

struct AppText {
    // Status lines of the start-up.
    static constexpr EStringId SettingUpEnvironment = 40200;
    static constexpr EStringId InitializingSubsystems = 40201;
};
