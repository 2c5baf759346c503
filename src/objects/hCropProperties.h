#pragma once
// The editing rules of a crop's property page, apart from the window. The
// page shows the window either as size and centre or, with the crop's
// relative form, as its left, right, top and bottom edges in the parent's
// picture; all texts are entered at once and checked before anything
// changes. A bad entry shows its complaint in a message box and leaves the
// crop as it was. Values are set as keys at the page's frame.
// Main thread only.

#include "objects/hPropertyPage.h"

#include <array>
#include <string>

class imodCrop;

// The texts of the page.
struct hCropEntry {
    std::string Name;
    // Width, height, centre x and y; or left, right, top and bottom in the relative form.
    std::array<std::string, 4> Fields;
    // "red,green,blue".
    std::string Color;
    std::string Alpha;
};

class hCropProperties : public hPropertyPage {
public:
    hCropProperties(imodCrop& crop, long frame);

    // " <parent>: <width>x<height>", or " <no valid source>".
    std::string GetParentText() const;
    // The labels of the four fields in the crop's present form.
    std::array<std::string, 4> GetFieldLabels() const;
    // The texts that the page shows at its frame.
    hCropEntry GetEntry() const;
    // Checks every text and applies them; false after a complaint.
    bool Apply(const hCropEntry& entry);

private:
    // Width, height, centre x and y.
    using Geometry = std::array<double, 4>;

    // The parent's size at the frame, 0 by 0 when it has none.
    EImageSize parentSize() const;
    bool readGeometry(const hCropEntry& entry, Geometry& geometry) const;
    bool readColor(const hCropEntry& entry, std::uint32_t& colour) const;

    imodCrop& Crop;
    const long Frame;
};
