#pragma once
// The curve view of the spline bar: the curves of the checked values with
// their keys in the values' colours, the time axis along the bottom and the
// value axis on the left, zoom and scrolling through the core's commands, and
// editing with the mouse: a click selects a key (SHIFT adds or removes it), a
// rubber band selects every key inside, a drag moves the selected keys by
// whole frames and within the values' limits, a click in add mode sets a
// key, DEL deletes the selected keys and a double click opens the key edit
// panel. Every edit is one step of undo. Values are written only after the
// drawing of the object views has stopped.

#include "model/iActiveValue.h"
#include "views/CSplineBarView.h"

#include <QPointer>
#include <QWidget>

#include <memory>
#include <optional>
#include <vector>

class Action_iActiveValueKeys;
class CKeyEditPanel;
class CSplineBarTree;

class CCurveWindow : public QWidget, public CSplineBarView::FrontEnd {
    Q_OBJECT
public:
    static constexpr int AxisHeight = 22;
    static constexpr int AxisWidth = 56;
    static constexpr int KeyRadius = 4;

    CCurveWindow(CSplineBarView& view, CSplineBarTree& tree, QWidget* parent = nullptr);
    ~CCurveWindow() override;

    // The checked values of the shown collection, top to bottom.
    std::vector<iActiveValue*> GetShownValues() const;
    // Where a key of a value lies in the window.
    QPoint ToScreen(long frame, double value) const;
    long FrameAt(int x) const;
    double ValueAt(int y) const;
    CSplineBarView& GetView() const { return View; }
    CKeyEditPanel* GetKeyEditPanel() const;
    // The checks changed: the first checked value becomes the active one, fitted when there was none.
    void OnChecksChanged();

    void Beep() override;
    void Repaint() override;
    void RefreshBar() override;
    void OpenKeyEditPanel() override;

signals:
    // Keys were changed and the curves are repainted.
    void KeysEdited();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    struct KeyHit {
        iActiveValue* Value = nullptr;
        long Index = 0;
    };
    struct KeyDrag {
        QPoint Start;
        long Frames = 0;
        double Value = 0.0;
        std::unique_ptr<Action_iActiveValueKeys> Action;
    };

    std::optional<KeyHit> hitKey(QPoint point) const;
    void paintTimeAxis(class QPainter& painter) const;
    void paintValueAxis(class QPainter& painter) const;
    void paintCurve(class QPainter& painter, const iActiveValue& value) const;
    void clearSelection();
    void selectInRubberBand(bool add);
    void beginDrag(QPoint point);
    void dragTo(QPoint point);
    void endDrag();
    void addKey(QPoint point);
    void deleteKeys();
    // Runs a command of the surface or the menu and repaints.
    void run(long command);
    // Hands a finished edit to undo and tells of it.
    void finishEdit(std::unique_ptr<Action_iActiveValueKeys> action);

    CSplineBarView& View;
    CSplineBarTree& Tree;
    std::optional<KeyDrag> Drag;
    std::optional<QRect> RubberBand;
    QPointer<CKeyEditPanel> KeyPanel;
};
