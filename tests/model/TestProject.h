#pragma once
// A small stand-in for the project: a name index without regard to case, a
// count of change marks, the notices it was given, and the events it fired.

#include "foundation/qvrString.h"
#include "model/iElement.h"
#include "model/iElementContainer.h"

#include <map>
#include <string>
#include <vector>

class TestProject : public iElementContainer {
public:
    iElement* FindElement(const std::string& name) const override {
        auto it = Index.find(name);
        return it == Index.end() ? nullptr : it->second;
    }
    iProjectEntry* AddElement(iElement& element) override {
        if (!Index.emplace(element.GetName(), &element).second) return nullptr;
        return reinterpret_cast<iProjectEntry*>(&element);
    }
    void RemoveElement(iProjectEntry* entry) override {
        for (auto it = Index.begin(); it != Index.end(); ++it)
            if (reinterpret_cast<iProjectEntry*>(it->second) == entry) {
                Index.erase(it);
                return;
            }
    }
    void SetChanged(bool changed) override { ChangeMarks += changed ? 1 : 0; }
    void OnNameChanged(iElement& element) override { NameNotices.push_back(element.GetName()); }
    void OnPositionChanged(iElement&) override { ++PositionNotices; }
    void LeaveGroup(iElement& element) override { element.SetGroup(nullptr); }
    long GetCurrentFrame() const override { return CurrentFrame; }

    bool Holds(const std::string& name) const { return Index.count(name) != 0; }

    std::map<std::string, iElement*, qvrNoCaseLess> Index;
    int ChangeMarks = 0;
    std::vector<std::string> NameNotices;
    int PositionNotices = 0;
    long CurrentFrame = 0;
};

// Collects the codes of the events an object sends.
class EventLog : public iNotifier {
public:
    explicit EventLog(iBase* target) : iNotifier(target) {}
    iNotifyAnswer OnEvent(long code, const iEventArgument& argument) override {
        Codes.push_back(code);
        Objects.push_back(argument.Object);
        Ranges.push_back(argument.Range ? *argument.Range : EFrameRange{-1, -1});
        return iNotifyAnswer::Keep;
    }
    bool Saw(long code) const {
        for (long seen : Codes)
            if (seen == code) return true;
        return false;
    }
    std::vector<long> Codes;
    std::vector<iBase*> Objects;
    std::vector<EFrameRange> Ranges;
};
