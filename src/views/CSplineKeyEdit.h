#pragma once
// The key edit panel of the curve view, apart from its window: the frame and
// the value of one key as the user types them, the checks against the frame
// bounds and the value's limits, and the change of the key as one step of
// undo. Main thread only, like every window.

#include "foundation/EStringTable.h"

#include <string>

class iActiveValue;
class iProject;

class CSplineKeyEdit {
public:
    static constexpr long LastFrame = 10000000;
    // Texts of the curve view's steps of undo.
    static constexpr EStringId TitleEditKey = 46817;
    static constexpr EStringId TitleMoveKeys = 46818;
    static constexpr EStringId TitleAddKey = 46819;
    static constexpr EStringId TitleDeleteKeys = 46820;

    // The panel for the key at `index` of the value, its fields filled in.
    CSplineKeyEdit(iProject& project, iActiveValue& value, long index);

    // The complaint about a field, empty when it can be taken.
    std::string CheckFrame() const;
    std::string CheckValue() const;
    // The complaint about the frame, else about the value.
    std::string Check() const;
    // Checks the fields and changes the key as one step of undo; the complaint, or empty.
    std::string Apply();
    // The value's limits as a complaint, empty for a number within them.
    static std::string CheckLimits(const iActiveValue& value, double number);

    std::string FrameText;
    std::string ValueText;

private:
    iProject& Project;
    iActiveValue& Value;
    long Index;
};
