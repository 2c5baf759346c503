#pragma once
// The editing rules of a solid layer's property page, apart from the window:
// each field is checked when it loses the focus; a bad entry shows its
// complaint in a message box and keeps the layer as it was (the front end
// puts the focus back and shows the old text again). Colour and alpha are set
// as keys at the view's current frame; the size has no keys.
// Main thread only.

#include <string>

class isrcLayer;

class hLayerProperties {
public:
    hLayerProperties(isrcLayer& layer, long frame) : Layer(layer), Frame(frame) {}

    // Each returns true when the text was accepted and applied.
    bool CommitName(const std::string& text);
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
    // A whole number within the bounds, or a complaint.
    bool readWhole(const std::string& text, long low, long high, long& value, const char* complaint) const;
    static bool complain(const char* text);

    isrcLayer& Layer;
    const long Frame;
};
