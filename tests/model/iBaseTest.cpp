#include "model/iBase.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

// Records the events it sees; answers Delete once told to.
class RecordingNotifier : public iNotifier {
public:
    RecordingNotifier(iBase* target, std::vector<long>& log) : iNotifier(target), Log(log) {}
    iNotifyAnswer OnEvent(long code, const iEventArgument&) override {
        Log.push_back(code);
        if (DetachOther) DetachOther->SetTarget(nullptr);
        return LeaveOnEvent ? iNotifyAnswer::Delete : iNotifyAnswer::Keep;
    }
    iTargetGoneAnswer OnTargetDestroyed() override {
        Log.push_back(-1);
        return LeaveOnDestruction ? iTargetGoneAnswer::Delete : iTargetGoneAnswer::Detach;
    }
    std::vector<long>& Log;
    bool LeaveOnEvent = false;
    bool LeaveOnDestruction = false;
    iNotifier* DetachOther = nullptr;
};

class VetoingBase : public iBase {
public:
    using iBase::iBase;
    using iBase::SetName;
    bool SetName(const std::string& name) override { return name != "Taken"; }
    void FixName() override { ++FixCount; }
    int FixCount = 0;
};

} // namespace

TEST(iBase, NotifyReachesEveryNotifierInOrderOfSubscription) {
    iBase object("Object");
    std::vector<long> first, second;
    RecordingNotifier a(&object, first);
    RecordingNotifier b(&object, second);
    object.Notify(7);
    EXPECT_EQ(first, std::vector<long>{7});
    EXPECT_EQ(second, std::vector<long>{7});
    EXPECT_EQ(object.GetNotifierCount(), 2);
}

TEST(iBase, HandlerAnsweringDeleteIsRemovedDuringTheWalk) {
    iBase object;
    std::vector<long> log;
    auto* leaving = new RecordingNotifier(&object, log);
    leaving->LeaveOnEvent = true;
    RecordingNotifier staying(&object, log);
    object.Notify(3);
    object.Notify(4);
    EXPECT_EQ(log, (std::vector<long>{3, 3, 4}));
    EXPECT_EQ(object.GetNotifierCount(), 1);
}

TEST(iBase, HandlerMayDetachTheNextNotifierWithoutBreakingTheWalk) {
    iBase object;
    std::vector<long> log;
    RecordingNotifier first(&object, log);
    RecordingNotifier second(&object, log);
    RecordingNotifier third(&object, log);
    first.DetachOther = &second;
    object.Notify(5);
    EXPECT_EQ(log, (std::vector<long>{5, 5}));
    EXPECT_EQ(second.GetTarget(), nullptr);
    EXPECT_EQ(object.GetNotifierCount(), 2);
}

TEST(iBase, DestructionClearsReferencesAndDeletesNotifiersThatLetGo) {
    std::vector<long> log;
    iReference<iBase> reference;
    {
        iBase object;
        reference.Set(&object);
        auto* owned = new RecordingNotifier(&object, log);
        owned->LeaveOnDestruction = true;
        EXPECT_EQ(reference.Get(), &object);
    }
    EXPECT_EQ(reference.Get(), nullptr);
    EXPECT_EQ(log, std::vector<long>{-1});
}

TEST(iBase, CopiedReferenceSubscribesOnItsOwn) {
    iBase object;
    iReference<iBase> first(&object);
    iReference<iBase> second(first);
    EXPECT_EQ(object.GetNotifierCount(), 2);
    first.Set(nullptr);
    EXPECT_EQ(second.Get(), &object);
    EXPECT_EQ(object.GetNotifierCount(), 1);
}

TEST(iBase, SetNameRefusesEmptyAndVetoedNamesAndIgnoresCase) {
    VetoingBase object("Layer");
    std::vector<long> log;
    RecordingNotifier watcher(&object, log);
    EXPECT_FALSE(object.SetName("", true));
    EXPECT_FALSE(object.SetName("Taken", true));
    EXPECT_TRUE(object.SetName("LAYER", true));
    EXPECT_EQ(object.GetName(), "Layer");
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(object.FixCount, 0);

    EXPECT_TRUE(object.SetName("Solid", true));
    EXPECT_EQ(object.GetName(), "Solid");
    EXPECT_EQ(object.FixCount, 1);
    EXPECT_EQ(log, std::vector<long>{iBase::event_modified});
    EXPECT_TRUE(object.SetName("Other", false));
    EXPECT_EQ(log.size(), 1u);
}

TEST(iBase, NotifierLeavingOnAnotherThreadWaitsForItsRunningHandler) {
    struct SlowNotifier : iNotifier {
        using iNotifier::iNotifier;
        iNotifyAnswer OnEvent(long, const iEventArgument&) override {
            Entered = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            Finished = true;
            return iNotifyAnswer::Keep;
        }
        std::atomic<bool> Entered{false};
        std::atomic<bool> Finished{false};
    };
    iBase object;
    auto slow = std::make_unique<SlowNotifier>(&object);
    SlowNotifier* watched = slow.get();
    std::thread sender([&] { object.Notify(1); });
    while (!watched->Entered)
        std::this_thread::yield();
    // Leaving must wait until the handler has returned.
    slow->SetTarget(nullptr);
    const bool finishedBeforeLeaving = slow->Finished;
    sender.join();
    EXPECT_TRUE(finishedBeforeLeaving);
    EXPECT_EQ(object.GetNotifierCount(), 0);
}
