#pragma once
// A project view over a project of its own, in a window of 800 by 600 whose
// middle shows pane point 400,300 at zoom 1, so that window and pane
// coordinates agree. Elements: test nodes with one parent, fan-in nodes with
// any number, probe sources with none.

#include "ViewTestSupport.h"
#include "model/TestElements.h"
#include "model/iProject.h"
#include "objects/ProbeSource.h"
#include "views/CProjectView.h"
#include "views/CProjectViewSettings.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

class FanInNode : public TestNode {
public:
    using TestNode::TestNode;
    iFactoryProducer* GetProducer() const override { return &Producer; }
    int GetMaxParents() const override { return 2; }
    static inline iFactoryProducerOf<FanInNode> Producer{TestNode::ClassType, "Fan In"};
};

class ProjectViewFixture : public ::testing::Test {
protected:
    void SetUp() override {
        iFactoryProducerType::GlobalInit();
        CProjectViewSettings& settings = CProjectViewSettings::Get();
        settings.Reset();
        settings.CenterPoint = {400, 300};
        view = std::make_unique<CProjectView>(project, settings, host);
        view->SetClientSize({800, 600});
    }
    void TearDown() override {
        view.reset();
        project.Clear();
        iFactoryProducerType::GlobalRem();
    }

    template <class T = TestNode> T* add(const std::string& name, CPoint at) {
        auto* added = static_cast<T*>(project.Adopt(std::make_unique<T>(name)));
        added->SetPanePosition(at, false);
        return added;
    }

    void selectOnly(iElement& element) {
        project.ClearSelection();
        project.ClearGroupSelection();
        element.SetSelected(true);
    }

    // Starts a drag of the selection at `from` and moves it to `to`.
    CDropEffect dragSelection(CPoint from, CPoint to, unsigned keys = key_none) {
        data = view->BeginDrag(from);
        view->DragEnter(ioleConnector::Format, data, from, keys);
        return view->DragOver(to, keys);
    }

    // Drags the element alone from its icon to `to`.
    CDropEffect drag(iElement& element, CPoint to, unsigned keys = key_none) {
        selectOnly(element);
        return dragSelection(element.GetPanePosition(), to, keys);
    }

    const std::string& status() const { return view->GetStatusText(); }

    StatusRecorder ui;
    iProject project;
    RecordingHost host;
    std::unique_ptr<CProjectView> view;
    std::string data;
};
