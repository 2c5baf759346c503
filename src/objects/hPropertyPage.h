#pragma once
// What every property page of a render object checks, apart from the window:
// the object's name, whole numbers within a parameter's limits, a colour of
// three channels, and the size of the object's first parent. A check that
// fails shows its complaint in a message box and answers false, so that a
// page stops at its first complaint and leaves the object as it was (the
// front end puts the focus back and shows the old text again). The rules of
// one kind of object stay in its own page, which derives from this class.
// Main thread only.

#include "foundation/EStringTable.h"
#include "model/iParameter.h"
#include "model/iRenderRequest.h"
#include "objects/ObjectText.h"

#include <span>
#include <string>
#include <string_view>

class iElement;

class hPropertyPage {
public:
    virtual ~hPropertyPage() = default;

    // Renames the object when checkName accepts the text.
    bool CommitName(const std::string& text);

protected:
    // `emptyName` is the complaint about an empty name.
    explicit hPropertyPage(iElement& element, EStringId emptyName = ObjectText::TextNameEmpty)
        : Element(element), EmptyName(emptyName) {}

    // Not empty, and no other object of the project bears the name.
    bool checkName(const std::string& name) const;
    // The first parent's size at the frame; false when there is no parent or it can't tell.
    bool queryParentSize(long frame, EImageSize& size) const;
    // " <parent>: <width>x<height>" at the frame, or " <no valid source>".
    std::string getParentLine(long frame) const;

    // Shows the complaint; false, always.
    static bool complain(std::string_view text);
    static bool complain(EStringId text) { return complain(EStringTable::Get(text)); }
    // A whole number, blanks around it allowed.
    static bool parseWhole(std::string_view text, long& value);
    // A whole number within the limits, or the complaint.
    static bool readWhole(std::string_view text, const iParameterLimits& limits, long& value,
                          std::string_view complaint);
    // As many whole numbers as `values` holds, with commas between them
    // ("red,green,blue", "x,y"), each within the limits; or the complaint.
    static bool readWholes(std::string_view text, const iParameterLimits& limits, std::span<long> values,
                           std::string_view complaint);

    // A colour channel or alpha as a byte.
    static constexpr iParameterLimits ByteLimits{0.0, 255.0};

private:
    iElement& Element;
    const EStringId EmptyName;
};
