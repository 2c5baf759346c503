#pragma once
// The class table: elements are made by two keys, a class such as "Modifier"
// and a type within it such as "Composer", both compared without regard to
// case. There is no hand-written list: each class family declares one static
// iFactoryProducerType and each concrete class one static iFactoryProducer;
// both hook themselves on a process-wide list during static construction, and
// GlobalInit sorts them into the table. Adding a class is one new file and one
// producer.
//
// Main thread only. The table is valid between GlobalInit and GlobalRem; the
// producer objects themselves live from static construction to static destruction.

#include "model/iBase.h"

#include <memory>
#include <string>
#include <vector>

class iElement;
class iFactoryProducer;

// One class of elements ("Loader", "Modifier", "Saver") with its producers.
class iFactoryProducerType : public iBase {
public:
    // Hooks the class type on the process-wide list.
    explicit iFactoryProducerType(std::string className);

    // Makes an element of the type within this class; null for an unknown type.
    std::unique_ptr<iElement> Produce(const std::string& type, const std::string& name);
    iFactoryProducer* FindProducer(const std::string& type) const;
    const std::vector<iFactoryProducer*>& GetProducers() const { return Producers; }

    // Enters every class type in the factory; then iFactoryProducer::GlobalInit.
    static void GlobalInit();
    // Takes the class types out of the factory, after iFactoryProducer::GlobalRem.
    static void GlobalRem();

private:
    friend class iFactoryProducer;

    std::vector<iFactoryProducer*> Producers;
    iFactoryProducerType* Next = nullptr;
};

// One concrete element class: makes elements and numbers their default names.
class iFactoryProducer : public iBase {
public:
    // Hooks the producer on the process-wide list; `type` may not be constructed
    // yet. A type that older files name differently is found by `formerName`
    // too, and written by its own name.
    iFactoryProducer(iFactoryProducerType& type, std::string typeName, std::string formerName = {});

    // Makes a new element outside any project. A missing or empty name
    // becomes the type's name and the next number: "Composer.3".
    std::unique_ptr<iElement> Produce(const std::string& name = {});
    // Index of the class's icon in the shared image list.
    virtual int GetIcon() const { return 0; }
    iFactoryProducerType& GetType() const { return Type; }
    long GetCounter() const { return Counter; }
    // Whether the producer makes the type of this name, its own or its former one.
    bool Makes(const std::string& typeName) const;

    // Enters every producer in its class type's list.
    static void GlobalInit();
    // Takes every producer out of its class type's list.
    static void GlobalRem();

protected:
    virtual std::unique_ptr<iElement> Create(const std::string& name) = 0;

private:
    iFactoryProducerType& Type;
    std::string FormerName;
    long Counter = 0;
    iFactoryProducer* Next = nullptr;
};

// The producer of class T, which has a constructor from the element's name.
template <class T> class iFactoryProducerOf : public iFactoryProducer {
public:
    iFactoryProducerOf(iFactoryProducerType& type, std::string typeName, int icon = 0,
                       std::string formerName = {})
        : iFactoryProducer(type, std::move(typeName), std::move(formerName)), Icon(icon) {}
    int GetIcon() const override { return Icon; }

protected:
    std::unique_ptr<iElement> Create(const std::string& name) override { return std::make_unique<T>(name); }

private:
    int Icon;
};

// The single factory, named "Factory": the list of class types.
class iFactory : public iBase {
public:
    // Makes an element of class and type; null when either is unknown.
    std::unique_ptr<iElement> Produce(const std::string& className, const std::string& type,
                                      const std::string& name);
    iFactoryProducerType* FindType(const std::string& className) const;
    const std::vector<iFactoryProducerType*>& GetTypes() const { return Types; }

    static iFactory& Get();

private:
    friend class iFactoryProducerType;
    friend class iFactoryProducer;

    iFactory() : iBase("Factory") {}

    std::vector<iFactoryProducerType*> Types;
};
