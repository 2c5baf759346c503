#include "model/iFactory.h"

#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "model/iElement.h"

namespace {

// The process-wide lists, filled during static construction; constant
// initialised, so they are valid before any constructor runs.
constinit iFactoryProducerType* waitingTypes = nullptr;
constinit iFactoryProducer* waitingProducers = nullptr;

template <class T> T* findByName(const std::vector<T*>& list, const std::string& name) {
    for (T* entry : list)
        if (qvrEqualNoCase(entry->GetName(), name)) return entry;
    return nullptr;
}

} // namespace

// ---------------------------------------------------------------- iFactoryProducerType

iFactoryProducerType::iFactoryProducerType(std::string className) : iBase(std::move(className)) {
    Next = waitingTypes;
    waitingTypes = this;
}

std::unique_ptr<iElement> iFactoryProducerType::Produce(const std::string& type, const std::string& name) {
    iFactoryProducer* producer = FindProducer(type);
    if (!producer) {
        qvrTrace("*** WARNING[iFactoryProducerType::Produce()]: Can't produce element of class %s, type %s: "
                 "Class not existent.\n",
                 GetName().c_str(), type.c_str());
        return nullptr;
    }
    return producer->Produce(name);
}

iFactoryProducer* iFactoryProducerType::FindProducer(const std::string& type) const {
    for (iFactoryProducer* producer : Producers)
        if (producer->Makes(type)) return producer;
    return nullptr;
}

void iFactoryProducerType::GlobalInit() {
    std::vector<iFactoryProducerType*>& types = iFactory::Get().Types;
    types.clear();
    qvrTrace("   * iFactoryProducerType::GlobalInit(): Available class types:\n");
    for (iFactoryProducerType* type = waitingTypes; type; type = type->Next) {
        qvrTrace("      %s\n", type->GetName().c_str());
        types.push_back(type);
    }
    iFactoryProducer::GlobalInit();
}

void iFactoryProducerType::GlobalRem() {
    iFactoryProducer::GlobalRem();
    std::vector<iFactoryProducerType*>& types = iFactory::Get().Types;
    qvrTrace("   * iFactoryProducerType::GlobalRem(): Deleting class types:\n");
    for (iFactoryProducerType* type : types)
        qvrTrace("      %s\n", type->GetName().c_str());
    types.clear();
}

// ---------------------------------------------------------------- iFactoryProducer

iFactoryProducer::iFactoryProducer(iFactoryProducerType& type, std::string typeName, std::string formerName)
    : iBase(std::move(typeName)), Type(type), FormerName(std::move(formerName)) {
    Next = waitingProducers;
    waitingProducers = this;
}

bool iFactoryProducer::Makes(const std::string& typeName) const {
    return qvrEqualNoCase(GetName(), typeName) ||
           (!FormerName.empty() && qvrEqualNoCase(FormerName, typeName));
}

std::unique_ptr<iElement> iFactoryProducer::Produce(const std::string& name) {
    if (!name.empty()) return Create(name);
    ++Counter;
    return Create(qvrFormat("%s.%ld", GetName().c_str(), Counter));
}

void iFactoryProducer::GlobalInit() {
    qvrTrace("   * iFactoryProducer::GlobalInit(): Available objects:\n");
    for (iFactoryProducerType* type = waitingTypes; type; type = type->Next)
        type->Producers.clear();
    for (iFactoryProducer* producer = waitingProducers; producer; producer = producer->Next) {
        qvrTrace("      %s/%s\n", producer->Type.GetName().c_str(), producer->GetName().c_str());
        producer->Type.Producers.push_back(producer);
    }
}

void iFactoryProducer::GlobalRem() {
    qvrTrace("   * iFactoryProducer::GlobalRem(): Deleting objects:\n");
    for (iFactoryProducerType* type : iFactory::Get().Types) {
        for (iFactoryProducer* producer : type->Producers)
            qvrTrace("      %s/%s\n", type->GetName().c_str(), producer->GetName().c_str());
        type->Producers.clear();
    }
}

// ---------------------------------------------------------------- iFactory

std::unique_ptr<iElement> iFactory::Produce(const std::string& className, const std::string& type,
                                            const std::string& name) {
    iFactoryProducerType* classType = FindType(className);
    if (!classType) {
        qvrTrace("*** NOTE[iFactory::Produce()]: Can't create an object of class %s, type %s: No such class "
                 "type.\n",
                 className.c_str(), type.c_str());
        return nullptr;
    }
    return classType->Produce(type, name);
}

iFactoryProducerType* iFactory::FindType(const std::string& className) const {
    return findByName(Types, className);
}

iFactory& iFactory::Get() {
    static iFactory factory;
    return factory;
}
