#pragma once

#include "service/engine/engine_call.h"

#include <QByteArray>
#include <QProcess>
#include <QString>

#include <functional>

namespace TWB::Service {

/// One restic or rclone process of a run. It hands on its output line by line, keeps the end of
/// what it wrote to stderr for the error message, and dies with the service: a restic left behind
/// by a killed service would hold the repository's lock and go on writing.
class EngineProcess final : public QProcess
{
    Q_OBJECT
    Q_DISABLE_COPY(EngineProcess)
public:
    using LineHandler = std::function<void(const QByteArray& line)>;

    explicit EngineProcess(QObject* parent = nullptr);
    ~EngineProcess() override;

    /// Starts the call; each full line of stdout goes to `onLine`. `input`, when not empty, is
    /// written to stdin, which is then closed.
    void begin(const EngineCall& call, LineHandler onLine, const QByteArray& input = QByteArray());
    /// Asks the program to stop as if interrupted on a terminal, so that restic removes its lock;
    /// kills it when it has not ended after `graceMs`.
    void interrupt(int graceMs = 15000);
    /// The last lines of stderr, joined, without restic's hints about the command line.
    QString errorText() const;
    /// All of stdout when no line handler was given.
    QByteArray output() const { return m_output; }

Q_SIGNALS:
    /// The program ended: its exit code, or -1 when it crashed or could not start.
    void ended(int exitCode);

protected:
    void setupChildProcess() override;

private:
    void onStdout();
    void onStderr();
    void onFinished(int exitCode, QProcess::ExitStatus status);
    void onErrorOccurred(QProcess::ProcessError error);

    LineHandler m_onLine;
    QByteArray m_pending;
    QByteArray m_output;
    QByteArray m_stderr;
    QByteArray m_errPending;
    QByteArray m_input;
    bool m_ended = false;
    qint64 m_service = 0; // the service's process id, which the child compares with its parent's
};

} // namespace TWB::Service
