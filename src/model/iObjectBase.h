#pragma once
// The operations that the user interface offers on an object of the model:
// its popup menu, its property dialog, new views and editing. The defaults ask
// the front end's hook (iObjectFrontEnd); classes override what they offer.
// Main thread only, like every window.

#include "foundation/qvrGeometry.h"
#include "model/iBase.h"

#include <string_view>

class CWnd;

class iObjectBase : public iBase {
public:
    using iBase::iBase;

    virtual bool CanContextMenu() const { return true; }
    // Shows the object's popup menu at the point of the window and carries out
    // the choice; true when something was done. The base has no menu.
    virtual bool OnContextMenu(CPoint point, CWnd* window);
    virtual bool CanProperties() const { return true; }
    // Opens the property dialog, or brings it to the front.
    virtual void OnProperties();
    virtual bool CanNewView() const { return true; }
    virtual void OnNewView();
    virtual bool CanEdit() const { return true; }
    // Editing is the same as the properties.
    virtual void OnEdit();
    // The name of the view class that shows the object.
    virtual std::string_view GetViewClass() const { return "CObjectView"; }
};
