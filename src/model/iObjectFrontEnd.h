#pragma once
// The object model's hook to the windows of a front end: it shows popup
// menus, property dialogs and views of objects. The desktop program installs
// its own; the default one has no windows: a menu is left without a choice
// and dialogs and views are not opened. Install the hook before other threads
// start; the calls come from the main thread.

#include "foundation/qvrGeometry.h"
#include "model/hMenu.h"

// A window of the front end; the core only passes it on.
class CWnd;
class iObjectBase;
class qvrCTreeData;

class iObjectFrontEnd {
public:
    virtual ~iObjectFrontEnd() = default;

    // Shows the menu at the point of the window; the id of the chosen item, 0 for none.
    virtual unsigned TrackPopupMenu(const hMenu& menu, CPoint point, CWnd* window);
    // Opens the object's property dialog, or brings it to the front when it is open.
    virtual void ShowProperties(iObjectBase& object);
    virtual void CloseProperties(iObjectBase& object);
    // Opens a new view of the object.
    virtual void OpenView(iObjectBase& object);
    // Opens a view of the object as a project file kept it: `windowBlock` is
    // one "Window.#nn" block that a view wrote when the project was saved.
    virtual void RestoreView(iObjectBase& object, const qvrCTreeData& windowBlock);

    // The installed hook; the one without windows until another is set.
    static iObjectFrontEnd& Get();
    // Installs a hook (null restores the default); the caller keeps ownership.
    static void Set(iObjectFrontEnd* hook);
};
