#pragma once
// Support of the spline and time control tests: an element with a type text
// of its own and named values, and a user-interface hook that also records
// the status line.

#include "model/ScriptedUserInterface.h"
#include "model/iElement.h"
#include "model/iProject.h"

#include <memory>
#include <string>
#include <vector>

class SplineTestElement : public iElement {
public:
    SplineTestElement(std::string name, std::string type, const std::vector<std::string>& valueNames)
        : iElement(std::move(name)), Type(std::move(type)) {
        for (const std::string& valueName : valueNames)
            AddValue(valueName);
    }

    iFactoryProducer* GetProducer() const override { return nullptr; }
    std::string GetElementType() const override { return Type; }

    iActiveValue& AddValue(const std::string& valueName) {
        Values.push_back(std::make_unique<iActiveValue>(this, valueName, 0.0, false));
        return *Values.back();
    }
    iActiveValue& Value(size_t index) { return *Values.at(index); }

    // Makes an element in the project and returns it; the project owns it.
    static SplineTestElement& Make(iProject& project, const std::string& name,
                                   const std::string& type = "Probe",
                                   const std::vector<std::string>& valueNames = {"Alpha", "Beta"}) {
        return static_cast<SplineTestElement&>(
            *project.Adopt(std::make_unique<SplineTestElement>(name, type, valueNames)));
    }

    std::string Type;
    std::vector<std::unique_ptr<iActiveValue>> Values;
};

class RecordingUserInterface : public ScriptedUserInterface {
public:
    void SetStatusText(const std::string& text) override { Status.push_back(text); }
    std::string LastStatus() const { return Status.empty() ? std::string() : Status.back(); }

    std::vector<std::string> Status;
};
