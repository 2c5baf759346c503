#include "views/CObjectMergerView.h"

#include "ObjectViewFixture.h"
#include "foundation/TraceCapture.h"

namespace {

// A composer's view of 100 by 100 at zoom 1, showing the whole composer after one draw.
class ComposerView : public ObjectViewFixture {
protected:
    void SetUp() override {
        ObjectViewFixture::SetUp();
        composer = composerWithLayer();
        layer = composer->GetLinkOf(project.FindElement("Lay"));
        view.SetElement(composer);
        view.SetClientSize({100, 100});
        view.SetCenter({50, 50});
        draw();
    }

    RecordingCanvas draw() {
        RecordingCanvas canvas({0, 0, 100, 100});
        view.OnDraw(canvas);
        return canvas;
    }

    imodMerger* composer = nullptr;
    imodMergerLink* layer = nullptr;
    CObjectMergerView view{host};
};

} // namespace

TEST_F(ComposerView, FramesEachPlacedLayerButNotOneThatFailedToBePlaced) {
    EXPECT_EQ(draw().Outlines, (std::vector<CRect>{{50, 40, 70, 60}}));
    static_cast<ProbeSource*>(layer->GetParent())->FailSize = true;
    TraceCapture trace;
    EXPECT_TRUE(draw().Outlines.empty());
    EXPECT_TRUE(trace.Contains(
        "*** NOTE[CObjectMergerView::DoDrawRects()]: \"Lay\" is not selectable - won't draw rect.\n"));
}

TEST_F(ComposerView, TheStatusLineNamesTheLayerUnderThePointer) {
    EXPECT_EQ(view.GetPointStatus({5, 7}), "5,7");
    EXPECT_EQ(view.GetPointStatus({55, 45}),
              "55,45: Select \"Lay\" (Probe) at 10,0 (entire image covers the recangle 50,40 - 70,60)");
    EXPECT_EQ(view.GetListLine(), "<No object selected>");
    view.OnLButtonDown({55, 45}, key_none);
    EXPECT_FALSE(view.IsDragging()) << "the first press only selects";
    EXPECT_EQ(view.GetListLine(), "Lay (Probe)");
    EXPECT_EQ(view.GetPointStatus({55, 45}),
              "55,45: \"Lay\" (Probe) at 10,0 (entire image covers the recangle 50,40 - 70,60)");
}

TEST_F(ComposerView, ASecondPressDragsTheLayerThroughTheZoom) {
    view.OnLButtonDown({55, 45}, key_none);
    view.OnLButtonDown({55, 45}, key_none);
    ASSERT_TRUE(view.IsDragging());
    view.OnMouseMove({65, 50}, key_none);
    EXPECT_DOUBLE_EQ(layer->GetXPosition().GetValue(0), 20.0);
    EXPECT_DOUBLE_EQ(layer->GetYPosition().GetValue(0), 5.0);
    EXPECT_EQ(layer->GetXPosition().GetKeyCount(), 1) << "a value of one key moves that key";
    view.OnLButtonUp({65, 50}, key_none);
    EXPECT_FALSE(view.IsDragging());

    view.SetZoom(2.0);
    draw();
    const CPoint onLayer = view.GetMapping().ToClient(CPoint{65, 50});
    view.OnLButtonDown(onLayer, key_none);
    ASSERT_TRUE(view.IsDragging());
    view.OnMouseMove({onLayer.x + 10, onLayer.y}, key_none);
    EXPECT_DOUBLE_EQ(layer->GetXPosition().GetValue(0), 25.0) << "ten pixels at zoom 2 are five units";
}

TEST_F(ComposerView, ADraggedLayerSnapsToTheComposersGrid) {
    auto* grid = add<GridElement>("Grid");
    grid->Rects = {{0, 0, 80, 80}};
    ASSERT_TRUE(composer->SetGrid(grid));
    view.OnLButtonDown({55, 45}, key_none);
    view.OnLButtonDown({55, 45}, key_none);
    view.OnMouseMove({63, 45}, key_none);
    EXPECT_DOUBLE_EQ(layer->GetXPosition().GetValue(0), 20.0) << "the right edge at 78 snaps to 80";
    view.OnMouseMove({45, 45}, key_none);
    EXPECT_DOUBLE_EQ(layer->GetXPosition().GetValue(0), 0.0) << "out of reach of any edge";
}

TEST_F(ComposerView, CommandsOnTheSelectedLayerNeedOneThatIsStillThere) {
    EXPECT_FALSE(view.CenterSelectedLayer());
    EXPECT_EQ(view.GetStatusText(), "Please select an object ...");
    view.OnLButtonDown({55, 45}, key_none);
    EXPECT_TRUE(view.CenterSelectedLayer());
    EXPECT_DOUBLE_EQ(layer->GetXPosition().GetValue(0), 0.0);

    view.OnLButtonDown({55, 45}, key_none);
    composer->UnlinkParent(project.FindElement("Lay"));
    view.OnMouseMove({70, 50}, key_none);
    EXPECT_FALSE(view.IsDragging()) << "a layer that left the composer ends the drag";
    EXPECT_EQ(view.GetListLine(), "<No object selected>");
    EXPECT_FALSE(view.CenterSelectedLayer());
}

TEST_F(ComposerView, ACopyDrawsThePictureAndTheViewPaintsOnlyItsOverlay) {
    RecordingHost copyHost;
    std::unique_ptr<CObjectView> copy = view.MakeDrawingCopy(copyHost);
    EXPECT_EQ(copy->GetViewClass(), "CObjectView");
    RecordingCanvas picture({0, 0, 100, 100});
    copy->OnDraw(picture);
    EXPECT_EQ(picture.Pictures.size(), 1u);
    EXPECT_TRUE(picture.Outlines.empty()) << "the layer frames are the composer view's own";

    view.TakeDrawOutcome(*copy);
    RecordingCanvas overlay({0, 0, 100, 100});
    view.PaintOverlay(overlay);
    EXPECT_TRUE(overlay.Pictures.empty());
    EXPECT_TRUE(overlay.Fills.empty());
    EXPECT_EQ(overlay.Outlines, (std::vector<CRect>{{50, 40, 70, 60}}));
}
