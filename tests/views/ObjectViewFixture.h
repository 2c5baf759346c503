#pragma once
// Object views over a project of their own: probe sources of 100 by 100, a
// composer, and an element that serves as a grid of rectangles.

#include "ViewTestSupport.h"
#include "model/TestElements.h"
#include "model/iGrid.h"
#include "model/iProject.h"
#include "objects/ProbeSource.h"
#include "objects/imodMerger.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

class GridElement : public TestNode, public iGridRects {
public:
    explicit GridElement(std::string name) : TestNode(std::move(name)) {}
    iFactoryProducer* GetProducer() const override { return &Producer; }
    bool IsGrid() const override { return true; }
    unsigned GetRectCount() const override { return static_cast<unsigned>(Rects.size()); }
    CRect GetRect(unsigned index, EImageSize) const override { return Rects[index]; }

    std::vector<CRect> Rects;
    static inline iFactoryProducerOf<GridElement> Producer{TestNode::ClassType, "Grid"};
};

class ObjectViewFixture : public ::testing::Test {
protected:
    void SetUp() override { iFactoryProducerType::GlobalInit(); }
    void TearDown() override {
        project.Clear();
        iFactoryProducerType::GlobalRem();
    }

    template <class T = ProbeSource> T* add(const std::string& name) {
        return static_cast<T*>(project.Adopt(std::make_unique<T>(name)));
    }

    // A composer over a background of 100 by 100 with one layer of 20 by 20 at 10,0.
    imodMerger* composerWithLayer() {
        auto* background = add("Back");
        auto* layer = add("Lay");
        layer->Size = {20, 20};
        auto* composer = add<imodMerger>("Comp");
        composer->LinkParent(background);
        composer->LinkParent(layer);
        composer->GetLinkOf(layer)->GetXPosition().SetKey(0, 10.0, true, false, false);
        return composer;
    }

    StatusRecorder ui;
    iProject project;
    RecordingHost host;
};
