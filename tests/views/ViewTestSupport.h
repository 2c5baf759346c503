#pragma once
// Support of the project and object view tests: a host that records what a
// view asks of its window, a user-interface hook that also keeps the status
// line, and the connector data of a drag.

#include "model/ScriptedUserInterface.h"
#include "views/CViewHost.h"
#include "views/ioleConnector.h"

#include <string>
#include <utility>
#include <vector>

class RecordingHost : public CViewHost {
public:
    void Invalidate() override { ++Invalidations; }
    void SetTimer(unsigned id, long milliseconds) override { Timers.emplace_back(id, milliseconds); }
    void KillTimer(unsigned id) override { Killed.push_back(id); }
    void CloseWindow() override { ++Closes; }

    int Invalidations = 0;
    std::vector<std::pair<unsigned, long>> Timers;
    std::vector<unsigned> Killed;
    int Closes = 0;
};

class StatusRecorder : public ScriptedUserInterface {
public:
    void SetStatusText(const std::string& text) override { Status.push_back(text); }
    std::vector<std::string> Status;
};

// The data of a drag of the named elements that no view of this program started.
inline std::string foreignObjects(std::vector<std::string> elements) {
    ioleConnector connector;
    connector.Marker = "another window";
    connector.Elements = std::move(elements);
    return connector.Serialize();
}

// The data of the add bar for a new object of that class and type.
inline std::string newObject(const std::string& className, const std::string& typeName) {
    ioleConnector connector;
    connector.NewClass = className;
    connector.NewType = typeName;
    return connector.Serialize();
}
