#include "CViewRenderer.h"

#include "CPainterCanvas.h"

#include <QPainter>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>

namespace {

QImage draw(CObjectView* copy, QSize size) {
    QImage picture(size, QImage::Format_RGB32);
    QPainter painter(&picture);
    CPainterCanvas canvas(painter, {0, 0, size.width(), size.height()});
    copy->OnDraw(canvas);
    return picture;
}

} // namespace

CViewRenderer& CViewRenderer::Get() {
    static CViewRenderer renderer;
    return renderer;
}

void CViewRenderer::Request(const void* owner, std::unique_ptr<CObjectView> copy, QSize size, Done done) {
    auto it =
        std::find_if(Waiting.begin(), Waiting.end(), [owner](const Job& job) { return job.Owner == owner; });
    Job job{owner, std::move(copy), size.expandedTo({1, 1}), std::move(done), ++Counter};
    if (it != Waiting.end())
        *it = std::move(job);
    else
        Waiting.push_back(std::move(job));
    queueStart();
}

void CViewRenderer::queueStart() {
    if (StartQueued || Waiting.empty()) return;
    StartQueued = true;
    QTimer::singleShot(0, this, [this] {
        StartQueued = false;
        startNext();
    });
}

void CViewRenderer::startNext() {
    if (Running || Waiting.empty()) return;
    Running = std::move(Waiting.front());
    Waiting.pop_front();
    const unsigned long number = Running->Number;
    Drawing = QtConcurrent::run([this, copy = Running->Copy.get(), size = Running->Size, number] {
        QImage picture = draw(copy, size);
        QMetaObject::invokeMethod(
            this, [this, number] { finish(number); }, Qt::QueuedConnection);
        return picture;
    });
}

void CViewRenderer::handOver() {
    Drawing.waitForFinished();
    Job job = std::move(*Running);
    Running.reset();
    if (job.OnDone) job.OnDone(std::move(job.Copy), Drawing.result());
}

void CViewRenderer::finish(unsigned long number) {
    if (!Running || Running->Number != number) return;
    handOver();
    startNext();
    if (IsIdle()) emit Idle();
}

void CViewRenderer::WaitIdle() {
    if (!Running) return;
    handOver();
    queueStart();
}

void CViewRenderer::Cancel(const void* owner) {
    std::erase_if(Waiting, [owner](const Job& job) { return job.Owner == owner; });
    if (Running && Running->Owner == owner) {
        Running->OnDone = nullptr;
        WaitIdle();
    }
}
