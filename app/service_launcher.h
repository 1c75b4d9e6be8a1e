#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace TWB::Host {

/// Makes sure a local service answers: when the first connection attempt finds none, it starts
/// twbd from the program's own folder, detached, and lets the channel connect once it is up.
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

    /// Begins watching the channel; starts the service if none answers.
    void start();

    State state() const { return m_state; }
    QString lastError() const { return m_lastError; }

Q_SIGNALS:
    void stateChanged(TWB::Host::ServiceLauncher::State state);

private:
    void onAttemptFailed();
    void setState(State state);

    QStringList m_arguments;
    bool m_attached = false;
    QProcess* m_child = nullptr; // owned by parent-child, attached mode only
    QString m_program;
    QString m_lastError;
    State m_state = State::Connecting;
    bool m_launched = false;
};

} // namespace TWB::Host
