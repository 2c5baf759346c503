#include "TestElements.h"

#include "imaging/EImage.h"
#include "imaging/EImageData.h"

iFactoryProducerType TestNode::ClassType("Test");
iFactoryProducerOf<TestNode> TestNode::Producer(TestNode::ClassType, "Node");
iFactoryProducerOf<TestModifier> TestModifier::Producer(iModifier::ClassType, "Test Modifier");

void TestNode::OnChildLinked(iElement* child) {
    Calls.push_back("child linked " + child->GetName());
    iElement::OnChildLinked(child);
}

void TestNode::OnParentLinked(iElement* parent) {
    Calls.push_back("parent linked " + parent->GetName());
    iElement::OnParentLinked(parent);
}

bool TestNode::doQueryImageSize(iImageSizeResult& result, long) {
    result.Size = Size;
    return true;
}

bool TestNode::doRender(EImage& image, iRenderResult& result, iRenderRequest& request) {
    ++RenderCount;
    if (DuringRender) DuringRender();
    auto picture = EImageData::New(request.DisplaySize.ToSize(), EImageMemory::NoFreeing);
    picture->Fill(Colour);
    EImageLock lock(image);
    lock.Lock(-1);
    lock.SetData(std::move(picture));
    result.Rect = request.Rect;
    return true;
}

bool TestModifier::doModifierQueryImageSize(iElement* parent, iImageSizeResult& result, long frame) {
    return parent->QueryImageSize(result, frame);
}

bool TestModifier::doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                                    iRenderRequest& request) {
    ++ModifierRenders;
    return parent->Render(image, result, request);
}
