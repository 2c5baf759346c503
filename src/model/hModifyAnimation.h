#pragma once
// The logic of the dialog that moves and stretches a value's animation: a
// start frame and a length, the state of its buttons and the checks made on
// OK, which ends in iActiveValue::ScaleKeys. The front end owns the window and
// mirrors the fields; questions and complaints go through message boxes.
// Main thread only.

#include <string>

class iActiveValue;

class hModifyAnimation {
public:
    enum class Outcome { Close, StayAtStart, StayAtLength };

    // Fills the fields with the value's first key frame and the span of its keys.
    explicit hModifyAnimation(iActiveValue& value);

    // A value of one key has no length to change.
    bool IsLengthEnabled() const;
    // Enabled once the fields differ from the value and hold a start of 0 or more and a length of 1 or more.
    bool IsOkEnabled() const;
    // "&Close" while nothing is changed, "&Cancel" after.
    std::string GetCancelTitle() const;
    // Checks the fields, asks before keys would be lost and applies the change;
    // tells whether the dialog closes or which field keeps the focus.
    Outcome OnOK();

    // The fields as the user typed them.
    std::string StartText;
    std::string LengthText;

private:
    bool isUnchanged() const;

    iActiveValue& Value;
    long OriginalStart;
    long OriginalLength;
};
