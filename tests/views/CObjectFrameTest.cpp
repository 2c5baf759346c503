#include "views/CObjectFrame.h"

#include "ObjectViewFixture.h"
#include "foundation/TraceCapture.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "imaging/EFileGroupSetup.h"
#include "model/iElementData.h"
#include "model/iObjectFrontEnd.h"
#include "objects/isrcSequence.h"
#include "views/CObjectMergerView.h"
#include "views/CObjectSequenceView.h"

namespace {

class ObjectFrame : public ObjectViewFixture {
protected:
    CObjectFrame frame{project, host};
};

// Reopens each view a load asks for in a frame of its own.
class ReopeningFrontEnd : public iObjectFrontEnd {
public:
    ReopeningFrontEnd(iProject& project, CViewHost& host) : Project(project), Host(host) {
        iObjectFrontEnd::Set(this);
    }
    ~ReopeningFrontEnd() override { iObjectFrontEnd::Set(nullptr); }
    void RestoreView(iObjectBase& object, const qvrCTreeData& windowBlock) override {
        auto& frame = Frames.emplace_back(std::make_unique<CObjectFrame>(Project, Host));
        frame->DoSetElement(dynamic_cast<iElement*>(&object));
        frame->LoadWindow(windowBlock);
    }

    std::vector<std::unique_ptr<CObjectFrame>> Frames;

private:
    iProject& Project;
    CViewHost& Host;
};

} // namespace

TEST_F(ObjectFrame, EachElementGetsTheViewItsClassAsksForAndATitle) {
    EXPECT_EQ(frame.GetTitle("Show"), "<Please drag an object onto this window>");
    ProbeSource* probe = add("Probe");
    imodMerger* composer = composerWithLayer();

    ASSERT_TRUE(frame.DoSetElement(probe));
    EXPECT_EQ(frame.GetView().GetViewClass(), "CObjectView");
    EXPECT_EQ(frame.GetTitle("Show"), "Show: Probe (Probe), frame 0");
    frame.SetFrame(3);
    frame.GetView().SetZoom(2.0);

    ASSERT_TRUE(frame.DoSetElement(composer));
    EXPECT_NE(dynamic_cast<CObjectMergerView*>(&frame.GetView()), nullptr);
    EXPECT_EQ(frame.GetView().GetFrame(), 3) << "a new view goes on where the former one was";
    EXPECT_DOUBLE_EQ(frame.GetView().GetZoom(), 2.0);
    EXPECT_EQ(frame.GetTitle("Show"), "Show: Comp (Composer), frame 3: Background: \"Back\"");

    ASSERT_TRUE(frame.DoSetElement(add<isrcSequence>("Shot")));
    EXPECT_EQ(frame.GetView().GetViewClass(), "CObjectSequenceView");
    ASSERT_TRUE(frame.DoSetElement(nullptr));
    EXPECT_EQ(frame.GetView().GetViewClass(), "CObjectView");
    EXPECT_EQ(frame.GetView().GetText(), "Please drag an object into the window !");
}

TEST_F(ObjectFrame, AViewThatCannotBeMadeLeavesTheFrameAsItWas) {
    ProbeSource* probe = add("Probe");
    ASSERT_TRUE(frame.DoSetElement(probe));
    CObjectFrame::RegisterViewClass("CObjectMergerView", [](CViewHost&) { return nullptr; });
    EXPECT_FALSE(frame.DoSetElement(composerWithLayer()));
    CObjectFrame::RegisterViewClass(
        "CObjectMergerView", [](CViewHost& window) { return std::make_unique<CObjectMergerView>(window); });
    ASSERT_EQ(ui.Messages.size(), 1u);
    EXPECT_EQ(ui.Messages[0], "Failed to create new view for element \"Comp\" of type \"Composer\".");
    EXPECT_EQ(frame.GetElement(), probe);
    EXPECT_EQ(frame.GetView().GetElement(), probe);
}

TEST_F(ObjectFrame, ChangesOutsideTheViewsFrameDoNotRedraw) {
    TestNode* node = add<TestNode>("Node");
    frame.DoSetElement(node);
    frame.SetFrame(5);
    TraceCapture trace;
    const int before = host.Invalidations;

    const EFrameRange later{10, 5};
    node->NotifyChanged(&later, false);
    node->NotifyModified(&later, false);
    EXPECT_EQ(host.Invalidations, before);
    EXPECT_TRUE(
        trace.Contains("*** NOTE[CObjectFrame::OnObjectEvent()]: \"Node\" needs to be redrawn, but the time "
                       "stamp is out of scope for this view.\n"));
    EXPECT_TRUE(
        trace.Contains("*** NOTE[CObjectFrame::OnObjectEvent()]: \"Node\" has been modified, but the time "
                       "stamp is out of scope for this view.\n"));

    const EFrameRange around{3, 5};
    node->NotifyChanged(&around, false);
    EXPECT_EQ(host.Invalidations, before + 1);
    node->NotifyChanged(nullptr, false);
    node->Notify(iElement::event_redraw, {.Range = &later});
    EXPECT_EQ(host.Invalidations, before + 3) << "no range means every frame; event 12 has no test";
}

TEST_F(ObjectFrame, AnElementThatGoesClosesTheFrameAndLeavesNoElement) {
    TestNode* node = add<TestNode>("Node");
    frame.DoSetElement(node);
    TraceCapture trace;
    project.DeleteElement(node);
    EXPECT_EQ(host.Closes, 1);
    EXPECT_TRUE(
        trace.Contains("*** NOTE[CObjectFrame::OnObjectEvent()]: Commanded to destroy window because of "
                       "iElement::event_close_windows.\n"));
    EXPECT_EQ(frame.GetElement(), nullptr);
    EXPECT_EQ(frame.GetView().GetElement(), nullptr);
    EXPECT_EQ(frame.GetView().GetText(), "<no element>");
    EXPECT_EQ(frame.GetTitle("Show"), "<Please drag an object onto this window>");
}

TEST_F(ObjectFrame, ADropShowsTheFirstElementItNames) {
    add("First");
    add("Second");
    EXPECT_TRUE(frame.DropData(ioleConnector::Format, foreignObjects({"Second", "First"})));
    EXPECT_EQ(frame.GetElement()->GetName(), "Second");
    EXPECT_FALSE(frame.DropData(ioleConnector::Format, foreignObjects({"Gone"})));
    EXPECT_FALSE(frame.DropData("text/plain", "First"));
    EXPECT_EQ(frame.GetElement()->GetName(), "Second");
}

TEST_F(ObjectFrame, ASavedElementCarriesTheBlockOfItsWindow) {
    ProbeSource* probe = add("Probe");
    frame.DoSetElement(probe);
    frame.SetWindowRect({10, 20, 330, 260});
    frame.GetView().SetCenter({40, 45});
    qvrCTreeData block("Probe");
    hReportRoot report("Save");
    iElementData::SaveData(*probe, block, report);
    const qvrCTreeData* window = block.Find("Windows") ? block.Find("Windows")->Find("Window.#01") : nullptr;
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(*window->GetText("Window"), "10,20,330,260");
    EXPECT_EQ(*window->GetText("Center"), "40,45");

    // Loading the element's block opens each of its views again, as it was.
    ReopeningFrontEnd frontEnd(project, host);
    CObjectFrame second(project, host);
    second.DoSetElement(probe);
    qvrCTreeData twoViews("Probe");
    iElementData::SaveData(*probe, twoViews, report);
    iElementData::LoadData(*probe, twoViews, report);
    ASSERT_EQ(frontEnd.Frames.size(), 2u);
    EXPECT_EQ(frontEnd.Frames[0]->GetElement(), probe);
    EXPECT_EQ(frontEnd.Frames[0]->GetWindowRect(), (CRect{10, 20, 330, 260}));
    EXPECT_EQ(frontEnd.Frames[0]->GetView().GetCenter(), (CPoint{40, 45}));
    EXPECT_EQ(frontEnd.Frames[1]->GetWindowRect(), CRect{});
}

TEST_F(ObjectFrame, TheFootageViewNamesTheFileOfItsFrame) {
    auto* shot = add<isrcSequence>("Shot");
    shot->SetFile(EFileGroupSetup("/footage", EFileGroup("shot_", ".qts", 4, 10, 19)), false);
    frame.DoSetElement(shot);
    auto& view = dynamic_cast<CObjectSequenceView&>(frame.GetView());
    frame.SetFrame(2);
    EXPECT_EQ(view.GetFileLine(), "Displaying: shot_0012.qts");
    frame.SetFrame(100000);
    EXPECT_EQ(view.GetFileLine(), "Displaying: <no image>");
}
