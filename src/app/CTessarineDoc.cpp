#include "app/CTessarineDoc.h"

#include "foundation/EEnvironment.h"
#include "foundation/EUserInterface.h"
#include "foundation/hReport.h"
#include "foundation/iDataBase.h"
#include "foundation/qvrTrace.h"

#include <filesystem>

CTessarineDoc::~CTessarineDoc() {
    iProject& project = iProject::GetStandard();
    if (project.GetDocument() == this) project.SetDocument(nullptr);
}

void CTessarineDoc::RestoreCurrentDirectory() {
    const std::string& directory = EEnvironment::Get().CurrentDir;
    if (directory.empty()) return;
    std::error_code ignored;
    std::filesystem::current_path(directory, ignored);
}

bool CTessarineDoc::OnNewDocument() {
    iProject& project = iProject::GetStandard();
    project.Clear();
    project.SetDocument(this);
    PathName.clear();
    Modified = false;
    return true;
}

bool CTessarineDoc::OnOpenDocument(const std::string& path, hReport* report) {
    iProject& project = iProject::GetStandard();
    project.Clear();
    project.SetDocument(this);
    iDataBase database;
    // Project files are read with flags 3 and written with flags 1, as they always were.
    bool loaded = database.Load(path, DBMaskProject, 3, report);
    if (loaded) PathName = path;
    RestoreCurrentDirectory();
    return loaded;
}

bool CTessarineDoc::OnSaveDocument(const std::string& path) {
    iDataBase database;
    bool saved = database.Save(path, DBMaskProject, DBFlagProgress, nullptr);
    if (saved) {
        PathName = path;
        Modified = false;
    }
    RestoreCurrentDirectory();
    return saved;
}

void CTessarineDoc::OnCloseDocument() {
    iProject& project = iProject::GetStandard();
    project.Clear();
    project.SetDocument(nullptr);
}

void CTessarineDoc::AutoSave(const std::string& path) {
    EUserInterface& ui = EUserInterface::Get();
    if (!Modified) {
        ui.SetStatusText("Autosaving not performed because there are no changes to the document.");
        return;
    }
    const std::string target = path.empty() ? std::string("autosave.tsp") : path;
    hReportRoot report("Autosaving");
    ui.SetStatusText(qvrFormat("Autosaving project to \"%s\"...", target.c_str()));
    // The project's own save marks it unchanged: the user's state comes back after.
    bool wasModified = Modified;
    iDataBase database;
    bool saved = database.Save(target, DBMaskProject, 0, &report);
    Modified = wasModified;
    RestoreCurrentDirectory();
    if (!saved || report.GetCount() > 1)
        report.ShowReport(qvrFormat("Errors encountered during autosaving to '%s':", target.c_str()),
                          hReportWarning);
    ui.SetStatusText("Autosave finished.");
    qvrTrace("*** NOTE[CTessarineDoc::AutoSave()]: Autosaved file \"%s\".\n", target.c_str());
}
