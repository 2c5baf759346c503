#include "CObjectViewWindow.h"

#include "CModifierMapping.h"
#include "CPainterCanvas.h"
#include "CViewRenderer.h"
#include "app/CTessarineDoc.h"
#include "foundation/EUserInterface.h"
#include "model/iElement.h"
#include "views/CObjectMergerView.h"
#include "views/CObjectSequenceView.h"
#include "views/ioleConnector.h"

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QPainter>
#include <QTimer>

namespace {

// The host of the drawing copies: they ask nothing of a window.
CViewHost& noWindow() {
    static CViewHost host;
    return host;
}

QString documentName() {
    auto* document = dynamic_cast<CTessarineDoc*>(iProject::GetStandard().GetDocument());
    const std::string path = document ? document->GetPathName() : std::string();
    return path.empty() ? QString("Untitled") : QFileInfo(QString::fromStdString(path)).fileName();
}

} // namespace

CObjectViewWindow::CObjectViewWindow(iProject& project, QWidget* parent)
    : QWidget(parent), Frame(project, *this) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setAcceptDrops(true);
    setFocusPolicy(Qt::ClickFocus);
    setMinimumSize(120, 90);
}

CObjectViewWindow::~CObjectViewWindow() {
    CViewRenderer::Get().Cancel(this);
}

QString CObjectViewWindow::GetTitle() const {
    return QString::fromStdString(Frame.GetTitle(documentName().toStdString()));
}

QString CObjectViewWindow::GetLine() const {
    if (auto* composer = dynamic_cast<const CObjectMergerView*>(&GetView()))
        return QString::fromStdString(composer->GetListLine());
    if (auto* footage = dynamic_cast<const CObjectSequenceView*>(&GetView()))
        return QString::fromStdString(footage->GetFileLine());
    return {};
}

void CObjectViewWindow::Invalidate() {
    ++Changes;
    update();
    if (DrawQueued) return;
    DrawQueued = true;
    QTimer::singleShot(0, this, &CObjectViewWindow::requestDrawing);
}

void CObjectViewWindow::requestDrawing() {
    DrawQueued = false;
    GetView().SetClientSize({width(), height()});
    CViewRenderer::Get().Request(
        this, GetView().MakeDrawingCopy(noWindow()), size(),
        [this, change = Changes](std::unique_ptr<CObjectView> drawn, QImage picture) {
            GetView().TakeDrawOutcome(*drawn);
            Picture = std::move(picture);
            DrawnChange = change;
            update();
            emit TitleChanged(GetTitle());
            emit Painted();
        });
}

void CObjectViewWindow::CloseWindow() {
    CViewRenderer::Get().Cancel(this);
    emit Closing(this);
}

void CObjectViewWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (Picture.isNull())
        painter.fillRect(rect(), QColor::fromRgb(CObjectView::Ground));
    else
        painter.drawImage(0, 0, Picture);
    CPainterCanvas canvas(painter, {0, 0, width(), height()});
    GetView().PaintOverlay(canvas);
    const QString line = GetLine();
    if (line.isEmpty()) return;
    const QRect band(0, height() - 20, width(), 20);
    painter.fillRect(band, QColor(0, 0, 0, 160));
    painter.setPen(Qt::white);
    painter.drawText(band.adjusted(6, 0, -6, 0), Qt::AlignVCenter | Qt::AlignLeft, line);
}

void CObjectViewWindow::resizeEvent(QResizeEvent*) {
    Frame.SetWindowRect({x(), y(), x() + width(), y() + height()});
    if (AutoFit) {
        GetView().SetClientSize({width(), height()});
        GetView().ZoomToFit();
    }
    Invalidate();
}

void CObjectViewWindow::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    GetView().OnLButtonDown(ToCPoint(event->position().toPoint()), ToModifierKeys(event->modifiers()));
    update();
}

void CObjectViewWindow::mouseMoveEvent(QMouseEvent* event) {
    const CPoint point = ToCPoint(event->position().toPoint());
    // A drag writes values that a running drawing reads; hovering only reads.
    if (event->buttons() & Qt::LeftButton) CViewRenderer::Get().WaitIdle();
    GetView().OnMouseMove(point, ToModifierKeys(event->modifiers()));
    EUserInterface::Get().SetStatusText(GetView().GetPointStatus(point) + GetView().GetZoomStatus() +
                                        GetView().GetSizeStatus());
}

void CObjectViewWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    CViewRenderer::Get().WaitIdle();
    GetView().OnLButtonUp(ToCPoint(event->position().toPoint()), ToModifierKeys(event->modifiers()));
    update();
}

void CObjectViewWindow::keyPressEvent(QKeyEvent* event) {
    CObjectView& view = GetView();
    AutoFit = false;
    switch (event->key()) {
    case Qt::Key_Plus:
        view.SetZoom(view.GetZoom() * 1.25);
        break;
    case Qt::Key_Minus:
        view.SetZoom(view.GetZoom() / 1.25);
        break;
    case Qt::Key_F:
        view.ZoomToFit();
        break;
    case Qt::Key_1:
        view.SetZoom(1.0);
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    EUserInterface::Get().SetStatusText(view.GetZoomStatus() + view.GetSizeStatus());
}

void CObjectViewWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasFormat(ioleConnector::Format)) event->acceptProposedAction();
}

void CObjectViewWindow::dropEvent(QDropEvent* event) {
    const QByteArray dropped = event->mimeData()->data(ioleConnector::Format);
    if (Frame.DropData(ioleConnector::Format, dropped.toStdString())) {
        event->acceptProposedAction();
        emit TitleChanged(GetTitle());
    }
}
