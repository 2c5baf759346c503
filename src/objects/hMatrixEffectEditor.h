#pragma once
// The rules of the matrix effects dialog, apart from the window: the effect
// in work, changes of its kernel with an undo of them, deleting it, and its
// exchange with matrix effect files. Every operation needs an effect in work
// and complains without one; complaints and questions go through message
// boxes and file dialogs of the user-interface hook. The last file used is
// kept in the settings key "Dialogs\MatrixEffects". Main thread only.

#include "foundation/EStringTable.h"
#include "objects/hMatrix.h"

#include <optional>
#include <string>

class imodMatrixEffect;
class imodMatrixEffectLibrary;

class hMatrixEffectEditor {
public:
    // The label and title under which the dialog asks for an effect's name.
    static constexpr EStringId text_name_label = 47637;
    static constexpr EStringId text_name_title = 47638;

    explicit hMatrixEffectEditor(imodMatrixEffectLibrary& library) : Library(library) {}

    // Puts the effect of that name in work (none for an unknown name); the undo starts afresh.
    void Select(const std::string& name);
    imodMatrixEffect* GetSelected() const;

    // Gives the effect in work a new kernel; the first change since the
    // selection is what Undo goes back to.
    bool ChangeKernel(const hMatrix& matrix);
    // Restores the kernel as it was before the changes.
    bool Undo();
    // Deletes the effect in work, after a question when matrix filters use it.
    bool Delete();
    // Asks for a matrix effect file and takes the kernel from it.
    bool LoadFromFile();
    // Asks for a file name, "<effect>.mfx" proposed, and writes the kernel there.
    bool SaveToFile();

    // The last matrix effect file loaded or saved.
    static std::string GetLastFile();

private:
    // The effect in work, or null after the complaint.
    imodMatrixEffect* selectedOrComplain() const;
    // Remembers the kernel that Undo restores, unless a change is already remembered.
    void rememberForUndo(const hMatrix& kernel);
    static std::optional<std::string> askFile(const std::string& proposed, bool save);

    imodMatrixEffectLibrary& Library;
    std::string SelectedName;
    std::optional<hMatrix> KernelBeforeChanges;
};
