#include "foundation/EStringTable.h"

static constexpr EStringEntry foundationStrings[] = {
#include "foundation/Strings.inc"
};
static const EStringTable::Section foundationSection(foundationStrings);
