#include "CAddBar.h"

#include "CElementIcons.h"
#include "CProjectPane.h"
#include "CViewRenderer.h"
#include "model/iFactory.h"
#include "views/ioleConnector.h"

#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QStyle>

CAddBar::CAddBar(CProjectPane& pane, QWidget* parent) : QToolBar("Add objects", parent) {
    setObjectName("AddBar");
    setIconSize({CElementIcons::Size + 2, CElementIcons::Size + 2});
    for (iFactoryProducerType* type : iFactory::Get().GetTypes()) {
        for (iFactoryProducer* producer : type->GetProducers())
            addWidget(new CAddButton(type->GetName(), producer->GetName(), pane));
        addSeparator();
    }
    addWidget(new CTrashButton(pane));
}

CAddButton::CAddButton(std::string className, std::string type, CProjectPane& pane)
    : ClassName(std::move(className)), Type(std::move(type)), Pane(pane) {
    const QString title = QString::fromStdString(ClassName + ": " + Type);
    setIcon(CElementIcons::Make(QString::fromStdString(ClassName), QString::fromStdString(Type)));
    setToolTip(title);
    setStatusTip(QString("Drag onto the project to add a new %1 (a click adds it in the middle)")
                     .arg(QString::fromStdString(Type)));
    setAutoRaise(true);
}

std::string CAddButton::data() const {
    ioleConnector connector;
    connector.NewClass = ClassName;
    connector.NewType = Type;
    return connector.Serialize();
}

void CAddButton::mousePressEvent(QMouseEvent* event) {
    PressPoint = event->position().toPoint();
    QToolButton::mousePressEvent(event);
}

void CAddButton::mouseMoveEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton) ||
        (event->position().toPoint() - PressPoint).manhattanLength() < QApplication::startDragDistance())
        return;
    setDown(false);
    auto* mime = new QMimeData;
    mime->setData(ioleConnector::Format, QByteArray::fromStdString(data()));
    auto* drag = new QDrag(this);
    drag->setMimeData(mime);
    drag->setPixmap(icon().pixmap(CElementIcons::Size));
    drag->exec(Qt::CopyAction);
}

void CAddButton::mouseReleaseEvent(QMouseEvent* event) {
    QToolButton::mouseReleaseEvent(event);
    if (rect().contains(event->position().toPoint()))
        Pane.DropData(data(), Pane.FreePointNear(Pane.rect().center()), 0);
}

CTrashButton::CTrashButton(CProjectPane& pane) : Pane(pane) {
    setIcon(style()->standardIcon(QStyle::SP_TrashIcon));
    setToolTip(QString::fromStdString(CProjectView::GetTrashTip()));
    setAcceptDrops(true);
    setAutoRaise(true);
}

void CTrashButton::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasFormat(ioleConnector::Format)) event->acceptProposedAction();
}

void CTrashButton::dropEvent(QDropEvent* event) {
    CViewRenderer::Get().WaitIdle();
    const std::string dropped = event->mimeData()->data(ioleConnector::Format).toStdString();
    if (Pane.GetView().DropOnTrash(ioleConnector::Format, dropped)) event->acceptProposedAction();
}
