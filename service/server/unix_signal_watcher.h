#pragma once

#include <QObject>

class QSocketNotifier;

namespace TWB::Service {

/// Turns SIGTERM, SIGINT and SIGHUP into a Qt signal on the event loop, through a self-pipe,
/// since nothing else may run inside a signal handler.
class UnixSignalWatcher final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(UnixSignalWatcher)
public:
    explicit UnixSignalWatcher(QObject* parent = nullptr);
    ~UnixSignalWatcher() override;

Q_SIGNALS:
    void terminationRequested(int signalNumber);

private:
    void onReadable();

    QSocketNotifier* m_notifier = nullptr; // owned by parent-child
};

} // namespace TWB::Service
