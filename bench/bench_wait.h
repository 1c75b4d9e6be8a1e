#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>

#include <functional>

namespace TWB::Bench {

/// Runs the event loop until `done` holds or the time is up, waking at least every `sliceMs`.
inline bool waitFor(const std::function<bool()>& done, int timeoutMs, int sliceMs = 50)
{
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, sliceMs);
    }
    return true;
}

} // namespace TWB::Bench
