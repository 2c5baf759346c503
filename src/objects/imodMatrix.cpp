#include "objects/imodMatrix.h"

#include "foundation/EStringTable.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "objects/ObjectText.h"
#include "objects/imodMatrixEffect.h"
#include "objects/imodMatrixEffectLibrary.h"

iFactoryProducerOf<imodMatrix> imodMatrix::Producer(iModifier::ClassType, "Matrix Filter");

namespace {

enum : EStringId {
    textFilterUsing = 47621,
    textNoEffectAssigned = 47622,
    textUnknownEffect = 47623,
};

} // namespace

// The effect is kept by name in the block and found in the effect library by its own rule.
const iParameterEntry<imodMatrix> imodMatrix::parameterEntries[] = {
    {{"UseInViews", iParameterKind::Flag, ObjectText::LabelUseInViews}, &imodMatrix::useInViews},
    {{"UseForProxies", iParameterKind::Flag, ObjectText::LabelUseForProxies}, &imodMatrix::useForProxies},
};
const iParameterTable<imodMatrix> imodMatrix::Parameters{parameterEntries};

imodMatrix::imodMatrix(std::string name) : iModifier(std::move(name)) {}

imodMatrix::~imodMatrix() {
    if (effect) effect->RemoveUser(this);
}

std::string imodMatrix::GetStateText() const {
    if (!effect) return EStringTable::Load(textNoEffectAssigned);
    return qvrFormat(EStringTable::Load(textFilterUsing).c_str(), effect->GetName().c_str());
}

void imodMatrix::doSaveData(qvrCTreeData& block, hReport&) {
    block.SetText("Effect", effect ? effect->GetName() : std::string());
    Parameters.SaveBlock(*this, block);
}

void imodMatrix::doLoadData(const qvrCTreeData& block, hReport& report) {
    const std::string* name = block.GetText("Effect");
    imodMatrixEffect* found = nullptr;
    if (name && !name->empty()) {
        found = imodMatrixEffectLibrary::Get().Find(*name);
        if (!found)
            report.Report(qvrFormat(EStringTable::Load(textUnknownEffect).c_str(), name->c_str()),
                          hReportWarning);
    }
    SetEffect(found);
    Parameters.LoadBlock(*this, block);
}

std::unique_ptr<imodMatrix> imodMatrix::Clone() const {
    auto copy = std::make_unique<imodMatrix>(GetName());
    copy->SetEffect(effect);
    Parameters.CopyTo(*this, *copy);
    return copy;
}

void imodMatrix::SetEffect(imodMatrixEffect* newEffect) {
    if (newEffect == effect) return;
    if (effect) effect->RemoveUser(this);
    effect = newEffect;
    if (effect) effect->AddUser(this);
    NotifyChanged(nullptr, true);
}

void imodMatrix::OnEffectGone() {
    effect = nullptr;
    NotifyChanged(nullptr, true);
}

bool imodMatrix::doModifierQueryImageSize(iElement* parent, iImageSizeResult& result, long frame) {
    return parent->QueryImageSize(result, frame);
}

bool imodMatrix::wantsFilter(const iRenderRequest& request) const {
    if (!effect) {
        qvrTraceVerbose(
            "*** WARNING[imodMatrix::doModifierRender()]: Modifier \"%s\" doesn't have a matrix - "
            "doing nothing.\n",
            GetName().c_str());
        return false;
    }
    if (!request.FullSize && !useInViews) {
        qvrTraceVerbose(
            "*** WARNING[imodMatrix::doModifierRender()]: Filter will not be applied in views.\n");
        return false;
    }
    return true;
}

bool imodMatrix::doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                                  iRenderRequest& request) {
    if (!parent->Render(image, result, request)) return false;
    if (!wantsFilter(request)) return true;
    EImageLock lock(image);
    if (!lock.Lock(-1) || !lock.GetData()) {
        result.SetError(render_aborted, this, text_virtual_memory_low);
        return false;
    }
    const EImageData& picture = *lock.GetData();
    if (!useForProxies && picture.GetSize() != CSize{result.Rect.Width(), result.Rect.Height()}) {
        qvrTraceVerbose("*** WARNING[imodMatrix::doModifierRender()]: Filter will not be applied to smaller "
                        "rendered proxies.\n");
        return true;
    }
    std::unique_ptr<EImageData> filtered = effect->GetMatrix().Apply(picture);
    if (!filtered) {
        result.SetError(render_out_of_memory, this, text_out_of_memory);
        return false;
    }
    lock.SetData(std::move(filtered));
    return true;
}
