#pragma once

#include <QFutureInterface>
#include <QFutureWatcher>
#include <QObject>
#include <QThreadPool>

#include <utility>

namespace TWL::Cloud::Detail {

/// Runs `job` on the global thread pool and hands its result to `done` on `owner`'s thread. Nothing is
/// delivered once `owner` is gone. The job must touch no object of the caller's.
template <typename Result, typename Job, typename Done> void runInPool(QObject* owner, Job job, Done done)
{
    auto* watcher = new QFutureWatcher<Result>(owner);
    QObject::connect(watcher, &QFutureWatcherBase::finished, owner, [watcher, done = std::move(done)]() {
        done(watcher->result());
        watcher->deleteLater();
    });
    QFutureInterface<Result> promise;
    promise.reportStarted();
    watcher->setFuture(promise.future());
    QThreadPool::globalInstance()->start([promise, job = std::move(job)]() mutable {
        const Result result = job();
        promise.reportResult(result);
        promise.reportFinished();
    });
}

} // namespace TWL::Cloud::Detail
