#pragma once
// The program's components: each is a static object that starts one subsystem
// in dependency order and ends it in exactly the reverse order. An ended
// component waits to be started again. A component is
// identified by the string id of its status text; it may depend on one other
// component by that id. Start and end run on the main thread.

#include "foundation/EStringTable.h"

#include <string>

// The progress sink of start-up; the base ignores everything.
class EInitializerStatus {
public:
    virtual ~EInitializerStatus() = default;
    virtual void SetStatus(const std::string& text, unsigned steps);
};

class EInitializer;

// The three lists of components: waiting without a dependency, waiting with
// one, and started. The program has one; tests build their own.
class EInitializerList {
public:
    bool DoInitInstance(EInitializerStatus& status);
    bool initFirstDependecy(EInitializerStatus& status);
    void DoExitInstance(EInitializerStatus& status);

    void Add(EInitializer* component);
    void Remove(EInitializer* component);
    unsigned GetConstructedCount() const { return Constructed; }

    static EInitializerList& Global();

private:
    bool start(EInitializer* component, EInitializerStatus& status);
    // Puts a component back on its waiting list, so that the program can be
    // started again in the same process (ending restores the original order).
    void requeue(EInitializer* component);
    EInitializer* findStarted(EStringId nameId) const;

    EInitializer* NoDependency = nullptr;
    EInitializer* WithDependency = nullptr;
    EInitializer* Started = nullptr;
    unsigned Constructed = 0;
};

class EInitializer {
public:
    EInitializer(EStringId nameId, EStringId dependencyId,
                 EInitializerList& list = EInitializerList::Global());
    virtual ~EInitializer();
    EInitializer(const EInitializer&) = delete;
    EInitializer& operator=(const EInitializer&) = delete;

    virtual bool OnInit(EInitializerStatus&) { return true; }
    virtual void OnExit(EInitializerStatus&) {}
    virtual unsigned GetStepCount() { return 1; }

    // Starts every component of the program: first those without a
    // dependency, then the others.
    static bool DoInitInstance(EInitializerStatus& status) {
        return EInitializerList::Global().DoInitInstance(status);
    }
    // Starts the head of the dependency list, resolving its dependency first.
    static bool initFirstDependecy(EInitializerStatus& status) {
        return EInitializerList::Global().initFirstDependecy(status);
    }
    // Ends every started component, last started first.
    static void DoExitInstance(EInitializerStatus& status) {
        EInitializerList::Global().DoExitInstance(status);
    }

    const EStringId NameId;
    const EStringId DependencyId;
    EInitializer* Next = nullptr;

private:
    EInitializerList& List;
};
