#pragma once
// The ids of the projector array's texts in the string table, by name.

#include "foundation/EStringTable.h"

struct ProjectorText {
    // Labels of the projector array saver's parameters.
    static constexpr EStringId LabelDisplayWindows = 65087;
    static constexpr EStringId LabelMaskColor = 65088;
};
