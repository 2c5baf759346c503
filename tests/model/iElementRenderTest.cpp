#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "model/TestElements.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

bool HasPicture(EImage& image) {
    EImageLock lock(image);
    return lock.Lock(-1) && lock.GetData() != nullptr;
}

// A preview request for the whole picture of the element at display size 4 by 3.
void FillRequest(iRenderRequest& request, iElement& element) {
    iImageSizeResult size;
    ASSERT_TRUE(element.QueryImageSize(size, request.Frame));
    request.ImageSize = size.Size;
    request.Rect = {0, 0, size.Size.Width, size.Size.Height};
    request.DisplaySize = {4, 3};
}

} // namespace

TEST(iElementRender, SuccessfulRenderDeliversPictureAndRectangle) {
    TestNode node("Node");
    EImage image(0);
    iRenderResult result;
    iRenderRequest request;
    FillRequest(request, node);
    EXPECT_TRUE(node.Render(image, result, request));
    EXPECT_EQ(result.Code, render_ok);
    EXPECT_EQ(result.Rect, (CRect{0, 0, 8, 6}));
    EImageLock lock(image);
    ASSERT_TRUE(lock.Lock(-1));
    ASSERT_NE(lock.GetData(), nullptr);
    EXPECT_EQ(lock.GetData()->GetSize(), (CSize{4, 3}));
}

TEST(iElementRender, UnconfiguredElementFailsBeforeRendering) {
    TestNode node("Node");
    node.Configured = false;
    EImage image(0);
    iRenderResult result;
    iRenderRequest request;
    EXPECT_FALSE(node.Render(image, result, request));
    EXPECT_EQ(result.Code, render_not_configured);
    EXPECT_EQ(result.Message, "The object \"Node\" (Node) has not properly been configured.");
    EXPECT_EQ(result.Element.Get(), &node);
    EXPECT_EQ(node.RenderCount, 0);

    iImageSizeResult size;
    EXPECT_FALSE(node.QueryImageSize(size, 0));
    EXPECT_EQ(size.Code, render_not_configured);
}

TEST(iElementRender, AbortBeforeOrDuringRenderEmptiesThePicture) {
    TestNode node("Node");
    EImage image(0);
    AbortableRequest request;
    FillRequest(request, node);
    request.Aborted = true;
    iRenderResult early;
    EXPECT_FALSE(node.Render(image, early, request));
    EXPECT_EQ(early.Code, render_aborted);
    EXPECT_EQ(node.RenderCount, 0);

    request.Aborted = false;
    node.DuringRender = [&request] { request.Aborted = true; };
    iRenderResult late;
    late.Rect = {1, 1, 2, 2};
    EXPECT_FALSE(node.Render(image, late, request));
    EXPECT_EQ(late.Code, render_aborted);
    EXPECT_EQ(late.Message, "Rendering has been aborted");
    EXPECT_TRUE(late.Rect.IsRectEmpty());
    EXPECT_EQ(node.RenderCount, 1);
    EXPECT_FALSE(HasPicture(image));
}

TEST(iElementRender, CopiedRequestAsksTheOriginalAboutAborts) {
    AbortableRequest original;
    iRenderRequest copy = original;
    iRenderRequest copyOfCopy = copy;
    EXPECT_FALSE(copyOfCopy.IsAborted());
    original.Aborted = true;
    EXPECT_TRUE(copy.IsAborted());
    EXPECT_TRUE(copyOfCopy.IsAborted());
}

TEST(iElementRender, ErrorReferenceClearsWhenTheElementGoes) {
    iRenderResult result;
    {
        TestNode node("Node");
        node.Configured = false;
        EImage image(0);
        iRenderRequest request;
        node.Render(image, result, request);
        ASSERT_EQ(result.Element.Get(), &node);
    }
    EXPECT_EQ(result.Element.Get(), nullptr);
}

TEST(iElementRender, RendersRunOnSeveralThreadsAtOnce) {
    TestNode node("Node");
    std::vector<std::thread> threads;
    std::atomic<int> successes{0};
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 50; ++i) {
                EImage image(0);
                iRenderResult result;
                iRenderRequest request;
                request.DisplaySize = {2, 2};
                if (node.Render(image, result, request)) ++successes;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(successes, 200);
}

TEST(iModifierRender, ModifierWithoutParentFailsInRenderAndSizeQuery) {
    TestModifier modifier("Mod");
    EImage image(0);
    iRenderResult result;
    iRenderRequest request;
    EXPECT_FALSE(modifier.Render(image, result, request));
    EXPECT_EQ(result.Code, render_failed);
    EXPECT_EQ(result.Message, "The modifier has no source data object.");
    iImageSizeResult size;
    EXPECT_FALSE(modifier.QueryImageSize(size, 0));
    EXPECT_EQ(size.Message, "The modifier has no source data object.");
}

TEST(iModifierRender, DisabledModifierIsAStraightWireToItsParent) {
    TestNode source("Source");
    TestModifier modifier("Mod");
    ASSERT_EQ(modifier.LinkParent(&source), link_done);
    iActiveValue* enabled = modifier.GetFirstValue();
    ASSERT_EQ(enabled->GetName(), "Enabled");
    enabled->SetSingleKey(0, -0.1, false);
    EXPECT_FALSE(modifier.IsEnabled(0));

    EImage image(0);
    iRenderResult result;
    iRenderRequest request;
    FillRequest(request, modifier);
    EXPECT_TRUE(modifier.Render(image, result, request));
    EXPECT_EQ(modifier.ModifierRenders, 0);
    EXPECT_EQ(source.RenderCount, 1);

    source.Configured = false;
    iRenderResult failed;
    EXPECT_FALSE(modifier.Render(image, failed, request));
    EXPECT_EQ(failed.Element.Get(), &source);

    enabled->SetSingleKey(0, 0.0, false);
    source.Configured = true;
    EXPECT_TRUE(modifier.Render(image, result, request));
    EXPECT_EQ(modifier.ModifierRenders, 1);
}
