#pragma once
// The add bar: one button for every kind of object the factory makes, which
// is dragged onto the project pane (a click puts the object in the middle of
// the pane), and the trash can, on which objects are dropped to delete them.

#include <QToolBar>
#include <QToolButton>

class CProjectPane;

class CAddBar : public QToolBar {
    Q_OBJECT
public:
    CAddBar(CProjectPane& pane, QWidget* parent = nullptr);
};

// A button that starts a drag of a new object of its kind.
class CAddButton : public QToolButton {
    Q_OBJECT
public:
    CAddButton(std::string className, std::string type, CProjectPane& pane);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    std::string data() const;

    std::string ClassName;
    std::string Type;
    CProjectPane& Pane;
    QPoint PressPoint;
};

class CTrashButton : public QToolButton {
    Q_OBJECT
public:
    explicit CTrashButton(CProjectPane& pane);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    CProjectPane& Pane;
};
