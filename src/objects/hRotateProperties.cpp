#include "objects/hRotateProperties.h"

#include "foundation/hMessageBox.h"
#include "foundation/qvrString.h"
#include "model/iElementContainer.h"
#include "objects/imodRotate.h"

namespace {

enum : EStringId {
    textNothingEntered = 47501,
    textNotANumber = 47502,
    textEmptyName = 47503,
    textNameTaken = 47504,
};

bool complain(EStringId text) {
    hMessageBox::Show(EStringTable::Load(text), hMessageBox::OK | hMessageBox::IconExclamation, "");
    return false;
}

} // namespace

bool hRotateProperties::CommitName(const std::string& text) {
    if (text.empty()) return complain(textEmptyName);
    iElementContainer* project = Rotate.GetProject();
    iElement* holder = project ? project->FindElement(text) : nullptr;
    if (holder && holder != &Rotate) return complain(textNameTaken);
    return Rotate.SetName(text, true);
}

bool hRotateProperties::CommitAngle(const std::string& text) {
    const std::string_view entered = qvrTrim(text);
    if (entered.empty()) return complain(textNothingEntered);
    long degrees = 0;
    if (!qvrParseLong(entered, degrees)) return complain(textNotANumber);
    Rotate.GetAngleValue().SetKeyAuto(Frame, static_cast<double>(degrees), true, false);
    return true;
}

std::string hRotateProperties::GetAngleText() const {
    return qvrFormat("%ld", static_cast<long>(Rotate.GetAngleValue().GetValue(Frame)));
}
