#pragma once
// The root of the object model: a name and an event channel. A subscriber
// attaches an iNotifier to an object; Notify hands each event to every
// notifier from head to tail, and the object's destruction asks each whether
// it lets go. A plain iNotifier is thus a reference that clears itself when its
// target dies.
//
// Attaching, detaching and notifying are safe from several threads: the list
// has a mutex that is never held while a handler runs, so a handler may attach,
// detach or delete notifiers, its own included, and may notify again. The name
// belongs to the main thread; other threads may read it while it doesn't change.

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

class iBase;
class iElementFrameStore;

// A span of frames: first frame and length. An open end is last frame 0x7fffffff.
struct EFrameRange {
    long First = 0;
    long Length = 0;

    static constexpr long OpenEnd = 0x7fffffff;
    static EFrameRange FromTo(long first, long last) { return {first, last - first + 1}; }
    long Last() const { return First + Length - 1; }
    bool Contains(long frame) const { return frame >= First && frame <= Last(); }
};

// What an event carries besides its code. Null members are not part of it.
struct iEventArgument {
    // The frames the change touches; null means all frames (the "time stamp" of a change).
    const EFrameRange* Range = nullptr;
    // The object an event of a container is about, such as the element added to a project.
    iBase* Object = nullptr;
    // Event 13 of an element: the store into which each view writes itself.
    iElementFrameStore* Store = nullptr;
};

// The answer of a notifier's event handler.
enum class iNotifyAnswer { Keep, Delete };
// The answer of a notifier whose target is being destroyed; it is detached in either case.
enum class iTargetGoneAnswer { Detach, Delete };

// A subscription to one iBase. Answering Delete to either callback makes the
// target delete the notifier, which must then have been made with new. Safe
// from several threads as far as its target's list is; SetTarget itself
// belongs to the thread that owns the notifier.
class iNotifier {
public:
    iNotifier() = default;
    explicit iNotifier(iBase* target) { SetTarget(target); }
    // Leaves the target's list.
    virtual ~iNotifier();
    iNotifier(const iNotifier&) = delete;
    iNotifier& operator=(const iNotifier&) = delete;

    // Leaves the present target and subscribes to the new one, at the tail of its list; null only leaves.
    void SetTarget(iBase* target);
    iBase* GetTarget() const { return Target.load(); }

protected:
    // An event of the target, from the thread that sent it.
    virtual iNotifyAnswer OnEvent(long code, const iEventArgument& argument);
    // The target is in its destructor; GetTarget is already null.
    virtual iTargetGoneAnswer OnTargetDestroyed();

private:
    friend class iNotifierList;
    friend class iBase;

    std::atomic<iBase*> Target{nullptr};
    iNotifier* Prev = nullptr;
    iNotifier* Next = nullptr;
};

// A reference to an object of a known class that clears itself when the
// object dies. Copies subscribe on their own.
template <class T> class iReference : public iNotifier {
public:
    iReference() = default;
    explicit iReference(T* target) : iNotifier(target) {}
    iReference(const iReference& other) : iNotifier(other.GetTarget()) {}
    iReference& operator=(const iReference& other) {
        if (other.GetTarget() != GetTarget()) SetTarget(other.GetTarget());
        return *this;
    }

    T* Get() const { return static_cast<T*>(GetTarget()); }
    void Set(T* target) {
        if (target != Get()) SetTarget(target);
    }
};

// The intrusive list of an object's notifiers: head, tail, count and the owner.
class iNotifierList {
public:
    explicit iNotifierList(iBase& owner) : Owner(owner) {}
    iNotifierList(const iNotifierList&) = delete;
    iNotifierList& operator=(const iNotifierList&) = delete;

    void Attach(iNotifier& notifier);
    void Detach(iNotifier& notifier);
    void Notify(long code, const iEventArgument& argument);
    // Asks each notifier whether it lets go, from head to tail, until the list is empty.
    void Clear();
    long GetCount() const;

private:
    // One walk of Notify. A detach that removes the walk's next notifier moves
    // it on; one from another thread waits while the walk calls that notifier.
    struct Walk {
        iNotifier* Current;
        iNotifier* NextNotifier;
        std::thread::id Thread;
        Walk* Outer;
    };
    bool isCalledElsewhereLocked(const iNotifier& notifier) const;
    void unlinkLocked(iNotifier& notifier);
    iNotifier* popHead();

    iBase& Owner;
    mutable std::mutex Guard;
    std::condition_variable CallEnded;
    iNotifier* Head = nullptr;
    iNotifier* Tail = nullptr;
    long Count = 0;
    Walk* Walks = nullptr;
};

// The root of every object of a project. See the file comment for threads.
class iBase {
public:
    // The event that tells of a change of name or appearance.
    static constexpr long event_modified = 1;

    iBase() : Notifiers(*this) {}
    explicit iBase(std::string name) : Notifiers(*this), Name(std::move(name)) {}
    // Tells every notifier that the object goes.
    virtual ~iBase();
    iBase(const iBase&) = delete;
    iBase& operator=(const iBase&) = delete;

    const std::string& GetName() const { return Name; }

    // Renames the object. An empty name is refused; a name equal to the present
    // one without regard to case succeeds at once. SetName(name) may veto the
    // change; then the name is stored, FixName runs, and with `notify` event 1 follows.
    virtual bool SetName(const std::string& name, bool notify);
    // Asked before a rename; false keeps the present name. The base agrees.
    virtual bool SetName(const std::string& name);
    // Enters the present name wherever the object is indexed; the base has no index.
    virtual void FixName();

    // Hands the event to every notifier, from head to tail.
    void Notify(long code, const iEventArgument& argument = {});
    long GetNotifierCount() const { return Notifiers.GetCount(); }

protected:
    // Stores a name without any check or notice.
    void StoreName(std::string name) { Name = std::move(name); }
    // Asks every notifier to let go now, as the destructor would.
    void ClearNotifiers() { Notifiers.Clear(); }

private:
    friend class iNotifier;

    iNotifierList Notifiers;
    std::string Name;
};
