#pragma once
// The editing rules of a rotate object's property page, apart from the
// window: the name and the angle, each checked when it loses the focus. A bad
// entry shows its complaint in a message box and leaves the object as it was
// (the front end puts the focus back and shows the old text again). The angle
// is set as a key at the page's frame.
// Main thread only.

#include "objects/hPropertyPage.h"

#include <string>

class imodRotate;

class hRotateProperties : public hPropertyPage {
public:
    hRotateProperties(imodRotate& rotate, long frame);

    // A whole number of degrees; true when it was accepted and applied.
    bool CommitAngle(const std::string& text);

    // The angle that the page shows at its frame, in whole degrees.
    std::string GetAngleText() const;

private:
    imodRotate& Rotate;
    const long Frame;
};
