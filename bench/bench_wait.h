#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <functional>

namespace TWB::Bench {

/// Runs the event loop until `done` holds or the time is up. It sleeps while nothing happens, so
/// that a benchmark's CPU figures are its own; a timer wakes it at least every `sliceMs`.
inline bool waitFor(const std::function<bool()>& done, int timeoutMs, int sliceMs = 50)
{
    QElapsedTimer clock;
    clock.start();
    QTimer wake;
    wake.start(sliceMs);
    while (!done()) {
        if (clock.elapsed() > timeoutMs)
            return false;
        // With a time limit processEvents() never sleeps; without one it waits for the next event.
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

} // namespace TWB::Bench
