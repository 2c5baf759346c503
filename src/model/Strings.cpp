#include "foundation/EStringTable.h"

static constexpr EStringEntry modelStrings[] = {
#include "model/Strings.inc"
};
static const EStringTable::Section modelSection(modelStrings);
