#include "objects/hMatrixEffectEditor.h"

#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/hReport.h"
#include "foundation/qvrCRegKey.h"
#include "foundation/qvrString.h"
#include "objects/imodMatrixEffect.h"
#include "objects/imodMatrixEffectLibrary.h"

#include <filesystem>

namespace {

enum : EStringId {
    textSelectFirst = 47630,
    textDeleteUsed = 47631,
    textNothingToUndo = 47632,
    textFileFilter = 47633,
    textInvalidFile = 47634,
    textDefaultFileName = 47635,
    textFileSaved = 47636,
};

constexpr const char* settingsKey = "Dialogs\\MatrixEffects";
constexpr const char* lastFileEntry = "LastFile";

int message(const std::string& text, unsigned type) {
    return hMessageBox::Show(text, type, "");
}

bool complain(EStringId text) {
    message(EStringTable::Load(text), hMessageBox::OK | hMessageBox::IconExclamation);
    return false;
}

void setLastFile(const std::string& path) {
    qvrCRegKey key;
    if (key.Open(qvrCRegKey::Root(), settingsKey)) key.SetText(lastFileEntry, path);
}

} // namespace

std::string hMatrixEffectEditor::GetLastFile() {
    qvrCRegKey key;
    if (!key.Open(qvrCRegKey::Root(), settingsKey, qvrCRegKey::Access::OpenExisting)) return {};
    return key.GetText(lastFileEntry, "");
}

void hMatrixEffectEditor::Select(const std::string& name) {
    SelectedName = name;
    KernelBeforeChanges.reset();
}

imodMatrixEffect* hMatrixEffectEditor::GetSelected() const {
    return SelectedName.empty() ? nullptr : Library.Find(SelectedName);
}

imodMatrixEffect* hMatrixEffectEditor::selectedOrComplain() const {
    imodMatrixEffect* effect = GetSelected();
    if (!effect) complain(textSelectFirst);
    return effect;
}

void hMatrixEffectEditor::rememberForUndo(const hMatrix& kernel) {
    if (!KernelBeforeChanges) KernelBeforeChanges = kernel;
}

bool hMatrixEffectEditor::ChangeKernel(const hMatrix& matrix) {
    imodMatrixEffect* effect = selectedOrComplain();
    if (!effect) return false;
    rememberForUndo(effect->GetMatrix());
    effect->SetMatrix(matrix);
    return true;
}

bool hMatrixEffectEditor::Undo() {
    imodMatrixEffect* effect = selectedOrComplain();
    if (!effect) return false;
    if (!KernelBeforeChanges) return complain(textNothingToUndo);
    effect->SetMatrix(*KernelBeforeChanges);
    KernelBeforeChanges.reset();
    return true;
}

bool hMatrixEffectEditor::Delete() {
    imodMatrixEffect* effect = selectedOrComplain();
    if (!effect) return false;
    const long users = static_cast<long>(effect->GetUsers().size());
    if (users > 0) {
        const std::string question =
            qvrFormat(EStringTable::Load(textDeleteUsed).c_str(), users, effect->GetName().c_str());
        if (message(question, hMessageBox::YesNo | hMessageBox::IconQuestion) != IDYES) return false;
    }
    Library.Delete(effect);
    Select({});
    return true;
}

std::optional<std::string> hMatrixEffectEditor::askFile(const std::string& proposed, bool save) {
    EFileDialogRequest request;
    request.ProposedPath = proposed;
    request.DefaultExtension = "mfx";
    request.Filter = EStringTable::Load(textFileFilter);
    request.Save = save;
    std::optional<std::string> path = EUserInterface::Get().AskFile(request);
    if (path) setLastFile(*path);
    return path;
}

bool hMatrixEffectEditor::LoadFromFile() {
    imodMatrixEffect* effect = selectedOrComplain();
    if (!effect) return false;
    const std::optional<std::string> path = askFile(GetLastFile(), false);
    if (!path) return false;
    const hMatrix before = effect->GetMatrix();
    hReportRoot report("Matrix effect");
    if (!effect->LoadFile(*path, report)) return complain(textInvalidFile);
    rememberForUndo(before);
    return true;
}

bool hMatrixEffectEditor::SaveToFile() {
    imodMatrixEffect* effect = selectedOrComplain();
    if (!effect) return false;
    const std::string fileName =
        qvrFormat(EStringTable::Load(textDefaultFileName).c_str(), effect->GetName().c_str());
    const std::filesystem::path lastFile = GetLastFile();
    const std::optional<std::string> path =
        askFile(lastFile.has_parent_path() ? (lastFile.parent_path() / fileName).string() : fileName, true);
    if (!path) return false;
    hReportRoot report("Matrix effect");
    if (!effect->SaveFile(*path, report)) {
        message(report.GetEntries().back().Text, hMessageBox::OK | hMessageBox::IconStop);
        return false;
    }
    message(EStringTable::Load(textFileSaved), hMessageBox::OK | hMessageBox::IconInformation);
    return true;
}
