#pragma once
// Support of the project and object view tests: a host that records what a
// view asks of its window, a canvas that records what a view paints, a
// user-interface hook that also keeps the status line, and the connector
// data of a drag.

#include "imaging/EImageData.h"
#include "model/ScriptedUserInterface.h"
#include "views/CObjectViewCanvas.h"
#include "views/CViewHost.h"
#include "views/ioleConnector.h"

#include <cstdint>
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

class RecordingCanvas : public CObjectViewCanvas {
public:
    struct Fill {
        CRect Rect;
        std::uint32_t Colour;
    };
    struct Picture {
        CRect Rect;
        CSize Size;
        std::uint32_t TopLeft;
    };

    explicit RecordingCanvas(CRect clip) : Clip(clip) {}

    CRect GetClipBox() const override { return Clip; }
    void FillRect(const CRect& rect, std::uint32_t colour) override { Fills.push_back({rect, colour}); }
    void DrawText(const CRect& rect, const std::string& text) override { Texts.emplace_back(rect, text); }
    void DrawPicture(const CRect& rect, const EImageData& picture) override {
        Pictures.push_back({rect, picture.GetSize(), picture.GetRow(0)[0]});
    }
    void DrawOutline(const CRect& rect) override { Outlines.push_back(rect); }

    CRect Clip;
    std::vector<Fill> Fills;
    std::vector<std::pair<CRect, std::string>> Texts;
    std::vector<Picture> Pictures;
    std::vector<CRect> Outlines;
};
