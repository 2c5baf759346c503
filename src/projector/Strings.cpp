#include "foundation/EStringTable.h"

static constexpr EStringEntry projectorStrings[] = {
#include "projector/Strings.inc"
};
static const EStringTable::Section projectorSection(projectorStrings);
