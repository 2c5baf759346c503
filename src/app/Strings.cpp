#include "foundation/EStringTable.h"

static constexpr EStringEntry appStrings[] = {
#include "app/Strings.inc"
};
static const EStringTable::Section appSection(appStrings);
