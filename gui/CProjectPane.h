#pragma once
// The project pane: paints the scene of CProjectView (icons per class,
// links as arrows, groups, the grid) and feeds it the mouse, the keys and
// drops. A drag of the pane's own objects stays with the pane while the
// pointer is over it, and becomes a platform drag when it leaves, so that
// it can reach the trash can and the object views. The drag modes follow
// the M, L and C keys.

#include "views/CProjectView.h"
#include "views/CViewHost.h"

#include <QRect>
#include <QWidget>

#include <map>

class QTimer;

class CProjectPane : public QWidget, public CViewHost {
    Q_OBJECT
public:
    explicit CProjectPane(QWidget* parent = nullptr);
    ~CProjectPane() override;

    CProjectView& GetView() { return View; }

    void Invalidate() override { update(); }
    void SetTimer(unsigned id, long milliseconds) override;
    void KillTimer(unsigned id) override;

    // Data of the private format dropped at the point, as a drop from another window does it.
    bool DropData(const std::string& dropped, QPoint point, unsigned keys);
    void SetDragMode(CDragMode mode);
    // The point itself, or the nearest one to its right and below where no icon lies.
    QPoint FreePointNear(QPoint point) const;

signals:
    void OpenViewRequested(iElement* element);
    void DragModeChanged(CDragMode mode);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void paintGrid(QPainter& painter, const CProjectViewScene& scene) const;
    void paintLines(QPainter& painter, const CProjectViewScene& scene) const;
    void paintIcons(QPainter& painter, const CProjectViewScene& scene) const;
    void showContextMenu(QPoint point);
    // The own drag leaves the pane: the platform takes it over.
    void handOverDrag();

    CProjectView View;
    std::map<unsigned, QTimer*> Timers;
    // A press on an object that may become a drag, and the drag of this pane's objects.
    bool Pressed = false;
    bool OwnDrag = false;
    bool ClickPending = false;
    QPoint PressPoint;
    std::string DragData;
    // The rectangle of a selection frame being drawn.
    bool Framing = false;
    QRect Frame;
};
