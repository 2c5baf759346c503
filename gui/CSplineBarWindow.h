#pragma once
// The spline bar's window, docked in the main window: the selector of the
// collection shown, the tree of its objects and their values with check
// boxes, the divider, and the curve view of the checked values. The tree's
// menu, keys (SPACE, F5, DEL), collections and drops follow the core's
// rules (CSplineBarTree); its state is kept in the "SplineBar" block of the
// project and of the user's settings.

#include "views/CSplineBar.h"

#include <QWidget>

#include <map>

class CCurveWindow;
class QComboBox;
class QSplitter;
class QTreeWidget;
class QTreeWidgetItem;

class CSplineBarWindow : public QWidget, public CSplineBarTree::FrontEnd {
    Q_OBJECT
public:
    explicit CSplineBarWindow(QWidget* parent = nullptr);
    ~CSplineBarWindow() override;

    CSplineBar& GetBar() { return Bar; }
    CCurveWindow& GetCurves() const { return *Curves; }
    QTreeWidget& GetTreeWidget() const { return *TreeWidget; }
    QComboBox& GetSelector() const { return *Selector; }
    // The tree's item of an entry; null when it isn't shown.
    QTreeWidgetItem* FindItem(const CSplineBarTreeEntry* entry) const;
    // Checks or unchecks a value's entry as a click on its box does.
    void SetChecked(const CSplineBarTreeEntry* entry, bool checked);

    void Beep() override;
    void EntriesChanged() override;
    void CollectionsChanged() override;
    std::optional<std::string> AskName(const CSplineBarNameRequest& request) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void fillTree();
    void fillSelector();
    void showTreeMenu(QPoint at);
    CSplineBarTreeEntry* entryOf(const QTreeWidgetItem* item) const;
    void onItemChanged(QTreeWidgetItem* item);
    void placeDivider();
    // A drag of project objects over the tree or their drop on it.
    bool onDragEvent(QEvent* event);

    CSplineBar Bar;
    QComboBox* Selector;
    QSplitter* Divider;
    QTreeWidget* TreeWidget;
    CCurveWindow* Curves;
    std::map<const QTreeWidgetItem*, CSplineBarTreeEntry*> Items;
    bool Filling = false;
};
