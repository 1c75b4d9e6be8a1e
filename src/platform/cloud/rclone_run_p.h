#pragma once

#include "platform/cloud/rclone_remote_p.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTimer>

namespace TWB::Common::Communication {
class ICommand;
}

namespace TWL::Cloud::Detail {

/// What an rclone run ended with.
struct RcloneResult
{
    /// The run could not be made (no program, no trust file, timed out): errorCode and message say why.
    int errorCode = 0;
    QString message;
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

/// One rclone run for an operation, without blocking: it first asks the service for the certificates the
/// user trusts, obscures the secrets rclone takes only obscured (through "rclone obscure -", the secret on
/// its standard input), then runs rclone with the remote's variables in a clean environment.
class RcloneRun final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(RcloneRun)
public:
    RcloneRun(const RcloneRemote& remote, const QStringList& arguments, QObject* parent = nullptr);
    ~RcloneRun() override;

    /// Runs; done() follows once, from the event loop.
    void start();
    /// The variables of rclone's environment, for the tests of what leaks into it.
    static QProcessEnvironment cleanEnvironment();

Q_SIGNALS:
    void done(const TWL::Cloud::Detail::RcloneResult& result);

private:
    void askTrust();
    void onTrust();
    void obscureNext();
    void run();
    void onFinished(int exitCode, QProcess::ExitStatus status);
    void onError(QProcess::ProcessError error);
    void onTimeout();
    void end(const RcloneResult& result);
    QProcess* makeProcess();
    QProcessEnvironment environment() const;

    RcloneRemote m_remote;
    QStringList m_arguments;
    QStringList m_toObscure;
    QList<QByteArray> m_trusted;
    QString m_caFile;
    QPointer<TWB::Common::Communication::ICommand> m_trustCommand;
    QProcess* m_process = nullptr; // owned, child
    QByteArray m_stdin;
    QTimer m_timer;
    bool m_obscuring = false;
    bool m_ended = false;
};

} // namespace TWL::Cloud::Detail

Q_DECLARE_METATYPE(TWL::Cloud::Detail::RcloneResult)
