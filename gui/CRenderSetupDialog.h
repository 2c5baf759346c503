#pragma once
// The render setup of a standard saver: the rendering page (frame range
// with its hint, rate, threads, bad frames, the render log, minimising) made
// from the render settings' table, and the output page (stream, file and the
// stream's setup). "Render" checks both pages and closes to render; "Render
// later..." checks them and enters the saver as a batch job; Cancel leaves
// the saver as it was.

#include "output/hSaverProperties.h"
#include "output/hSaverRenderingPage.h"

#include <QDialog>

#include <functional>
#include <string>
#include <vector>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class isvrSaver;

class CRenderSetupDialog : public QDialog {
    Q_OBJECT
public:
    // `projectPath`: the project's file, for "Render later...".
    CRenderSetupDialog(isvrSaver& saver, std::string projectPath, QWidget* parent = nullptr);

    // The editor of the field with the label (the table's label), or of "File", "Stream".
    QWidget* FindField(const QString& label) const;
    QPushButton* GetRenderButton() const { return RenderButton; }
    QPushButton* GetLaterButton() const { return LaterButton; }

private:
    QWidget* makeRenderingPage();
    QWidget* makeOutputPage();
    void showRange();
    void showStream();
    void onRender();
    void onRenderLater();
    // Both pages may be left; their values are the saver's now.
    bool leavePages();

    isvrSaver& Saver;
    std::string ProjectPath;
    hSaverRenderingPage Rendering;
    hSaverProperties Output;
    std::vector<std::function<void()>> ShowSetup;
    QLabel* RangeHint = nullptr;
    QLabel* RangeLine = nullptr;
    QComboBox* Streams = nullptr;
    QLineEdit* File = nullptr;
    QLabel* StreamSetup = nullptr;
    QPushButton* RenderButton = nullptr;
    QPushButton* LaterButton = nullptr;
};
