#include "objects/hRotateProperties.h"

#include "foundation/qvrString.h"
#include "objects/imodRotate.h"

hRotateProperties::hRotateProperties(imodRotate& rotate, long frame)
    : hPropertyPage(rotate), Rotate(rotate), Frame(frame) {}

bool hRotateProperties::CommitAngle(const std::string& text) {
    if (qvrTrim(text).empty()) return complain(ObjectText::TextNothingEntered);
    long degrees = 0;
    if (!parseWhole(text, degrees)) return complain(ObjectText::TextNotANumber);
    Rotate.GetAngleValue().SetKeyAuto(Frame, static_cast<double>(degrees), true, false);
    return true;
}

std::string hRotateProperties::GetAngleText() const {
    return qvrFormat("%ld", static_cast<long>(Rotate.GetAngleValue().GetValue(Frame)));
}
