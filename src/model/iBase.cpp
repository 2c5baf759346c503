#include "model/iBase.h"

#include "foundation/qvrString.h"

iNotifier::~iNotifier() {
    SetTarget(nullptr);
}

void iNotifier::SetTarget(iBase* target) {
    if (iBase* former = Target.load()) former->Notifiers.Detach(*this);
    if (target) target->Notifiers.Attach(*this);
}

iNotifyAnswer iNotifier::OnEvent(long, const iEventArgument&) {
    return iNotifyAnswer::Keep;
}

iTargetGoneAnswer iNotifier::OnTargetDestroyed() {
    return iTargetGoneAnswer::Detach;
}

void iNotifierList::Attach(iNotifier& notifier) {
    std::lock_guard lock(Guard);
    notifier.Target = &Owner;
    notifier.Prev = Tail;
    notifier.Next = nullptr;
    (Tail ? Tail->Next : Head) = &notifier;
    Tail = &notifier;
    ++Count;
}

void iNotifierList::Detach(iNotifier& notifier) {
    std::unique_lock lock(Guard);
    CallEnded.wait(lock, [&] { return !isCalledElsewhereLocked(notifier); });
    if (notifier.Target == &Owner) unlinkLocked(notifier);
}

bool iNotifierList::isCalledElsewhereLocked(const iNotifier& notifier) const {
    for (const Walk* walk = Walks; walk; walk = walk->Outer)
        if (walk->Current == &notifier && walk->Thread != std::this_thread::get_id()) return true;
    return false;
}

void iNotifierList::unlinkLocked(iNotifier& notifier) {
    for (Walk* walk = Walks; walk; walk = walk->Outer)
        if (walk->NextNotifier == &notifier) walk->NextNotifier = notifier.Next;
    (notifier.Prev ? notifier.Prev->Next : Head) = notifier.Next;
    (notifier.Next ? notifier.Next->Prev : Tail) = notifier.Prev;
    notifier.Prev = notifier.Next = nullptr;
    notifier.Target = nullptr;
    --Count;
}

void iNotifierList::Notify(long code, const iEventArgument& argument) {
    std::unique_lock lock(Guard);
    Walk walk{nullptr, Head, std::this_thread::get_id(), Walks};
    Walks = &walk;
    while (iNotifier* current = walk.NextNotifier) {
        walk.Current = current;
        walk.NextNotifier = current->Next;
        lock.unlock();
        const iNotifyAnswer answer = current->OnEvent(code, argument);
        if (answer == iNotifyAnswer::Delete) delete current;
        lock.lock();
        walk.Current = nullptr;
        CallEnded.notify_all();
    }
    // Walks end in the reverse order of their start on one thread; other
    // threads' walks may lie anywhere in the chain.
    Walk** link = &Walks;
    while (*link != &walk)
        link = &(*link)->Outer;
    *link = walk.Outer;
}

iNotifier* iNotifierList::popHead() {
    std::lock_guard lock(Guard);
    iNotifier* head = Head;
    if (head) unlinkLocked(*head);
    return head;
}

void iNotifierList::Clear() {
    while (iNotifier* notifier = popHead())
        if (notifier->OnTargetDestroyed() == iTargetGoneAnswer::Delete) delete notifier;
}

long iNotifierList::GetCount() const {
    std::lock_guard lock(Guard);
    return Count;
}

iBase::~iBase() {
    Notifiers.Clear();
}

bool iBase::SetName(const std::string& name, bool notify) {
    if (name.empty()) return false;
    if (qvrEqualNoCase(name, Name)) return true;
    if (!SetName(name)) return false;
    Name = name;
    FixName();
    if (notify) Notify(event_modified);
    return true;
}

bool iBase::SetName(const std::string&) {
    return true;
}

void iBase::FixName() {}

void iBase::Notify(long code, const iEventArgument& argument) {
    Notifiers.Notify(code, argument);
}
