#pragma once
// Draws object views' pictures on a thread of its own, so that a slow render
// never freezes a window. One drawing runs at a time; each window has at
// most one waiting, and a newer request replaces it. A drawing is given a
// copy of the view (CObjectView::MakeDrawingCopy), made and deleted on the
// main thread. Drawings start only from the main thread's event loop, so
// that after WaitIdle the main thread may change the project until it
// returns to the loop. Main thread only, apart from the drawing itself.

#include "model/iElement.h"
#include "views/CObjectView.h"

#include <QFuture>
#include <QImage>
#include <QObject>

#include <deque>
#include <functional>
#include <memory>
#include <optional>

class CViewRenderer : public QObject {
    Q_OBJECT
public:
    using Done = std::function<void(std::unique_ptr<CObjectView> drawn, QImage picture)>;

    static CViewRenderer& Get();

    // Queues the drawing of `copy` into a picture of `size`; `done` gets both back.
    void Request(const void* owner, std::unique_ptr<CObjectView> copy, QSize size, Done done);
    // Forgets the owner's drawings; one that runs is waited for.
    void Cancel(const void* owner);
    // Waits for the running drawing and hands it over.
    void WaitIdle();
    bool IsIdle() const { return !Running && Waiting.empty(); }

signals:
    void Idle();

private:
    struct Job {
        const void* Owner = nullptr;
        std::unique_ptr<CObjectView> Copy;
        QSize Size;
        Done OnDone;
        unsigned long Number = 0;
    };

    void queueStart();
    void startNext();
    // Hands the running drawing's result to its owner.
    void handOver();
    void finish(unsigned long number);

    std::deque<Job> Waiting;
    std::optional<Job> Running;
    QFuture<QImage> Drawing;
    unsigned long Counter = 0;
    bool StartQueued = false;
};
