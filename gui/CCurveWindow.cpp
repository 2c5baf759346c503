#include "CCurveWindow.h"

#include "CKeyEditPanel.h"
#include "CViewRenderer.h"
#include "foundation/EStringTable.h"
#include "foundation/EUserInterface.h"
#include "model/hMenu.h"
#include "model/iObjectFrontEnd.h"
#include "model/iProject.h"
#include "views/Action_iActiveValueKeys.h"
#include "views/CSplineBarTree.h"
#include "views/CSplineKeyEdit.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace {

// The first of 1, 2, 5, 10, 20, 50, ... at or above `least`.
double niceStep(double least) {
    double step = 1.0;
    while (step < least) {
        for (double factor : {2.0, 2.5, 2.0})
            if ((step *= factor) >= least) return step;
    }
    return step;
}

QColor curveColour(const iActiveValue& value) {
    return QColor::fromRgb(QRgb(value.GetColour() & 0xFFFFFF));
}

std::unique_ptr<Action_iActiveValueKeys> newAction(EStringId title) {
    return std::make_unique<Action_iActiveValueKeys>(iProject::GetStandard(), EStringTable::Load(title));
}

} // namespace

CCurveWindow::CCurveWindow(CSplineBarView& view, CSplineBarTree& tree, QWidget* parent)
    : QWidget(parent), View(view), Tree(tree) {
    setObjectName("CurveWindow");
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setMinimumSize(200, 120);
    View.SetFrontEnd(this);
    View.UpdateWorld();
}

CCurveWindow::~CCurveWindow() {
    View.SetFrontEnd(nullptr);
}

std::vector<iActiveValue*> CCurveWindow::GetShownValues() const {
    std::vector<iActiveValue*> values;
    for (iActiveValue* value = Tree.GetNextActiveValue(nullptr); value;
         value = Tree.GetNextActiveValue(value))
        values.push_back(value);
    return values;
}

QPoint CCurveWindow::ToScreen(long frame, double value) const {
    return {int(std::lround((double(frame) - double(View.Position.x)) * View.zoomX)),
            int(std::lround((-value - double(View.Position.y)) * View.zoomY))};
}

long CCurveWindow::FrameAt(int x) const {
    return std::lround(double(x) / View.zoomX + double(View.Position.x));
}

double CCurveWindow::ValueAt(int y) const {
    return -(double(y) / View.zoomY + double(View.Position.y));
}

CKeyEditPanel* CCurveWindow::GetKeyEditPanel() const {
    return KeyPanel.data();
}

void CCurveWindow::OnChecksChanged() {
    const std::vector<iActiveValue*> values = GetShownValues();
    iActiveValue* active = View.GetActiveValue();
    if (std::find(values.begin(), values.end(), active) == values.end()) {
        View.SetActiveValue(values.empty() ? nullptr : values.front());
        if (!values.empty()) View.Handle({CActiveValueEditView::cmd_fit_active});
    }
    update();
}

// ---------------------------------------------------------------- front end

void CCurveWindow::Beep() {
    QApplication::beep();
}

void CCurveWindow::Repaint() {
    update();
}

void CCurveWindow::RefreshBar() {
    if (parentWidget()) parentWidget()->update();
    update();
}

void CCurveWindow::OpenKeyEditPanel() {
    iActiveValue* value = View.GetActiveValue();
    long index = 0;
    if (!value || !value->NextSelectedKey(index)) {
        Beep();
        EUserInterface::Get().SetStatusText("No keys selected.");
        return;
    }
    delete KeyPanel.data();
    KeyPanel = new CKeyEditPanel(*value, index, this);
    connect(KeyPanel, &QDialog::finished, KeyPanel, &QObject::deleteLater);
    connect(KeyPanel, &CKeyEditPanel::Applied, this, [this] {
        update();
        emit KeysEdited();
    });
    KeyPanel->open();
}

// ---------------------------------------------------------------- painting

void CCurveWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(250, 250, 246));
    const std::vector<iActiveValue*> values = GetShownValues();
    if (values.empty()) {
        painter.setPen(Qt::darkGray);
        painter.drawText(rect(), Qt::AlignCenter,
                         QString::fromStdString(CActiveValueEditView::GetEmptyText()));
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    const QPoint zero = ToScreen(0, 0.0);
    painter.setPen(QColor(200, 200, 190));
    painter.drawLine(0, zero.y(), width(), zero.y());
    painter.drawLine(zero.x(), 0, zero.x(), height());
    for (const iActiveValue* value : values)
        paintCurve(painter, *value);
    paintValueAxis(painter);
    paintTimeAxis(painter);
    if (RubberBand) {
        painter.setPen(QPen(Qt::black, 1, Qt::DashLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(RubberBand->normalized());
    }
    if (View.IsAddMode()) {
        painter.setPen(Qt::darkRed);
        painter.drawText(rect().adjusted(AxisWidth + 6, 4, -6, 0), Qt::AlignTop | Qt::AlignRight, "Add keys");
    }
}

void CCurveWindow::paintCurve(QPainter& painter, const iActiveValue& value) const {
    const long first = std::max(FrameAt(AxisWidth) - 1, 0L);
    const long last = FrameAt(width()) + 1;
    const long step = std::max(1L, long(1.0 / View.zoomX));
    QPainterPath path;
    path.moveTo(ToScreen(first, value.GetValue(first)));
    for (long frame = first + step; frame <= last; frame += step)
        path.lineTo(ToScreen(frame, value.GetValue(frame)));
    const QColor colour = curveColour(value);
    const bool active = &value == View.GetActiveValue();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour, active ? 2.0 : 1.0));
    painter.drawPath(path);
    for (long index = 0; index < value.GetKeyCount(); ++index) {
        const iActiveKey* key = value.GetKey(index);
        const QPoint at = ToScreen(key->frame, key->value);
        painter.setPen(colour.darker(150));
        painter.setBrush(value.IsKeySelected(index) ? QBrush(Qt::black) : QBrush(Qt::white));
        painter.drawRect(at.x() - KeyRadius, at.y() - KeyRadius, 2 * KeyRadius, 2 * KeyRadius);
    }
}

void CCurveWindow::paintTimeAxis(QPainter& painter) const {
    const QRect band(0, height() - AxisHeight, width(), AxisHeight);
    painter.fillRect(band, QColor(232, 232, 226));
    painter.setPen(Qt::black);
    const long rate = View.GetLabelRate();
    const int labelWidth =
        painter.fontMetrics().horizontalAdvance(QString::fromStdString(CSplineBarView::LongestTimeLabel())) +
        12;
    double step = niceStep(double(labelWidth) / View.zoomX);
    if (rate > 0 && step > 1.0) step = std::ceil(step / double(rate)) * double(rate);
    const long frameStep = std::max(1L, long(step));
    for (long frame = std::max(0L, FrameAt(0) / frameStep * frameStep); frame <= FrameAt(width());
         frame += frameStep) {
        const int x = ToScreen(frame, 0.0).x();
        painter.drawLine(x, band.top(), x, band.top() + 4);
        const std::string label = CSplineBarView::TimeLabel(frame, rate, frameStep % std::max(rate, 1L) != 0);
        painter.drawText(x + 2, band.bottom() - 4, QString::fromStdString(label));
    }
}

void CCurveWindow::paintValueAxis(QPainter& painter) const {
    const QRect band(0, 0, AxisWidth, height() - AxisHeight);
    painter.fillRect(band, QColor(232, 232, 226));
    painter.setPen(Qt::black);
    const double step = niceStep(2.0 * painter.fontMetrics().height() / View.zoomY);
    const double top = ValueAt(0);
    const double bottom = ValueAt(band.bottom());
    for (double value = std::floor(bottom / step) * step; value <= top; value += step) {
        const int y = ToScreen(0, value).y();
        painter.drawLine(band.right() - 4, y, band.right(), y);
        painter.drawText(QRect(0, y - 8, AxisWidth - 6, 16), Qt::AlignRight | Qt::AlignVCenter,
                         QString::number(value, 'g', 6));
    }
}

void CCurveWindow::resizeEvent(QResizeEvent*) {
    View.SetClientSize({width(), height()});
}

// ---------------------------------------------------------------- mouse and keys

std::optional<CCurveWindow::KeyHit> CCurveWindow::hitKey(QPoint point) const {
    const std::vector<iActiveValue*> values = GetShownValues();
    // The active curve lies on top.
    std::vector<iActiveValue*> order(values.rbegin(), values.rend());
    if (auto active = std::find(order.begin(), order.end(), View.GetActiveValue()); active != order.end())
        std::rotate(order.begin(), active, active + 1);
    for (iActiveValue* value : order)
        for (long index = value->GetKeyCount() - 1; index >= 0; --index) {
            const iActiveKey* key = value->GetKey(index);
            const QPoint at = ToScreen(key->frame, key->value);
            if (std::abs(at.x() - point.x()) <= KeyRadius + 1 &&
                std::abs(at.y() - point.y()) <= KeyRadius + 1)
                return KeyHit{value, index};
        }
    return std::nullopt;
}

void CCurveWindow::clearSelection() {
    for (iActiveValue* value : GetShownValues())
        value->ClearKeySelection(false);
}

void CCurveWindow::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const QPoint point = event->position().toPoint();
    const bool adding = event->modifiers() & Qt::ShiftModifier;
    const std::optional<KeyHit> hit = hitKey(point);
    if (!hit) {
        if (View.IsAddMode()) return addKey(point);
        if (!adding) clearSelection();
        RubberBand = QRect(point, point);
        update();
        return;
    }
    View.SetActiveValue(hit->Value);
    if (adding) {
        hit->Value->SelectKey(hit->Index, !hit->Value->IsKeySelected(hit->Index), false);
    } else if (!hit->Value->IsKeySelected(hit->Index)) {
        clearSelection();
        hit->Value->SelectKey(hit->Index, true, false);
    }
    const iActiveKey* key = hit->Value->GetKey(hit->Index);
    EUserInterface::Get().SetStatusText(CActiveValueEditView::GetTipText(key->frame, key->value));
    beginDrag(point);
    update();
}

void CCurveWindow::mouseMoveEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    if (Drag) return dragTo(point);
    if (RubberBand) {
        RubberBand->setBottomRight(point);
        update();
        return;
    }
    EUserInterface::Get().SetStatusText(
        CActiveValueEditView::GetTipText(FrameAt(point.x()), ValueAt(point.y())));
}

void CCurveWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    if (Drag) {
        dragTo(event->position().toPoint());
        return endDrag();
    }
    if (RubberBand) {
        RubberBand->setBottomRight(event->position().toPoint());
        selectInRubberBand(event->modifiers() & Qt::ShiftModifier);
        RubberBand.reset();
        update();
    }
}

void CCurveWindow::mouseDoubleClickEvent(QMouseEvent* event) {
    if (hitKey(event->position().toPoint())) OpenKeyEditPanel();
}

void CCurveWindow::selectInRubberBand(bool add) {
    const QRect band = RubberBand->normalized();
    for (iActiveValue* value : GetShownValues())
        for (long index = 0; index < value->GetKeyCount(); ++index) {
            const iActiveKey* key = value->GetKey(index);
            if (band.contains(ToScreen(key->frame, key->value)))
                value->SelectKey(index, true, false);
            else if (!add)
                value->SelectKey(index, false, false);
        }
}

void CCurveWindow::beginDrag(QPoint point) {
    Drag = KeyDrag{point, 0, 0.0, newAction(CSplineKeyEdit::TitleMoveKeys)};
    for (iActiveValue* value : GetShownValues())
        if (value->CountSelectedKeys() > 0) Drag->Action->AddValue(*value);
}

void CCurveWindow::dragTo(QPoint point) {
    long frames = std::lround(double(point.x() - Drag->Start.x()) / View.zoomX) - Drag->Frames;
    double change = -double(point.y() - Drag->Start.y()) / View.zoomY - Drag->Value;
    const std::vector<iActiveValue*> values = GetShownValues();
    // Every selected key stays inside its neighbours and its value's limits.
    for (const iActiveValue* value : values) {
        long toLeft = 0;
        long toRight = 0;
        if (!value->GetSelectionFreedom(toLeft, toRight)) continue;
        frames = std::clamp(frames, -toLeft, toRight);
        for (long index = 0; value->NextSelectedKey(index); ++index) {
            const double now = value->GetKey(index)->value;
            if (const double* max = value->GetMaxLimit())
                change = std::min(change, std::max(*max - now, 0.0));
            if (const double* min = value->GetMinLimit())
                change = std::max(change, std::min(*min - now, 0.0));
        }
    }
    if (frames == 0 && change == 0.0) return;
    CViewRenderer::Get().WaitIdle();
    for (iActiveValue* value : values)
        if (value->CountSelectedKeys() > 0) value->MoveSelectedKeys(frames, change, true);
    Drag->Frames += frames;
    Drag->Value += change;
    if (iActiveValue* active = View.GetActiveValue()) {
        long index = 0;
        if (active->NextSelectedKey(index))
            EUserInterface::Get().SetStatusText(
                CActiveValueEditView::GetTipText(active->GetKey(index)->frame, active->GetKey(index)->value));
    }
    update();
}

void CCurveWindow::endDrag() {
    std::unique_ptr<Action_iActiveValueKeys> action = std::move(Drag->Action);
    Drag.reset();
    finishEdit(std::move(action));
}

void CCurveWindow::finishEdit(std::unique_ptr<Action_iActiveValueKeys> action) {
    if (action->Finish() && iProject::GetStandard().GetActionManager().Do(action.get())) action.release();
    update();
    emit KeysEdited();
}

void CCurveWindow::addKey(QPoint point) {
    iActiveValue* value = View.GetActiveValue();
    if (!value) return Beep();
    const long frame = std::max(FrameAt(point.x()), 0L);
    CViewRenderer::Get().WaitIdle();
    auto action = newAction(CSplineKeyEdit::TitleAddKey);
    action->AddValue(*value);
    value->SetKey(frame, value->Clamp(ValueAt(point.y()), frame), true, true, false);
    finishEdit(std::move(action));
}

void CCurveWindow::deleteKeys() {
    iActiveValue* value = View.GetActiveValue();
    CViewRenderer::Get().WaitIdle();
    auto action = newAction(CSplineKeyEdit::TitleDeleteKeys);
    if (value) action->AddValue(*value);
    View.RunCommand(CSplineBarView::command_delete_keys);
    finishEdit(std::move(action));
}

void CCurveWindow::run(long command) {
    CActiveValueEditViewCmd order;
    order.Command = command;
    View.Handle(order);
    update();
}

void CCurveWindow::wheelEvent(QWheelEvent* event) {
    const int steps = event->angleDelta().y() / 120;
    if (event->modifiers() & Qt::ControlModifier) {
        for (int step = 0; step < std::abs(steps); ++step)
            run(steps > 0 ? CActiveValueEditView::cmd_zoom_in : CActiveValueEditView::cmd_zoom_out);
        return;
    }
    if (event->modifiers() & Qt::ShiftModifier)
        View.Position.x -= long(double(steps * 40) / View.zoomX);
    else
        View.Position.y -= long(double(steps * 40) / View.zoomY);
    update();
}

bool CCurveWindow::event(QEvent* event) {
    // DEL and the view's other keys come before the main window's shortcuts.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Delete || key->key() == Qt::Key_Space ||
            key->matches(QKeySequence::SelectAll)) {
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

void CCurveWindow::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Delete:
        return deleteKeys();
    case Qt::Key_Space:
        View.RunCommand(CSplineBarView::command_add_mode);
        return;
    case Qt::Key_F:
        View.RunCommand(CSplineBarView::command_full_spline);
        return;
    case Qt::Key_Equal:
        View.RunCommand(CSplineBarView::command_normal_zoom);
        return;
    case Qt::Key_Plus:
        return run(CActiveValueEditView::cmd_zoom_in);
    case Qt::Key_Minus:
        return run(CActiveValueEditView::cmd_zoom_out);
    case Qt::Key_W:
        return run(CActiveValueEditView::cmd_fit_world);
    case Qt::Key_Right:
        return run(CActiveValueEditView::cmd_next_key);
    case Qt::Key_Left:
        return run(CActiveValueEditView::cmd_previous_key);
    case Qt::Key_Return:
        return OpenKeyEditPanel();
    default:
        break;
    }
    if (event->matches(QKeySequence::SelectAll)) {
        View.RunCommand(CSplineBarView::command_select_all);
        return update();
    }
    static const std::pair<int, unsigned> ranges[] = {{Qt::Key_5, CSplineBarView::command_range_500},
                                                      {Qt::Key_1, CSplineBarView::command_range_1000},
                                                      {Qt::Key_2, CSplineBarView::command_range_20000},
                                                      {Qt::Key_0, CSplineBarView::command_range_100k}};
    for (auto [key, command] : ranges)
        if (event->key() == key) {
            View.RunCommand(command);
            return update();
        }
    QWidget::keyPressEvent(event);
}

void CCurveWindow::contextMenuEvent(QContextMenuEvent* event) {
    hMenu menu;
    View.BuildContextMenu(menu);
    const QPoint at = event->globalPos();
    const unsigned command = iObjectFrontEnd::Get().TrackPopupMenu(menu, {at.x(), at.y()}, nullptr);
    if (command == CSplineBarView::command_delete_keys) return deleteKeys();
    if (command != 0) View.RunCommand(command);
    update();
}
