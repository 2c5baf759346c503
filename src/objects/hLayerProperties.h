#pragma once
// The editing rules of a solid layer's property page, apart from the window:
// each field is checked when it loses the focus; a bad entry shows its
// complaint in a message box and keeps the layer as it was (the front end
// puts the focus back and shows the old text again). Colour and alpha are set
// as keys at the view's current frame; the size has no keys.
// Main thread only.

#include "objects/hPropertyPage.h"

#include <string>

class isrcLayer;

class hLayerProperties : public hPropertyPage {
public:
    hLayerProperties(isrcLayer& layer, long frame);

    // Each returns true when the text was accepted and applied.
    bool CommitWidth(const std::string& text);
    bool CommitHeight(const std::string& text);
    // Three whole numbers, red, green and blue, with commas between them.
    bool CommitColor(const std::string& text);
    bool CommitAlpha(const std::string& text);

    // The texts the page shows at the frame.
    std::string GetWidthText() const;
    std::string GetHeightText() const;
    std::string GetColorText() const;
    std::string GetAlphaText() const;

private:
    // A side of the size from 10 to 35000, or the complaint.
    bool commitSide(const std::string& text, long EImageSize::*side, const char* complaint);

    isrcLayer& Layer;
    const long Frame;
};
