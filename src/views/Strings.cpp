#include "foundation/EStringTable.h"

static constexpr EStringEntry viewsStrings[] = {
#include "views/Strings.inc"
};
static const EStringTable::Section viewsSection(viewsStrings);
