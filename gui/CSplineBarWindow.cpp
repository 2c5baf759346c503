#include "CSplineBarWindow.h"

#include "CCurveWindow.h"
#include "foundation/EUserInterface.h"
#include "model/hMenu.h"
#include "model/iObjectFrontEnd.h"
#include "model/iProject.h"
#include "views/CSplineBarSettings.h"
#include "views/ioleConnector.h"

#include <QApplication>
#include <QComboBox>
#include <QDropEvent>
#include <QHeaderView>
#include <QInputDialog>
#include <QKeyEvent>
#include <QMimeData>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr const char* DefaultCollectionTitle = "<All>";

// What a drag over the tree carries, by the project's objects.
CSplineBarDragData dragData(const QMimeData& mime) {
    CSplineBarDragData data;
    const std::optional<ioleConnector> connector =
        ioleConnector::Parse(ioleConnector::Format, mime.data(ioleConnector::Format).toStdString());
    data.IsProjectData = connector && connector->HasObjects();
    if (!data.IsProjectData) return data;
    const iProject& project = iProject::GetStandard();
    for (const std::string& name : connector->Elements)
        if (iElement* element = project.FindElement(name)) data.Elements.push_back(element);
    for (const std::string& name : connector->Groups)
        if (iElementGroup* group = project.FindGroup(name)) data.Groups.push_back(group);
    return data;
}

Qt::CheckState toQt(int check) {
    return check == CSplineBarTreeEntry::Checked ? Qt::Checked : Qt::Unchecked;
}

} // namespace

CSplineBarWindow::CSplineBarWindow(QWidget* parent)
    : QWidget(parent), Bar(iProject::GetStandard()), Selector(new QComboBox(this)),
      Divider(new QSplitter(Qt::Horizontal, this)), TreeWidget(new QTreeWidget(Divider)),
      Curves(new CCurveWindow(Bar.GetView(), Bar.GetTree(), Divider)) {
    setObjectName("SplineBar");
    TreeWidget->setHeaderHidden(true);
    TreeWidget->setContextMenuPolicy(Qt::CustomContextMenu);
    TreeWidget->installEventFilter(this);
    TreeWidget->viewport()->installEventFilter(this);
    TreeWidget->viewport()->setAcceptDrops(true);
    Divider->addWidget(TreeWidget);
    Divider->addWidget(Curves);
    Divider->setStretchFactor(1, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(Selector);
    layout->addWidget(Divider, 1);
    connect(Selector, &QComboBox::activated, this,
            [this](int index) { Bar.GetTree().ShowCollection(Selector->itemText(index).toStdString()); });
    connect(TreeWidget, &QTreeWidget::itemChanged, this, &CSplineBarWindow::onItemChanged);
    connect(TreeWidget, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem* item) {
        if (auto* element = dynamic_cast<CSplineBarElement*>(entryOf(item))) element->Expanded = true;
    });
    connect(TreeWidget, &QTreeWidget::itemCollapsed, this, [this](QTreeWidgetItem* item) {
        if (auto* element = dynamic_cast<CSplineBarElement*>(entryOf(item))) element->Expanded = false;
    });
    connect(TreeWidget, &QTreeWidget::customContextMenuRequested, this, &CSplineBarWindow::showTreeMenu);
    connect(Divider, &QSplitter::splitterMoved, this, [this](int position) { Bar.LeftSize = position; });
    Bar.GetTree().SetFrontEnd(this);
    CSplineBarSettings::Get().Attach(&Bar);
    fillSelector();
    fillTree();
    placeDivider();
}

CSplineBarWindow::~CSplineBarWindow() {
    CSplineBarSettings::Get().Attach(nullptr);
    Bar.GetTree().SetFrontEnd(nullptr);
}

// ---------------------------------------------------------------- the tree's front end

void CSplineBarWindow::Beep() {
    QApplication::beep();
}

void CSplineBarWindow::EntriesChanged() {
    fillTree();
    placeDivider();
}

void CSplineBarWindow::CollectionsChanged() {
    fillSelector();
    fillTree();
}

std::optional<std::string> CSplineBarWindow::AskName(const CSplineBarNameRequest& request) {
    QString name = QString::fromStdString(request.Name);
    for (;;) {
        bool ok = false;
        name = QInputDialog::getText(this, QString::fromStdString(request.Title),
                                     QString::fromStdString(request.Prompt), QLineEdit::Normal, name, &ok);
        if (!ok) return std::nullopt;
        if (!request.Accept || request.Accept(name.toStdString())) return name.toStdString();
    }
}

// ---------------------------------------------------------------- filling

void CSplineBarWindow::fillSelector() {
    const QSignalBlocker quiet(Selector);
    Selector->clear();
    Selector->addItem(DefaultCollectionTitle);
    for (const auto& collection : Bar.GetTree().GetCollections())
        Selector->addItem(QString::fromStdString(collection->Name));
    const CSplineBarCollection& current = Bar.GetTree().GetCurrent();
    Selector->setCurrentIndex(current.IsDefault() ? 0
                                                  : Selector->findText(QString::fromStdString(current.Name)));
}

void CSplineBarWindow::fillTree() {
    Filling = true;
    TreeWidget->clear();
    Items.clear();
    for (const auto& element : Bar.GetTree().GetEntries()) {
        auto* item = new QTreeWidgetItem(TreeWidget, {QString::fromStdString(element->GetLabel())});
        Items[item] = element.get();
        for (const auto& value : element->GetValues()) {
            auto* child = new QTreeWidgetItem(item, {QString::fromStdString(value->GetLabel())});
            child->setFlags(child->flags() | Qt::ItemIsUserCheckable);
            child->setCheckState(0, toQt(value->GetCheck()));
            if (const iActiveValue* shown = value->GetValue())
                child->setForeground(0, QColor::fromRgb(QRgb(shown->GetColour() & 0xFFFFFF)).darker(120));
            Items[child] = value.get();
        }
        item->setExpanded(element->Expanded);
    }
    Filling = false;
    Curves->OnChecksChanged();
}

void CSplineBarWindow::placeDivider() {
    const int whole = Divider->width();
    Divider->setSizes({int(Bar.LeftSize), std::max(whole - int(Bar.LeftSize), 1)});
}

CSplineBarTreeEntry* CSplineBarWindow::entryOf(const QTreeWidgetItem* item) const {
    const auto found = Items.find(item);
    return found == Items.end() ? nullptr : found->second;
}

QTreeWidgetItem* CSplineBarWindow::FindItem(const CSplineBarTreeEntry* entry) const {
    for (const auto& [item, shown] : Items)
        if (shown == entry) return const_cast<QTreeWidgetItem*>(item);
    return nullptr;
}

void CSplineBarWindow::SetChecked(const CSplineBarTreeEntry* entry, bool checked) {
    if (QTreeWidgetItem* item = FindItem(entry))
        item->setCheckState(0, checked ? Qt::Checked : Qt::Unchecked);
}

void CSplineBarWindow::onItemChanged(QTreeWidgetItem* item) {
    CSplineBarTreeEntry* entry = entryOf(item);
    if (Filling || !entry || entry->IsElementEntry()) return;
    entry->SetCheck(item->checkState(0) == Qt::Checked);
    Curves->OnChecksChanged();
}

// ---------------------------------------------------------------- menu and keys

void CSplineBarWindow::showTreeMenu(QPoint at) {
    hMenu menu;
    Bar.GetTree().BuildContextMenu(menu);
    const QPoint global = TreeWidget->viewport()->mapToGlobal(at);
    if (const unsigned command =
            iObjectFrontEnd::Get().TrackPopupMenu(menu, {global.x(), global.y()}, nullptr))
        Bar.GetTree().RunMenuCommand(command);
}

bool CSplineBarWindow::onDragEvent(QEvent* event) {
    auto* drop = static_cast<QDropEvent*>(event);
    const CSplineBarDragData dragged = dragData(*drop->mimeData());
    CSplineBarTree& tree = Bar.GetTree();
    const bool allowed = event->type() == QEvent::Drop ? tree.OnDrop(dragged) : tree.OnDragOver(dragged);
    if (allowed)
        drop->acceptProposedAction();
    else
        drop->ignore();
    return true;
}

bool CSplineBarWindow::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (watched == TreeWidget->viewport() &&
        (type == QEvent::DragEnter || type == QEvent::DragMove || type == QEvent::Drop))
        return onDragEvent(event);
    if (watched != TreeWidget || (type != QEvent::KeyPress && type != QEvent::ShortcutOverride))
        return QWidget::eventFilter(watched, event);
    static const std::pair<int, CSplineBarTree::Key> keys[] = {{Qt::Key_Space, CSplineBarTree::Key::Space},
                                                               {Qt::Key_F5, CSplineBarTree::Key::F5},
                                                               {Qt::Key_Delete, CSplineBarTree::Key::Delete}};
    const int pressed = static_cast<QKeyEvent*>(event)->key();
    for (auto [key, treeKey] : keys) {
        if (pressed != key) continue;
        // The tree's own keys come before the main window's shortcuts.
        if (type == QEvent::ShortcutOverride) {
            event->accept();
            return true;
        }
        CSplineBarTreeEntry* selected = entryOf(TreeWidget->currentItem());
        Bar.GetTree().OnKey(treeKey, selected);
        // The tree was filled anew: the same entry stays current, if it is still there.
        if (QTreeWidgetItem* again = FindItem(selected)) TreeWidget->setCurrentItem(again);
        return true;
    }
    return false;
}
