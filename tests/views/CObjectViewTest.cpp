#include "views/CObjectView.h"

#include "ObjectViewFixture.h"
#include "foundation/TraceCapture.h"
#include "foundation/qvrCTreeData.h"

namespace {

class ObjectView : public ObjectViewFixture {
protected:
    // A view of 200 by 200 at zoom 1 that shows picture point 50,50 in its middle.
    CObjectView& viewOf(iElement* element) {
        view.SetElement(element);
        view.SetClientSize({200, 200});
        view.SetCenter({50, 50});
        return view;
    }

    static std::vector<CRect> filled(const RecordingCanvas& canvas, std::uint32_t colour) {
        std::vector<CRect> rects;
        for (const auto& fill : canvas.Fills)
            if (fill.Colour == colour) rects.push_back(fill.Rect);
        return rects;
    }

    CObjectView view{host};
};

} // namespace

TEST_F(ObjectView, AsksForTheShownPartAtItsScreenSizeAndGroundsTheRest) {
    ProbeSource* source = add("Probe");
    source->Colour = 0xFF123456;
    RecordingCanvas canvas({0, 0, 200, 200});
    viewOf(source).OnDraw(canvas);

    EXPECT_EQ(source->LastRect, (CRect{0, 0, 100, 100}));
    EXPECT_EQ(source->LastDisplaySize, (EImageSize{100, 100}));
    ASSERT_EQ(canvas.Pictures.size(), 1u);
    EXPECT_EQ(canvas.Pictures[0].Rect, (CRect{50, 50, 150, 150}));
    EXPECT_EQ(canvas.Pictures[0].TopLeft, 0xFF123456u);
    EXPECT_EQ(
        filled(canvas, CObjectView::Ground),
        (std::vector<CRect>{{-1, -1, 201, 50}, {-1, 150, 201, 201}, {-1, 50, 50, 150}, {150, 50, 201, 150}}))
        << "the clip area, one pixel larger each side, less the picture";
    EXPECT_TRUE(view.GetText().empty());
    EXPECT_EQ(view.GetSizeStatus(), " 100x100");
}

TEST_F(ObjectView, APartialSectionCoversItsPixelsAndNeverAsksForLessThanSix) {
    ProbeSource* source = add("Probe");
    viewOf(source).SetClientSize({100, 100});
    view.SetZoom(2.0);
    RecordingCanvas canvas({0, 0, 100, 100});
    view.OnDraw(canvas);
    EXPECT_EQ(source->LastRect, (CRect{24, 24, 76, 76}));
    EXPECT_EQ(source->LastDisplaySize, (EImageSize{102, 102}));
    EXPECT_EQ(view.GetZoomStatus(), " 200.00%");

    view.SetZoom(0.04);
    RecordingCanvas small({0, 0, 100, 100});
    view.OnDraw(small);
    EXPECT_EQ(source->LastRect, (CRect{0, 0, 100, 100}));
    EXPECT_EQ(source->LastDisplaySize, (EImageSize{6, 6})) << "four pixels on the screen, six asked for";
}

TEST_F(ObjectView, WithoutAPictureTheViewPaintsItsTextOnItsOwnGround) {
    RecordingCanvas empty({0, 0, 50, 40});
    viewOf(nullptr).OnDraw(empty);
    ASSERT_EQ(empty.Texts.size(), 1u);
    EXPECT_EQ(empty.Texts[0].second, "Please drag an object into the window !");
    EXPECT_EQ(filled(empty, CObjectView::TextGround), (std::vector<CRect>{{-1, -1, 51, 41}}));

    TestNode* unready = add<TestNode>("Unready");
    unready->Configured = false;
    RecordingCanvas refused({0, 0, 50, 40});
    viewOf(unready).OnDraw(refused);
    EXPECT_EQ(view.GetText(), "The object \"Unready\" (Node) has not properly been configured.");
    EXPECT_TRUE(refused.Pictures.empty());

    ProbeSource* failing = add("Failing");
    failing->FailRender = true;
    RecordingCanvas failed({0, 0, 200, 200});
    viewOf(failing).OnDraw(failed);
    EXPECT_FALSE(view.GetText().empty());
    ASSERT_EQ(failed.Texts.size(), 1u);
    EXPECT_EQ(failed.Texts[0], (std::pair<CRect, std::string>{{50, 50, 150, 150}, view.GetText()}));
    EXPECT_EQ(filled(failed, CObjectView::Ground).size(), 4u);
}

TEST_F(ObjectView, APictureWhollyOutsideTheWindowIsNotRendered) {
    ProbeSource* source = add("Probe");
    viewOf(source).SetCenter({1000, 1000});
    RecordingCanvas canvas({0, 0, 200, 200});
    view.OnDraw(canvas);
    EXPECT_EQ(source->Renders, 0);
    EXPECT_EQ(filled(canvas, CObjectView::Ground), (std::vector<CRect>{{-1, -1, 201, 201}}));
}

TEST_F(ObjectView, TheElementsGridIsDrawnOverThePictureThroughTheZoom) {
    imodMerger* composer = composerWithLayer();
    auto* grid = add<GridElement>("Grid");
    grid->Rects = {{10, 20, 30, 40}};
    ASSERT_TRUE(composer->SetGrid(grid));
    viewOf(composer).SetZoom(2.0);
    RecordingCanvas canvas({0, 0, 200, 200});
    view.OnDraw(canvas);
    EXPECT_EQ(canvas.Outlines, (std::vector<CRect>{{20, 40, 60, 80}}));
}

TEST_F(ObjectView, FittingNeedsAnElementAndTheWindowKeepsCentreAndZoom) {
    viewOf(nullptr);
    EXPECT_FALSE(view.ZoomToFit());
    EXPECT_EQ(view.GetStatusText(), "Please select an object.");
    EXPECT_EQ(ui.Status.back(), "Please select an object.");

    viewOf(add("Probe")).SetClientSize({300, 150});
    EXPECT_TRUE(view.ZoomToFit());
    EXPECT_DOUBLE_EQ(view.GetZoom(), 1.5);
    EXPECT_EQ(view.GetCenter(), (CPoint{50, 50}));
    EXPECT_EQ(view.GetZoomStatus(), " 150.00%");

    qvrCTreeData block("Window.#01");
    view.SaveWindow(block);
    CObjectView restored(host);
    restored.LoadWindow(block);
    EXPECT_DOUBLE_EQ(restored.GetZoom(), 1.5);
    EXPECT_EQ(restored.GetCenter(), (CPoint{50, 50}));
}
