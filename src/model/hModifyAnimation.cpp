#include "model/hModifyAnimation.h"

#include "foundation/EStringTable.h"
#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/qvrString.h"
#include "model/iActiveValue.h"

namespace {

enum : EStringId {
    textEnterStart = 48610,
    textEnterLength = 48611,
    textAskDropKeys = 48612,
    textClose = 48613,
    textCancel = 48614
};

bool readNumber(const std::string& text, long& number) {
    return qvrParseLong(qvrTrim(text), number);
}

void complain(EStringId textId) {
    hMessageBox::Show(EStringTable::Load(textId), hMessageBox::OK | hMessageBox::IconExclamation,
                      "qvrTessarine");
}

} // namespace

hModifyAnimation::hModifyAnimation(iActiveValue& value)
    : Value(value), OriginalStart(value.GetFirstKeyFrame()),
      OriginalLength(value.GetLastKeyFrame() - value.GetFirstKeyFrame() + 1) {
    StartText = std::to_string(OriginalStart);
    LengthText = std::to_string(OriginalLength);
}

bool hModifyAnimation::IsLengthEnabled() const {
    return Value.GetKeyCount() > 1;
}

bool hModifyAnimation::isUnchanged() const {
    long start = 0;
    long length = 0;
    return readNumber(StartText, start) && readNumber(LengthText, length) && start == OriginalStart &&
           length == OriginalLength;
}

bool hModifyAnimation::IsOkEnabled() const {
    long start = 0;
    long length = 0;
    return !isUnchanged() && readNumber(StartText, start) && start >= 0 && readNumber(LengthText, length) &&
           length >= 1;
}

std::string hModifyAnimation::GetCancelTitle() const {
    return EStringTable::Load(isUnchanged() ? textClose : textCancel);
}

hModifyAnimation::Outcome hModifyAnimation::OnOK() {
    long start = 0;
    if (!readNumber(StartText, start) || start < 0) {
        complain(textEnterStart);
        return Outcome::StayAtStart;
    }
    long length = OriginalLength;
    long keyCount = Value.GetKeyCount();
    if (keyCount > 1) {
        if (!readNumber(LengthText, length) || length < 1) {
            complain(textEnterLength);
            return Outcome::StayAtLength;
        }
        if (length < keyCount) {
            std::string text = qvrFormat(EStringTable::Load(textAskDropKeys).c_str(), keyCount - length);
            if (hMessageBox::Show(text, hMessageBox::YesNo | hMessageBox::IconQuestion, "qvrTessarine") !=
                IDYES) {
                LengthText = std::to_string(keyCount);
                return Outcome::StayAtLength;
            }
        }
    }
    if (start != OriginalStart || length != OriginalLength)
        Value.ScaleKeys(start, static_cast<double>(length) / static_cast<double>(OriginalLength), true);
    return Outcome::Close;
}
