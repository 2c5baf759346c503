#pragma once
// The ids of the foundation's texts in the string table, by name.

#include "foundation/EStringTable.h"

struct FoundationText {
    // Message boxes.
    static constexpr EStringId ButtonOk = 40000;
    static constexpr EStringId AlwaysAnswer = 40013; // "%1" the answer
    // Database files.
    static constexpr EStringId LoadingDatabase = 50501;
    static constexpr EStringId SavingDatabase = 50502;
    static constexpr EStringId LoadingObject = 50503; // "%1" file, "%2" line, "%3" object
    static constexpr EStringId SavingObject = 50504;  // "%1" file, "%2" object
    static constexpr EStringId UnknownVersion = 50505;
    static constexpr EStringId FileHasNoData = 50506;
    static constexpr EStringId LoadEvents = 50507;
    static constexpr EStringId SaveEvents = 50511;
};
