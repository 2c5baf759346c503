#pragma once
// The footage view: the plain object view with a line that names the file
// shown at the view's frame. Main thread only.

#include "views/CObjectView.h"

class CObjectSequenceView : public CObjectView {
public:
    using CObjectView::CObjectView;

    std::string_view GetViewClass() const override { return "CObjectSequenceView"; }

    // "Displaying: " and the file's name, or "<no image>" where the frame shows none.
    std::string GetFileLine() const;
};
