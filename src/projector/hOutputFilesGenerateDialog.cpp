#include "projector/hOutputFilesGenerateDialog.h"

#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/qvrCRegKey.h"
#include "output/EImageOutputStream.h"
#include "projector/LOutputFiles.h"

#include <filesystem>

namespace {

constexpr const char* KeyLastDir = "LastDir";
constexpr const char* KeyLastFile = "LastFile";

qvrCRegKey openProfile() {
    qvrCRegKey key;
    key.Open(qvrCRegKey::Root(), hOutputFilesGenerateDialog::ProfileKey);
    return key;
}

bool holds(const std::string& text, const char* placeholder) {
    return text.find(placeholder) != std::string::npos;
}

} // namespace

hOutputFilesGenerateDialog::hOutputFilesGenerateDialog(LOutputFiles& outputs) : Outputs(outputs) {
    const qvrCRegKey key = openProfile();
    Directory = key.GetText(KeyLastDir, "");
    File = key.GetText(KeyLastFile, "");
}

const EImageOutputStream* hOutputFilesGenerateDialog::stream() const {
    const EImageOutputStream* named = Outputs.GetStream();
    return named ? named : EImageOutputStream::GetFirst();
}

std::string hOutputFilesGenerateDialog::GetHint() const {
    const EImageOutputStream* format = stream();
    if (format && !format->IsSequence()) return "Please use a \"<P>\" as a placeholder for the projector.";
    return "Please use a \"<P>\" for the projector, a \"<F>\" for the frame !";
}

std::string hOutputFilesGenerateDialog::CheckPatterns(const EImageOutputStream* stream,
                                                      const std::string& directory, const std::string& file) {
    if (file.empty()) return "You cannot leave the file name empty !";
    if (!holds(file, LOutputFiles::ProjectorPlaceholder) &&
        !holds(directory, LOutputFiles::ProjectorPlaceholder))
        return "You have to put a \"<P>\" in either the\nfile name or the directory !";
    if (stream && stream->IsSequence() && !holds(file, LOutputFiles::FramePlaceholder) &&
        !holds(directory, LOutputFiles::FramePlaceholder))
        return "For this output format,\nyou have to put a \"<F>\" in either the\nfile name or the directory "
               "!";
    return {};
}

bool hOutputFilesGenerateDialog::Accept() {
    auto complain = [](const std::string& text) {
        hMessageBox::Show(text, hMessageBox::OK | hMessageBox::IconExclamation, "");
        return false;
    };
    const std::string problem = CheckPatterns(stream(), Directory, File);
    if (!problem.empty()) return complain(problem);
    if (!Outputs.Generate(Directory, File)) return complain("These settings are not appropiate !");
    qvrCRegKey key = openProfile();
    key.SetText(KeyLastDir, Directory);
    key.SetText(KeyLastFile, File);
    return true;
}

bool hOutputFilesGenerateDialog::ChooseExample() {
    EFileDialogRequest request;
    request.Title = ExampleDialogTitle;
    request.Save = false;
    const std::optional<std::string> chosen = EUserInterface::Get().AskFile(request);
    if (!chosen) return false;
    TakeExample(*chosen);
    return true;
}

void hOutputFilesGenerateDialog::TakeExample(const std::string& path) {
    const std::filesystem::path example(path);
    Directory = example.parent_path().string();
    File = example.filename().string();
    if (File.find('.') == std::string::npos) {
        File += "<P>_<F>";
        return;
    }
    insertBeforeExtension(LOutputFiles::ProjectorPlaceholder);
    const EImageOutputStream* format = stream();
    if (format && format->IsSequence()) insertBeforeExtension(LOutputFiles::FramePlaceholder);
}

void hOutputFilesGenerateDialog::insertBeforeExtension(const char* placeholder) {
    if (holds(Directory, placeholder) || holds(File, placeholder)) return;
    File.insert(File.rfind('.'), placeholder);
}
