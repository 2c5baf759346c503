#pragma once
// A user-interface hook for tests: it records every message text and answers
// with a set button. Installed for the lifetime of the object.

#include "foundation/EUserInterface.h"

#include <string>
#include <vector>

class ScriptedUserInterface : public EUserInterface {
public:
    ScriptedUserInterface() { EUserInterface::Set(this); }
    ~ScriptedUserInterface() override { EUserInterface::Set(nullptr); }
    ScriptedUserInterface(const ScriptedUserInterface&) = delete;
    ScriptedUserInterface& operator=(const ScriptedUserInterface&) = delete;

    EMessageAnswer AskMessage(const EMessageRequest& request) override {
        Messages.push_back(request.Text);
        return {Answer, false};
    }

    int Answer = IDYES;
    std::vector<std::string> Messages;
};
