#pragma once
// The editing rules of a scaler's property page, apart from the window: the
// target size as width and height, or as factors of the parent's size, each
// field checked when it loses the focus. With the scaler's "Lock aspect" an
// entered width also sets the height by the present aspect, and the other
// way round. A bad entry shows its complaint in a message box and leaves the
// scaler as it was. Values are set as keys at the page's frame.
// Main thread only.

#include "objects/hPropertyPage.h"

#include <string>

class iActiveValue;
class imodScale;

class hScaleProperties : public hPropertyPage {
public:
    hScaleProperties(imodScale& scale, long frame);

    // A whole number of at least 10; each returns true when the text was accepted and applied.
    bool CommitWidth(const std::string& text);
    bool CommitHeight(const std::string& text);
    // A factor of the parent's size; the scaler needs a parent that tells its size.
    bool CommitFactorX(const std::string& text);
    bool CommitFactorY(const std::string& text);

    // The texts the page shows at its frame: the target size in pixels, the
    // factors with two decimals (empty while the parent tells no size), and
    // " <parent>: <width>x<height>" or " <no valid source>".
    std::string GetWidthText() const;
    std::string GetHeightText() const;
    std::string GetFactorXText() const;
    std::string GetFactorYText() const;
    std::string GetParentText() const;

private:
    // One direction of the size: its value and the parent's extent in it, and the other direction's.
    struct Axis {
        iActiveValue& Value;
        long EImageSize::*Extent;
        iActiveValue& Other;
        long EImageSize::*OtherExtent;
    };
    Axis horizontal() const;
    Axis vertical() const;

    bool commitSide(const std::string& text, const Axis& axis);
    bool commitFactor(const std::string& text, const Axis& axis);
    std::string factorText(const Axis& axis) const;
    // The parent's size for a factor; false, with the complaint, when there is none.
    bool needParentSize(EImageSize& size) const;
    // A side made from a factor of the parent's extent: truncated, and raised to the value's least.
    static double sideOf(long parentExtent, double factor, const iActiveValue& value);
    void setKey(iActiveValue& value, double side) const;

    imodScale& Scale;
    const long Frame;
};
