#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTimer>

namespace TWB::Host {

/// Keeps a local service answering: whenever the channel finds none, it starts twbd from the
/// program's own folder, and starts it again each time it goes away, waiting longer after each
/// restart that did not last (the back-off) and logging every restart.
class ServiceLauncher final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(ServiceLauncher)
public:
    enum class State { Connecting, Starting, Connected, Disconnected, Failed };
    Q_ENUM(State)

    explicit ServiceLauncher(QObject* parent = nullptr);
    ~ServiceLauncher() override;

    /// Runs the service as a child of this process, in the foreground, and stops it when the launcher
    /// goes: for a private instance that must not outlive the console, as in the self-test.
    void setAttached(bool attached) { m_attached = attached; }

    /// Arguments given to twbd besides its own defaults (--socket, --data-dir of a private instance).
    void setServiceArguments(const QStringList& arguments) { m_arguments = arguments; }
    /// The service program; twbd beside this program unless set.
    void setServiceProgram(const QString& program) { m_program = program; }
    QString serviceProgram() const;

    /// The wait before a restart: `firstMs` after a service that ran a while, doubled after each restart
    /// that did not last `stableMs`, up to `maxMs`.
    void setRestartDelays(int firstMs, int maxMs, int stableMs);

    /// Begins watching the channel; starts the service if none answers.
    void start();
    /// The user's "Connect now": ends any wait, starting the service at once when it is away.
    void connectNow();

    State state() const { return m_state; }
    QString lastError() const { return m_lastError; }
    /// How many times the service was started, the first start included.
    int startCount() const { return m_starts; }
    /// The process id of the service this launcher runs attached, or 0.
    qint64 servicePid() const { return m_child ? m_child->processId() : 0; }
    /// Milliseconds until the next restart, or -1 when none waits.
    int restartIn() const { return m_restart.isActive() ? m_restart.remainingTime() : -1; }

Q_SIGNALS:
    void stateChanged(TWB::Host::ServiceLauncher::State state);

private:
    void onAttemptFailed();
    void onConnected();
    void launch();
    void endStarting();
    void setState(State state);

    QStringList m_arguments;
    bool m_attached = false;
    QProcess* m_child = nullptr; // owned by parent-child, attached mode only
    QString m_program;
    QString m_lastError;
    State m_state = State::Connecting;
    int m_starts = 0;
    int m_firstDelayMs = 1000;
    int m_maxDelayMs = 30000;
    int m_stableMs = 60000;
    int m_nextDelayMs = 1000;
    QTimer m_restart; // the back-off before the next start
    QTimer m_poll; // looks for the started service more often than the channel would
    QTimer m_startLimit; // a start that never listens ends here
    QTimer m_stable; // a service that stays up this long resets the back-off
};

} // namespace TWB::Host
