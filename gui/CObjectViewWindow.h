#pragma once
// One object view's window: the frame's logic (CObjectFrame) with the view
// its element asks for. The picture is drawn by CViewRenderer; the window
// shows the last picture it got, the view's overlay over it, and the view's
// line (the composer's layer, the footage's file) at the bottom. Mouse
// events go to the view; any edit first waits for a drawing that runs.

#include "model/iElement.h"
#include "views/CObjectFrame.h"
#include "views/CViewHost.h"

#include <QImage>
#include <QWidget>

class CObjectViewWindow : public QWidget, public CViewHost {
    Q_OBJECT
public:
    explicit CObjectViewWindow(iProject& project, QWidget* parent = nullptr);
    ~CObjectViewWindow() override;

    CObjectFrame& GetFrame() { return Frame; }
    // Until the user zooms, every size the window gets fits the whole picture in:
    // for a new view, which has no kept state.
    void FitWhenSized() { AutoFit = true; }
    CObjectView& GetView() const { return Frame.GetView(); }
    // The last picture drawn for the window, and whether it is the newest.
    const QImage& GetPicture() const { return Picture; }
    bool IsUpToDate() const { return DrawnChange == Changes; }
    QString GetTitle() const;
    // The view's line: the composer's layer or the footage's file; empty for others.
    QString GetLine() const;

    void Invalidate() override;
    void CloseWindow() override;

signals:
    void TitleChanged(const QString& title);
    // A new picture is shown.
    void Painted();
    void Closing(CObjectViewWindow* window);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void requestDrawing();

    CObjectFrame Frame;
    QImage Picture;
    bool DrawQueued = false;
    bool AutoFit = false;
    // Counts the changes asked to be shown, and the change the last picture shows.
    unsigned long Changes = 1;
    unsigned long DrawnChange = 0;
};
