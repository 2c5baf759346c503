#include "../foundation/ScratchDirectory.h"
#include "../model/ScriptedUserInterface.h"

#include "objects/hMatrixEffectEditor.h"
#include "objects/imodMatrix.h"
#include "objects/imodMatrixEffect.h"
#include "objects/imodMatrixEffectLibrary.h"

#include <gtest/gtest.h>

namespace {

// Answers file dialogs with a set path (none: cancel) and records what was proposed.
class FileDialogs : public ScriptedUserInterface {
public:
    std::optional<std::string> AskFile(const EFileDialogRequest& request) override {
        Proposed = request.ProposedPath;
        Filter = request.Filter;
        return Path;
    }
    std::optional<std::string> Path;
    std::string Proposed;
    std::string Filter;
};

class EffectEditor : public ::testing::Test {
protected:
    EffectEditor() { effect = library.Add("Soft", hMatrix()); }
    ~EffectEditor() override { library.DeleteAll(); }

    static hMatrix Halving() {
        hMatrix matrix;
        matrix.SetDivisor(2048);
        return matrix;
    }

    imodMatrixEffectLibrary& library = imodMatrixEffectLibrary::Get();
    imodMatrixEffect* effect = nullptr;
    FileDialogs dialogs;
    hMatrixEffectEditor editor{library};
};

} // namespace

TEST_F(EffectEditor, EveryOperationNeedsAnEffectAndUndoGoesBackBeforeTheChanges) {
    EXPECT_FALSE(editor.Undo());
    EXPECT_FALSE(editor.Delete());
    EXPECT_FALSE(editor.SaveToFile());
    EXPECT_EQ(dialogs.Messages, std::vector<std::string>(3, "Please select an effect first !"));

    dialogs.Messages.clear();
    editor.Select("soft");
    EXPECT_FALSE(editor.Undo());
    EXPECT_TRUE(editor.ChangeKernel(Halving()));
    hMatrix quarter;
    quarter.SetDivisor(4096);
    EXPECT_TRUE(editor.ChangeKernel(quarter));
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(effect->GetMatrix(), hMatrix());
    EXPECT_EQ(dialogs.Messages, std::vector<std::string>{"Nothing to undo !"});
}

TEST_F(EffectEditor, DeletingAUsedEffectAsksFirstAndLeavesItsUsersWithout) {
    imodMatrix first("First");
    imodMatrix second("Second");
    first.SetEffect(effect);
    second.SetEffect(effect);
    editor.Select("Soft");
    dialogs.Answer = IDNO;
    EXPECT_FALSE(editor.Delete());
    EXPECT_EQ(library.Find("Soft"), effect);
    dialogs.Answer = IDYES;
    EXPECT_TRUE(editor.Delete());
    EXPECT_EQ(library.Find("Soft"), nullptr);
    EXPECT_EQ(first.GetEffect(), nullptr);
    EXPECT_EQ(editor.GetSelected(), nullptr);
    EXPECT_EQ(dialogs.Messages[0], "2 matrix filters are using\nthe effect \"Soft\".\n\nDelete it anyway ?");
}

TEST_F(EffectEditor, FilesAreSavedUnderTheEffectsNameAndLoadedBack) {
    ScratchDirectory scratch("editor");
    editor.Select("Soft");
    editor.ChangeKernel(Halving());
    dialogs.Path = scratch.File("kept.mfx");
    EXPECT_TRUE(editor.SaveToFile());
    EXPECT_EQ(dialogs.Proposed, "Soft.mfx");
    EXPECT_EQ(dialogs.Filter, "Matrix Effects (*.mfx)|*.mfx|All files (*.*)|*.*|||");
    EXPECT_EQ(hMatrixEffectEditor::GetLastFile(), scratch.File("kept.mfx"));

    editor.Select("Soft");
    effect->SetMatrix(hMatrix());
    EXPECT_TRUE(editor.LoadFromFile());
    EXPECT_EQ(dialogs.Proposed, scratch.File("kept.mfx"));
    EXPECT_EQ(effect->GetMatrix(), Halving());
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(effect->GetMatrix(), hMatrix());

    dialogs.Path = scratch.File("absent.mfx");
    EXPECT_FALSE(editor.LoadFromFile());
    EXPECT_TRUE(editor.SaveToFile());
    EXPECT_EQ(dialogs.Proposed, scratch.File("Soft.mfx"));
    EXPECT_EQ(dialogs.Messages,
              (std::vector<std::string>{"File saved.", "This is an invalid matrix file !", "File saved."}));
}
