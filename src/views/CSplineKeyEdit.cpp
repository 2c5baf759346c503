#include "views/CSplineKeyEdit.h"

#include "foundation/qvrString.h"
#include "model/iActiveValue.h"
#include "model/iProject.h"
#include "views/Action_iActiveValueKeys.h"

namespace {

enum : EStringId {
    textWholeNumber = 46812,
    textNumberFromTo = 46813,
    textNumberAtLeast = 46814,
    textNumberAtMost = 46815,
    textNumber = 46816
};

std::string number(double value) {
    return qvrFormatDouble(value);
}

} // namespace

CSplineKeyEdit::CSplineKeyEdit(iProject& project, iActiveValue& value, long index)
    : Project(project), Value(value), Index(index) {
    if (const iActiveKey* key = value.GetKey(index)) {
        FrameText = std::to_string(key->frame);
        ValueText = number(key->value);
    }
}

std::string CSplineKeyEdit::CheckLimits(const iActiveValue& value, double typed) {
    const double* min = value.GetMinLimit();
    const double* max = value.GetMaxLimit();
    if ((!min || typed >= *min) && (!max || typed <= *max)) return {};
    if (min && max)
        return qvrFormat(EStringTable::Load(textNumberFromTo).c_str(), number(*min).c_str(),
                         number(*max).c_str());
    if (min) return qvrFormat(EStringTable::Load(textNumberAtLeast).c_str(), number(*min).c_str());
    return qvrFormat(EStringTable::Load(textNumberAtMost).c_str(), number(*max).c_str());
}

std::string CSplineKeyEdit::CheckFrame() const {
    long frame = 0;
    if (!qvrParseLong(qvrTrim(FrameText), frame) || frame < 0 || frame > LastFrame)
        return qvrFormat(EStringTable::Load(textWholeNumber).c_str(), 0L, LastFrame);
    return {};
}

std::string CSplineKeyEdit::Check() const {
    std::string complaint = CheckFrame();
    return complaint.empty() ? CheckValue() : complaint;
}

std::string CSplineKeyEdit::CheckValue() const {
    double typed = 0.0;
    if (!qvrParseDouble(qvrTrim(ValueText), typed)) return EStringTable::Load(textNumber);
    return CheckLimits(Value, typed);
}

std::string CSplineKeyEdit::Apply() {
    if (std::string complaint = Check(); !complaint.empty()) return complaint;
    long frame = 0;
    double typed = 0.0;
    qvrParseLong(qvrTrim(FrameText), frame);
    qvrParseDouble(qvrTrim(ValueText), typed);
    auto* action = new Action_iActiveValueKeys(Project, EStringTable::Load(TitleEditKey));
    action->AddValue(Value);
    Value.ModifyKey(Index, frame, typed, true);
    if (!action->Finish() || !Project.GetActionManager().Do(action)) delete action;
    return {};
}
