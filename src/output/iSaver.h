#pragma once
// The base of the elements at the end of a chain that write frames out. As
// far as the render contract goes, a saver shows its source's picture: both
// render questions go to the primary parent, and without one they fail with
// "No parent (source) object is assigned to the saver.". Every saver keeps
// the render settings of its runs (iSaverSetup) and offers "Render" in its
// menu, which opens the setup dialog of the front end. Threads as iElement;
// the settings belong to the main thread, and a run works on a copy.

#include "model/iElement.h"
#include "model/iFactory.h"
#include "output/iSaverSetup.h"

class iSaver : public iElement {
public:
    using iElement::iElement;

    // The class of every saver in files and identifiers: "Saver".
    static iFactoryProducerType ClassType;

    // "Render", enabled only while a source is connected.
    bool HasMenuAdditions() const override { return true; }
    void AddMenuItems(hMenu& menu, unsigned firstId) override;
    bool OnMenuCommand(unsigned id) override;

    iSaverSetup& GetSetup() { return Setup; }
    const iSaverSetup& GetSetup() const { return Setup; }
    // Whether a run can start: the base asks for a source.
    virtual bool CanExecute() const { return GetFirstParent() != nullptr; }
    // The modal setup dialog of the front end; true when the user went on.
    virtual bool RunSetupDialog();
    // The modal execution dialog of the front end, which runs the render.
    virtual bool Execute();

protected:
    bool doQueryImageSize(iImageSizeResult& result, long frame) override;
    bool doRender(EImage& image, iRenderResult& result, iRenderRequest& request) override;
    // The primary parent; without one the status says so and null comes back.
    iElement* GetSource(iRenderStatus& result);

    iSaverSetup Setup;
};
