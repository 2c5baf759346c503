#pragma once
// Pictures of the program's dialogs over the open project, one PNG file per
// dialog, named after it: the preferences, the property dialog of every object, the render
// setup of every standard saver and the job-add window of "Render later...".
// Nothing is changed: every dialog is drawn and closed with Cancel.

#include <QString>

#include <string>

class QWidget;

namespace CDialogGallery {
// Writes the pictures into `folder`; the number written, -1 when one could not be written.
// `projectPath` is the open project's file.
int GrabAll(QWidget* parent, const std::string& projectPath, const QString& folder);
} // namespace CDialogGallery
