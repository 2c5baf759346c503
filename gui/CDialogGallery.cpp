#include "CDialogGallery.h"

#include "CJobAddDialog.h"
#include "CPreferencesDialog.h"
#include "CPropertyDialog.h"
#include "CRenderSetupDialog.h"
#include "batch/EBatchJobAddDialog.h"
#include "model/iElement.h"
#include "model/iProject.h"
#include "output/isvrSaver.h"

#include <QDialog>
#include <QDir>
#include <QPixmap>
#include <QRegularExpression>

namespace {

// A file name made of the dialog's kind and the object's name.
QString fileFor(const QString& folder, const QString& kind, const std::string& object) {
    QString name = QString::fromStdString(object);
    name.replace(QRegularExpression("[^A-Za-z0-9_.-]"), "_");
    return QDir(folder).filePath(kind + "-" + name + ".png");
}

bool grab(QDialog& dialog, const QString& path) {
    dialog.adjustSize();
    const bool written = dialog.grab().save(path, "PNG");
    dialog.reject();
    return written;
}

} // namespace

int CDialogGallery::GrabAll(QWidget* parent, const std::string& projectPath, const QString& folder) {
    if (!QDir().mkpath(folder)) return -1;
    iProject& project = iProject::GetStandard();
    CPreferencesDialog preferences(parent);
    if (!grab(preferences, QDir(folder).filePath("Preferences.png"))) return -1;
    int written = 1;
    for (iElement* element : project.GetElements()) {
        CPropertyDialog properties(*element, project.GetCurrentFrame(), parent);
        if (!grab(properties, fileFor(folder, "Properties", element->GetName()))) return -1;
        ++written;
        auto* saver = dynamic_cast<isvrSaver*>(element);
        if (!saver) continue;
        CRenderSetupDialog setup(*saver, projectPath, parent);
        if (!grab(setup, fileFor(folder, "RenderSetup", saver->GetName()))) return -1;
        EBatchJobAddDialog addLogic(projectPath, saver->GetName(), saver->GetElementType());
        CJobAddDialog add(addLogic, parent);
        if (!grab(add, fileFor(folder, "JobAdd", saver->GetName()))) return -1;
        written += 2;
    }
    return written;
}
