#pragma once
// The base of elements without parents that originate pictures: solid layers
// and footage. The classes give the size query and the render themselves.
// Threads as iElement.

#include "model/iElement.h"
#include "model/iFactory.h"

class iSource : public iElement {
public:
    using iElement::iElement;

    int GetMaxParents() const override { return 0; }

    // The class of every source in files and identifiers: "Loader".
    static iFactoryProducerType ClassType;
};
