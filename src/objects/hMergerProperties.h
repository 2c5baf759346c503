#pragma once
// The editing rules of a composer's property page, apart from the window: the
// name, and the list of its links with one row per link, the background
// first and the top layer last. A layer's row shows its position and opacity
// at the page's frame and takes new ones, set as keys at that frame; the
// background's row shows fixed texts and takes no entries. A layer moves one
// place down or up, or becomes the background, by leaving the composer's
// chain and entering it again at its new place; the old background then
// becomes a layer with the values it had as one. A bad entry or a move that
// can't be made shows its complaint in a message box and changes nothing.
// Main thread only.

#include "objects/hPropertyPage.h"

#include <array>
#include <string>
#include <vector>

class iActiveValue;
class imodMerger;
class imodMergerLink;

// The texts of one row of the layer list, in the order of the columns.
struct hMergerRow {
    std::string Source;
    std::string X;
    std::string Y;
    std::string Opacity;
};

class hMergerProperties : public hPropertyPage {
public:
    hMergerProperties(imodMerger& merger, long frame);

    // The titles of the list's columns: "Source", "X", "Y", "Op.".
    static std::array<std::string, 4> GetColumnTitles();
    // Numbers with two decimals and a "*" after a value that is animated.
    std::vector<hMergerRow> GetRows() const;

    // Each returns true when the row's layer took the text; rows count from the background.
    // The opacity in percent, from 0 to 100.
    bool CommitOpacity(size_t row, const std::string& text);
    // "x,y", whole numbers: the offset of the layer's centre from the composer's centre.
    bool CommitPosition(size_t row, const std::string& text);

    // Each returns true when the row's link moved.
    // One place toward the background; the first layer becomes the background.
    bool MoveDown(size_t row);
    // One place toward the top.
    bool MoveUp(size_t row);
    bool MakeBackground(size_t row);

private:
    imodMergerLink* linkAt(size_t row) const;
    // The layer of the row; null for the background's row and for rows that don't exist.
    imodMergerLink* layerAt(size_t row) const;
    // Moves the row's link before the link of the lower row `place`; the background can't sink.
    bool sink(size_t row, size_t place);
    // Takes the link out of the chain and enters it before `before` (null: at the top).
    static void relink(imodMergerLink& link, imodMergerLink* before);
    // The complaint with the name of the link's source.
    static bool complainAbout(EStringId text, const imodMergerLink& link);
    std::string valueText(const iActiveValue& value) const;

    imodMerger& Merger;
    const long Frame;
};
