#include "CProjectPane.h"

#include "CElementIcons.h"
#include "CModifierMapping.h"
#include "CPainterCanvas.h"
#include "CViewRenderer.h"
#include "foundation/EStringTable.h"
#include "model/hMenu.h"
#include "model/iElement.h"
#include "model/iObjectFrontEnd.h"
#include "model/iProject.h"
#include "views/CProjectViewSettings.h"
#include "views/ioleConnector.h"

#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QTimer>

#include <cmath>

namespace {

QPoint toQPoint(CPoint point) {
    return {int(point.x), int(point.y)};
}

Qt::DropAction toDropAction(CDropEffect effect) {
    switch (effect) {
    case CDropEffect::Move:
        return Qt::MoveAction;
    case CDropEffect::Link:
        return Qt::LinkAction;
    case CDropEffect::Copy:
        return Qt::CopyAction;
    default:
        return Qt::IgnoreAction;
    }
}

void paintArrow(QPainter& painter, QPointF from, QPointF to, double size) {
    painter.drawLine(from, to);
    const QPointF direction = from - to;
    const double length = std::hypot(direction.x(), direction.y());
    if (length < 1.0) return;
    const QPointF unit = direction / length;
    const QPointF normal(-unit.y(), unit.x());
    // The arrow's point rests on the icon's edge, not on its centre.
    const QPointF tip = to + unit * (CElementIcons::Size / 2.0);
    QPainterPath head;
    head.moveTo(tip);
    head.lineTo(tip + unit * size + normal * size * 0.45);
    head.lineTo(tip + unit * size - normal * size * 0.45);
    head.closeSubpath();
    painter.fillPath(head, painter.pen().color());
}

iElement* elementAt(const CProjectView& view, QPoint point) {
    const CPoint pane = view.ClientToPane(ToCPoint(point));
    for (iElement* element : view.GetProject().GetElements())
        if (view.IsShown(*element) && element->HitTest(pane, hit_icon, nullptr)) return element;
    return nullptr;
}

} // namespace

CProjectPane::CProjectPane(QWidget* parent)
    : QWidget(parent), View(iProject::GetStandard(), CProjectViewSettings::Get(), *this) {
    setAcceptDrops(true);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(false);
    setMinimumSize(200, 150);
}

CProjectPane::~CProjectPane() {
    for (auto& [id, timer] : Timers)
        timer->stop();
}

void CProjectPane::SetTimer(unsigned id, long milliseconds) {
    QTimer*& timer = Timers[id];
    if (!timer) {
        timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, [this, id] { View.OnTimer(id); });
    }
    timer->start(int(milliseconds));
}

void CProjectPane::KillTimer(unsigned id) {
    if (auto it = Timers.find(id); it != Timers.end()) it->second->stop();
}

void CProjectPane::SetDragMode(CDragMode mode) {
    View.SetDragMode(mode);
    const std::string help = CDragModes::HelpLine(mode);
    View.SetStatusText(help.substr(0, help.find('\n')));
    emit DragModeChanged(mode);
}

// ---------------------------------------------------------------- painting

void CProjectPane::paintGrid(QPainter& painter, const CProjectViewScene& scene) const {
    const QRect pane = CPainterCanvas::ToQRect(scene.Pane);
    painter.fillRect(rect(), QColor(70, 70, 74));
    painter.fillRect(pane, QColor(236, 236, 230));
    painter.setPen(QColor(214, 214, 206));
    for (long x : scene.GridColumns)
        painter.drawLine(int(x), pane.top(), int(x), pane.bottom());
    for (long y : scene.GridRows)
        painter.drawLine(pane.left(), int(y), pane.right(), int(y));
}

void CProjectPane::paintLines(QPainter& painter, const CProjectViewScene& scene) const {
    for (const CProjectViewLine& line : scene.Lines) {
        painter.setPen(QPen(line.IsGridLink ? QColor(120, 120, 220) : QColor(40, 40, 40), 1.5,
                            line.IsGridLink ? Qt::DashLine : Qt::SolidLine));
        const double zoom = View.GetMapping().ZoomX;
        paintArrow(painter, toQPoint(line.From), toQPoint(line.To),
                   line.ArrowSize * std::min(zoom, 1.0) * 0.8);
    }
}

void CProjectPane::paintIcons(QPainter& painter, const CProjectViewScene& scene) const {
    const QFontMetrics metrics(font());
    for (const CProjectViewGroupIcon& group : scene.Groups) {
        const QPoint center = toQPoint(group.Center);
        const QRect tile(center.x() - 18, center.y() - 14, 36, 28);
        painter.setPen(
            QPen(group.Selected ? QColor(255, 200, 0) : QColor(60, 60, 60), group.Selected ? 3 : 1));
        painter.setBrush(group.Collapsed ? QColor(210, 170, 80) : QColor(240, 215, 150));
        painter.drawRoundedRect(tile, 4, 4);
        painter.setPen(Qt::black);
        painter.drawText(QRect(center.x() - 80, center.y() + 16, 160, metrics.height()), Qt::AlignHCenter,
                         QString::fromStdString(group.Label));
    }
    for (const CProjectViewIcon& icon : scene.Icons) {
        const QPoint center = toQPoint(icon.Center);
        CElementIcons::Paint(painter, QString::fromStdString(icon.Element->GetElementClass()),
                             QString::fromStdString(icon.Element->GetElementType()), center, icon.Selected);
        painter.setPen(Qt::black);
        painter.drawText(
            QRect(center.x() - 80, center.y() + CElementIcons::Size / 2 + 2, 160, metrics.height()),
            Qt::AlignHCenter, QString::fromStdString(icon.Name));
    }
}

void CProjectPane::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const CProjectViewScene scene = View.GetScene();
    paintGrid(painter, scene);
    painter.setRenderHint(QPainter::Antialiasing);
    paintLines(painter, scene);
    paintIcons(painter, scene);
    if (Framing) {
        painter.setPen(QPen(QColor(30, 90, 200), 1, Qt::DashLine));
        painter.setBrush(QColor(30, 90, 200, 40));
        painter.drawRect(Frame.normalized());
    }
}

void CProjectPane::resizeEvent(QResizeEvent*) {
    View.SetClientSize({width(), height()});
}

// ---------------------------------------------------------------- mouse

void CProjectPane::mousePressEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    if (event->button() == Qt::RightButton) {
        showContextMenu(point);
        return;
    }
    if (event->button() != Qt::LeftButton) return;
    PressPoint = point;
    // A press on a selected object keeps the selection for a drag; the click itself counts on release.
    iElement* pressed = elementAt(View, point);
    ClickPending = pressed && pressed->IsSelected();
    Pressed = ClickPending || View.SelectAt(ToCPoint(point), ToModifierKeys(event->modifiers()));
    Framing = !Pressed;
    Frame = QRect(point, point);
}

void CProjectPane::mouseMoveEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    const unsigned keys = ToModifierKeys(event->modifiers());
    if (Framing) {
        Frame.setBottomRight(point);
        update();
        return;
    }
    if (!Pressed) return;
    if (!OwnDrag) {
        if ((point - PressPoint).manhattanLength() < QApplication::startDragDistance()) return;
        DragData = View.BeginDrag(ToCPoint(PressPoint));
        if (DragData.empty()) return;
        OwnDrag = true;
        ClickPending = false;
        View.DragEnter(ioleConnector::Format, DragData, ToCPoint(PressPoint), keys);
    }
    if (rect().contains(point))
        View.DragOver(ToCPoint(point), keys);
    else
        handOverDrag();
}

void CProjectPane::handOverDrag() {
    View.DragLeave();
    auto* mime = new QMimeData;
    mime->setData(ioleConnector::Format, QByteArray::fromStdString(DragData));
    auto* drag = new QDrag(this);
    drag->setMimeData(mime);
    drag->exec(Qt::MoveAction | Qt::CopyAction | Qt::LinkAction, Qt::MoveAction);
    View.EndDrag();
    OwnDrag = Pressed = false;
}

void CProjectPane::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const unsigned keys = ToModifierKeys(event->modifiers());
    if (Framing) {
        Framing = false;
        Frame.setBottomRight(event->position().toPoint());
        const QRect shown = Frame.normalized();
        View.SelectInRect({shown.left(), shown.top(), shown.right(), shown.bottom()}, keys);
    } else if (OwnDrag) {
        CViewRenderer::Get().WaitIdle();
        View.Drop(ToCPoint(event->position().toPoint()), keys);
        View.EndDrag();
    } else if (ClickPending) {
        View.SelectAt(ToCPoint(PressPoint), keys);
    }
    OwnDrag = Pressed = ClickPending = false;
    update();
}

void CProjectPane::mouseDoubleClickEvent(QMouseEvent* event) {
    if (iElement* element = elementAt(View, event->position().toPoint())) emit OpenViewRequested(element);
}

void CProjectPane::wheelEvent(QWheelEvent* event) {
    if (event->angleDelta().y() > 0)
        View.ZoomIn();
    else if (event->angleDelta().y() < 0)
        View.ZoomOut();
}

void CProjectPane::keyPressEvent(QKeyEvent* event) {
    CDragMode mode;
    if (event->text().size() == 1 && CDragModes::ModeForKey(event->text().at(0).toLatin1(), mode) &&
        !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier)))
        SetDragMode(mode);
    else
        QWidget::keyPressEvent(event);
}

void CProjectPane::showContextMenu(QPoint point) {
    const CPoint client = ToCPoint(point);
    const CPoint screen = ToCPoint(mapToGlobal(point));
    if (iElement* element = elementAt(View, point)) {
        View.SelectAt(client, key_none);
        CViewRenderer::Get().WaitIdle();
        element->OnContextMenu(screen, nullptr);
        return;
    }
    std::string child;
    std::string parent;
    if (!View.FindLinkAt(client, child, parent)) return;
    hMenu menu;
    CProjectView::BuildLinkMenu(menu);
    if (iObjectFrontEnd::Get().TrackPopupMenu(menu, screen, nullptr) == CProjectView::command_delete_link) {
        CViewRenderer::Get().WaitIdle();
        View.DeleteLink(child, parent);
    }
}

// ---------------------------------------------------------------- drops from other windows

QPoint CProjectPane::FreePointNear(QPoint point) const {
    // Far enough apart for the names under the icons.
    const QPoint step(3 * CElementIcons::Size, 2 * CElementIcons::Size);
    for (int row = 0; row < 10; ++row)
        for (int column = 0; column < 10; ++column) {
            const QPoint candidate = point + QPoint(column * step.x(), row * step.y());
            if (!elementAt(View, candidate)) return candidate;
        }
    return point;
}

bool CProjectPane::DropData(const std::string& dropped, QPoint point, unsigned keys) {
    if (View.DragEnter(ioleConnector::Format, dropped, ToCPoint(point), keys) == CDropEffect::None) {
        View.DragLeave();
        return false;
    }
    CViewRenderer::Get().WaitIdle();
    return View.Drop(ToCPoint(point), keys);
}

void CProjectPane::dragEnterEvent(QDragEnterEvent* event) {
    if (!event->mimeData()->hasFormat(ioleConnector::Format)) return;
    const std::string entering = event->mimeData()->data(ioleConnector::Format).toStdString();
    const CDropEffect effect =
        View.DragEnter(ioleConnector::Format, entering, ToCPoint(event->position().toPoint()),
                       ToModifierKeys(event->modifiers()));
    event->setDropAction(toDropAction(effect));
    event->accept();
}

void CProjectPane::dragMoveEvent(QDragMoveEvent* event) {
    const CDropEffect effect =
        View.DragOver(ToCPoint(event->position().toPoint()), ToModifierKeys(event->modifiers()));
    event->setDropAction(toDropAction(effect));
    event->setAccepted(effect != CDropEffect::None);
}

void CProjectPane::dragLeaveEvent(QDragLeaveEvent*) {
    View.DragLeave();
}

void CProjectPane::dropEvent(QDropEvent* event) {
    CViewRenderer::Get().WaitIdle();
    if (View.Drop(ToCPoint(event->position().toPoint()), ToModifierKeys(event->modifiers())))
        event->acceptProposedAction();
}
