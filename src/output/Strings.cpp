#include "foundation/EStringTable.h"

static constexpr EStringEntry outputStrings[] = {
#include "output/Strings.inc"
};
static const EStringTable::Section outputSection(outputStrings);
