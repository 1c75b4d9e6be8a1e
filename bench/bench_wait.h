#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <unistd.h>
#include <vector>

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

/// CPU time of a process in milliseconds, from /proc: on a loaded machine the wall clock says little
/// about whose work the time was.
inline double cpuMs(qint64 pid)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = file.readAll();
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return fields.size() > 12 ? (fields.at(11).toDouble() + fields.at(12).toDouble()) * 1000.0 / sysconf(_SC_CLK_TCK)
                              : 0;
}

inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

} // namespace TWB::Bench
