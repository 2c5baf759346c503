#include "foundation/EStringTable.h"

static constexpr EStringEntry objectsStrings[] = {
#include "objects/Strings.inc"
};
static const EStringTable::Section objectsSection(objectsStrings);
