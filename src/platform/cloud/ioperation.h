#pragma once

#include "platform/twbplatform_export.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUuid>
#include <QVariantMap>

namespace TWL::Cloud {

/// One request to a storage back-end: check an account, list or create containers, list objects.
/// Made by OperationManager or AmazonOperationManager; it does nothing until exec(), then runs without
/// blocking the caller's thread and emits finished() once, from the event loop, never inside exec().
class TWBPLATFORM_EXPORT IOperation : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(IOperation)
public:
    enum State {
        Created = 0,
        Preparing = 1,
        Running = 2,
        Finished = 3,
    };
    Q_ENUM(State)

    /// What went wrong, so that a dialog can act on it; errorMessage() says it to the user.
    enum ErrorCode {
        NoError = 0,
        /// Anything not named below.
        Failed = 1,
        /// The back-end refused the key, the secret or the password.
        WrongCredentials = 2,
        /// The bucket, container or folder does not exist.
        NoSuchContainer = 3,
        /// The host could not be found or reached.
        HostUnreachable = 4,
        /// The peer's certificate is not trusted: the dialog may offer to trust it.
        CertificateNotTrusted = 5,
        /// The account may not do this (read, list, create).
        PermissionDenied = 6,
        /// The configuration lacks what the back-end needs.
        BadConfiguration = 7,
        /// rclone could not be started.
        ProgramMissing = 8,
        Cancelled = 9,
        /// A container of that name exists already, and belongs to someone else.
        ContainerExists = 10,
        /// The back-end did not answer in time.
        TimedOut = 11,
    };
    Q_ENUM(ErrorCode)

    /// Starts the operation. A second call does nothing.
    virtual void exec() = 0;
    /// Stops a running operation; it then finishes with Cancelled. Nothing happens once finished.
    virtual void cancel();

    QUuid id() const { return m_id; }
    /// The operation's kind: "CheckConfig", "ListContainers", "Listing", "CreateContainer", ...
    QString type() const { return m_type; }
    /// A State; 3 once finished.
    int state() const { return m_state; }
    bool isComplite() const { return m_state == Finished; }
    bool isError() const { return m_errorCode != NoError; }
    /// An ErrorCode; 5 when the peer's certificate is not trusted.
    int errorCode() const { return m_errorCode; }
    /// A sentence for the user; empty without an error.
    QString errorMessage() const { return m_errorMessage; }
    /// The back-end's own words about the failure, for the debug log only: they may name hosts and paths.
    QString errorDetails() const { return m_errorDetails; }
    /// The configuration the operation was made with.
    QVariantMap cloudConfig() const { return m_config; }
    /// Takes the operation out of the manager's list; the caller's own shared pointer stays valid.
    void remove();

Q_SIGNALS:
    void finished();

protected:
    IOperation(const QString& type, const QVariantMap& config, QObject* parent = nullptr);

    void setState(State state) { m_state = state; }
    void setCloudConfig(const QVariantMap& config) { m_config = config; }
    /// Ends the operation with success, emitting finished() from the event loop.
    void succeed();
    /// Ends the operation with an error, emitting finished() from the event loop.
    void fail(int code, const QString& message, const QString& details = QString());
    /// Whether exec() may start the work: true once, on the first call.
    bool startOnce();
    /// startOnce(), then a failure with BadConfiguration when `configurationError` says why the account's
    /// configuration cannot be used; true when the work may start.
    bool startWith(const QString& configurationError);
    /// The object doing the work (an rclone run, a file-system job); cancel() deletes it. The operation
    /// becomes its parent.
    void attach(QObject* work);

private:
    void finishLater();

    QUuid m_id;
    QString m_type;
    QVariantMap m_config;
    int m_state = Created;
    int m_errorCode = NoError;
    QString m_errorMessage;
    QString m_errorDetails;
    bool m_started = false;
    QPointer<QObject> m_work;
};

} // namespace TWL::Cloud
