#include "model/iSource.h"

iFactoryProducerType iSource::ClassType("Loader");
