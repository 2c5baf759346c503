#pragma once
// The front end's dialogs of a saver: the modal setup dialog that "Render"
// opens, and the modal execution dialog that runs the render (its logic is
// ESaverExecution). The desktop program installs its own; the headless one
// opens nothing and answers false. Install the hook before other threads
// start; the calls come from the main thread.

class iSaver;

class ESaverFrontEnd {
public:
    virtual ~ESaverFrontEnd() = default;

    // True when the user left the dialog to render.
    virtual bool RunSetup(iSaver& saver);
    // True when a run took place.
    virtual bool RunExecution(iSaver& saver);

    // The installed hook; the headless one until another is set.
    static ESaverFrontEnd& Get();
    // Installs a hook (null restores the headless one); the caller keeps ownership.
    static void Set(ESaverFrontEnd* hook);
};
