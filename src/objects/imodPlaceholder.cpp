#include "objects/imodPlaceholder.h"

#include "foundation/qvrString.h"

iFactoryProducerOf<imodPlaceholder> imodPlaceholder::Producer(iModifier::ClassType, "Placeholder");

std::string imodPlaceholder::GetStateText() const {
    const iElement* parent = GetFirstParent();
    return parent ? qvrFormat("(%s)", parent->GetName().c_str()) : std::string();
}
