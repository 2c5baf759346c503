#include "app/EInitializer.h"

#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"

void EInitializerStatus::SetStatus(const std::string&, unsigned) {}

namespace {

void push(EInitializer*& head, EInitializer* component) {
    component->Next = head;
    head = component;
}

EInitializer* pop(EInitializer*& head) {
    EInitializer* component = head;
    head = component->Next;
    component->Next = nullptr;
    return component;
}

void unlink(EInitializer*& head, EInitializer* component) {
    for (EInitializer** link = &head; *link; link = &(*link)->Next) {
        if (*link == component) {
            *link = component->Next;
            return;
        }
    }
}

} // namespace

EInitializerList& EInitializerList::Global() {
    static EInitializerList instance;
    return instance;
}

void EInitializerList::Add(EInitializer* component) {
    push(component->DependencyId ? WithDependency : NoDependency, component);
    ++Constructed;
}

void EInitializerList::Remove(EInitializer* component) {
    unlink(NoDependency, component);
    unlink(WithDependency, component);
    unlink(Started, component);
}

EInitializer* EInitializerList::findStarted(EStringId nameId) const {
    for (EInitializer* c = Started; c; c = c->Next)
        if (c->NameId == nameId) return c;
    return nullptr;
}

void EInitializerList::requeue(EInitializer* component) {
    push(component->DependencyId ? WithDependency : NoDependency, component);
}

bool EInitializerList::start(EInitializer* component, EInitializerStatus& status) {
    std::string text = EStringTable::Load(component->NameId);
    status.SetStatus(text, component->GetStepCount());
    if (!component->OnInit(status)) {
        qvrTraceText(qvrFormatMessage(
            "*** ERROR[EInitializer::DoInitInstance()]: Component \"%1\" failed to initialize - exiting !\n",
            {text}));
        requeue(component);
        return false;
    }
    push(Started, component);
    return true;
}

bool EInitializerList::DoInitInstance(EInitializerStatus& status) {
    qvrTrace("\nStarting to initialize EInitializer components:\n");
    while (NoDependency) {
        EInitializer* component = pop(NoDependency);
        qvrTrace(" > %s (no dependency)\n", EStringTable::Load(component->NameId).c_str());
        if (!start(component, status)) return false;
    }
    while (WithDependency)
        if (!initFirstDependecy(status)) return false;
    qvrTrace(" Components loaded.\n\n");
    return true;
}

bool EInitializerList::initFirstDependecy(EInitializerStatus& status) {
    EInitializer* component = pop(WithDependency);
    std::string text = EStringTable::Load(component->NameId);
    std::string dependencyText = EStringTable::Load(component->DependencyId);
    qvrTrace(" > %s (%s)\n", text.c_str(), dependencyText.c_str());
    if (!findStarted(component->DependencyId)) {
        if (!WithDependency) {
            qvrTrace("*** ERROR[EInitializer::initFirstDependecy()]: %s: Cannot resolve dependency %s !\n",
                     text.c_str(), dependencyText.c_str());
            return false;
        }
        qvrTrace(" : Dependency not initialized yet; continuing with dependency.\n");
        while (WithDependency) {
            if (!initFirstDependecy(status)) {
                requeue(component);
                return false;
            }
        }
        if (!findStarted(component->DependencyId)) {
            qvrTrace("*** ERROR[EInitializer::initFirstDependecy()]: %s: Cannot resolve dependency %s (code "
                     "%ld) - "
                     "doesn't seem to exist at all !!!!!\n",
                     text.c_str(), dependencyText.c_str(), static_cast<long>(component->DependencyId));
            requeue(component);
            return false;
        }
        qvrTrace(" : %s: Dependency okay.\n", text.c_str());
    }
    return start(component, status);
}

void EInitializerList::DoExitInstance(EInitializerStatus& status) {
    qvrTrace("\nRemoving EInitializer components (in reverse initialization order):\n");
    while (Started) {
        EInitializer* component = pop(Started);
        std::string text = EStringTable::Load(component->NameId);
        qvrTrace(" > %s\n", text.c_str());
        status.SetStatus(text, component->GetStepCount());
        component->OnExit(status);
        requeue(component);
    }
    qvrTrace(" Components removed.\n\n");
}

EInitializer::EInitializer(EStringId nameId, EStringId dependencyId, EInitializerList& list)
    : NameId(nameId), DependencyId(dependencyId), List(list) {
    List.Add(this);
}

EInitializer::~EInitializer() {
    List.Remove(this);
}
