#include "foundation/iDataBase.h"

#include "foundation/EPrefsDiskIO.h"
#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/iDataBaseSection.h"
#include "foundation/qvrCException.h"
#include "foundation/qvrCTextFile.h"
#include "foundation/qvrTrace.h"
#include "foundation/FoundationText.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <vector>

namespace {

// Collects the format problems of a load as report lines, and shows progress.
class DataBaseReport : public qvrCTreeDataReport {
public:
    DataBaseReport(std::string path, bool showProgress) : Path(std::move(path)), ShowProgress(showProgress) {}

    void OnBlockStart(qvrCTextFile&, long line) override {
        if (ShowProgress)
            EUserInterface::Get().SetStatusText(
                qvrFormatMessage(EStringTable::Get(FoundationText::LoadingObject), {Path, line, std::string()}));
    }
    void OnBadFormat(qvrCTextFile&, long line, const std::string&, int code) override {
        Lines.push_back(qvrFormat("Line %3ld: %s.", line, qvrCTreeData::BadFormatText(code)));
    }
    void OnNodeSaved(qvrCTextFile&, const qvrCTreeData& node) override {
        if (ShowProgress)
            EUserInterface::Get().SetStatusText(
                qvrFormatMessage(EStringTable::Get(FoundationText::SavingObject), {Path, node.GetName()}));
    }

    std::string Path;
    bool ShowProgress;
    std::vector<std::string> Lines;
};

void loadSection(iDataBaseSection& section, qvrCTreeData& block, uint32_t mask, hReport& parent) {
    hReport context(&parent, section.Name);
    if (!section.IsParent()) {
        section.Load(block, context);
        return;
    }
    if (section.HasCore()) {
        qvrCTreeData* core = block.Find("Core");
        if (!core) {
            context.Report(qvrFormat("Cannot find required block \"%s\" !", "Core"), hReportError);
            return;
        }
        section.Load(*core, context);
    }
    for (const auto& [key, child] : block.GetChildren()) {
        if (section.HasCore() && qvrEqualNoCase(child->GetName(), "Core")) continue;
        iDataBaseSection* childSection = section.FindChild(child->GetName());
        if (!childSection) {
            context.Report(
                qvrFormat("Unknown block \"%s\" found (will be ignored).", child->GetName().c_str()),
                hReportWarning);
        } else if (childSection->SharesMask(mask)) {
            loadSection(*childSection, *child, mask, context);
        }
    }
}

void saveSection(iDataBaseSection& section, qvrCTreeData& block, uint32_t mask, hReport& parent) {
    hReport context(&parent, section.Name);
    if (!section.IsParent()) {
        section.Save(block, context);
        return;
    }
    if (section.HasCore()) section.Save(*block.CreateChild("Core"), context);
    for (iDataBaseSection* child = section.FirstChild; child; child = child->Next)
        if (child->SharesMask(mask)) saveSection(*child, *block.CreateChild(child->Name), mask, context);
}

// Renames a file, replacing the target; a missing source is no error.
bool renameReplacing(const std::string& from, const std::string& to, std::string& error) {
    std::error_code code;
    if (!std::filesystem::exists(from, code)) return true;
    if (std::rename(from.c_str(), to.c_str()) == 0) return true;
    error = qvrErrorText::FromCode(errno);
    return false;
}

// Makes `backup` a second name of the file at `path`, which keeps its own
// name: the new file then replaces it in one rename, so that the name never
// goes missing, whenever the program is stopped. A file system without links
// gets a copy. A missing file is no error.
bool keepAsBackup(const std::string& path, const std::string& backup, std::string& error) {
    std::error_code code;
    if (!std::filesystem::exists(path, code)) return true;
    std::filesystem::remove(backup, code);
    std::filesystem::create_hard_link(path, backup, code);
    if (code) std::filesystem::copy_file(path, backup, std::filesystem::copy_options::overwrite_existing, code);
    if (!code) return true;
    error = qvrErrorText::FromCode(code.value());
    return false;
}

void showLines(const std::vector<hReportEntry>& entries, EStringId headingId, const std::string& path) {
    if (entries.empty()) return;
    EUserInterface::Get().ShowReport(qvrFormatMessage(EStringTable::Get(headingId), {path}), hReportWarning,
                                     entries);
}

} // namespace

iDataBase::iDataBase() : qvrCTreeData(RootName, CurrentVersion) {}

bool iDataBase::readFile(const std::string& path, bool showProgress, bool askUser, hReport& context) {
    DataBaseReport collector(path, showProgress);
    try {
        qvrCDiskTextFile file(path, qvrCDiskTextFile::Mode::Read);
        long lines = 0;
        qvrCTreeData::Load(file, lines, false, &collector);
    } catch (const std::exception& error) {
        context.Report(
            qvrFormat("Cannot read \"%s\": %s.", path.c_str(), qvrErrorText::FromException(error).c_str()),
            hReportFailure);
        return false;
    }
    if (IsEmpty()) {
        context.Report(FoundationText::FileHasNoData, hReportFailure);
        return false;
    }
    if (!acceptVersion(path, askUser)) return false;
    if (!OldFile)
        for (const std::string& line : collector.Lines)
            context.Report(line, hReportWarning);
    return true;
}

bool iDataBase::acceptVersion(const std::string& path, bool askUser) {
    OldFile = qvrEqualNoCase(Value, OldVersion);
    if (OldFile || qvrEqualNoCase(Value, CurrentVersion)) return true;
    if (!askUser) return false;
    std::string text = qvrFormatMessage(EStringTable::Get(FoundationText::UnknownVersion), {path});
    return hMessageBox::Show(text, hMessageBox::YesNo | hMessageBox::IconExclamation, "qvrTessarine") ==
           IDYES;
}

void iDataBase::giveBlocksToSections(uint32_t mask, hReport& context) {
    for (const auto& [key, block] : GetChildren()) {
        iDataBaseSection* section = iDataBaseSection::FindTopLevel(block->GetName());
        if (!section) {
            context.Report(qvrFormat("Unknown top-level block \"%s\" found (will be ignored).",
                                     block->GetName().c_str()),
                           hReportWarning);
        } else if (section->SharesMask(mask)) {
            loadSection(*section, *block, mask, context);
        }
    }
}

bool iDataBase::Load(const std::string& path, uint32_t mask, uint32_t flags, hReport* report) {
    iDataBaseSection::LinkWaitingSections();
    RemoveAllChildren();
    OldFile = false;
    hReportRoot localRoot("Database");
    hReport context(report ? report : &localRoot, "Database");
    bool interactive = report == nullptr;
    bool showProgress = interactive && (flags & DBFlagProgress);
    if (showProgress) EUserInterface::Get().SetStatusText(EStringTable::Load(FoundationText::LoadingDatabase));
    bool ok = readFile(path, showProgress, interactive, context);
    if (ok && !(flags & DBFlagCheckOnly)) giveBlocksToSections(mask, context);
    if (interactive) showLines(localRoot.GetEntries(), FoundationText::LoadEvents, path);
    return ok;
}

void iDataBase::buildTree(uint32_t mask, hReport& context) {
    RemoveAllChildren();
    Value = CurrentVersion;
    for (iDataBaseSection* section = iDataBaseSection::GetFirstTopLevel(); section; section = section->Next)
        if (section->SharesMask(mask)) saveSection(*section, *CreateChild(section->Name), mask, context);
}

void iDataBase::RotateBackups(const std::string& path, long backupCount) {
    std::string ignored;
    for (long i = backupCount - 1; i >= 1; --i)
        renameReplacing(qvrFormat("%s.%03ld.bak", path.c_str(), i),
                        qvrFormat("%s.%03ld.bak", path.c_str(), i + 1), ignored);
    if (backupCount > 0) renameReplacing(path + ".bak", qvrFormat("%s.%03ld.bak", path.c_str(), 1L), ignored);
}

bool iDataBase::writeAndReplace(const std::string& path, bool withReport, hReport& context) {
    const std::string temporary = path + ".tmp";
    try {
        qvrCDiskTextFile file(temporary, qvrCDiskTextFile::Mode::Write);
        DataBaseReport progress(path, false);
        file.WriteText(Header);
        qvrCTreeData::Save(file, "   ", &progress);
        file.WriteText(Trailer);
        file.Close();
    } catch (const std::exception& error) {
        // The previous file is untouched; what was written stays in the temporary file.
        context.Report(qvrFormat("Cannot write \"%s\": %s.", temporary.c_str(),
                                 qvrErrorText::FromException(error).c_str()),
                       hReportFailure);
        return false;
    }
    RotateBackups(path, EPrefsDiskIO::GetBackupCnt());
    const std::string backup = path + ".bak";
    std::string error;
    if (!keepAsBackup(path, backup, error)) {
        std::string text =
            qvrFormat("Cannot rename old file \"%s\" into\nbackup file \"%s\":\n%s.\n\nThe newly saved "
                      "file is now called \"%s\"\n- please rename it by hand !",
                      path.c_str(), backup.c_str(), error.c_str(), temporary.c_str());
        if (!withReport) {
            hMessageBox::Show(text, hMessageBox::OK | hMessageBox::IconStop, "qvrTessarine");
            return true;
        }
        context.Report(text, hReportFailure);
        std::remove(temporary.c_str());
        return false;
    }
    if (!renameReplacing(temporary, path, error)) {
        std::string text =
            qvrFormat("Cannot rename temporary file \"%s\"\ninto target file name \"%s\":\n%s.\n\n"
                      "Please rename it by hand !",
                      temporary.c_str(), path.c_str(), error.c_str());
        if (!withReport) {
            // The message asks the user to rename the temporary file, so it stays.
            hMessageBox::Show(text, hMessageBox::OK | hMessageBox::IconStop, "qvrTessarine");
            return false;
        }
        context.Report(text, hReportFailure);
        std::remove(temporary.c_str());
        return false;
    }
    return true;
}

bool iDataBase::Save(const std::string& path, uint32_t mask, uint32_t flags, hReport* report) {
    iDataBaseSection::LinkWaitingSections();
    hReportRoot localRoot("Database");
    hReport context(report ? report : &localRoot, "Database");
    if (!report && (flags & DBFlagProgress)) EUserInterface::Get().SetStatusText(EStringTable::Load(FoundationText::SavingDatabase));
    buildTree(mask & 7, context);
    if (IsEmpty()) {
        if (report)
            context.Report("Nothing to save.", hReportWarning);
        else
            hMessageBox::Show("Nothing to save.", hMessageBox::OK | hMessageBox::IconInformation,
                              "qvrTessarine");
        return false;
    }
    bool ok = writeAndReplace(path, report != nullptr, context);
    if (!report) showLines(localRoot.GetEntries(), FoundationText::SaveEvents, path);
    return ok;
}
