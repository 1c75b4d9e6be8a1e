#include "platform/cloud/rclone_run_p.h"

#include "platform/cloud/ioperation.h"
#include "platform/cloud/operation_manager.h"
#include "platform/communication/connection_manager.h"
#include "platform/communication/icommand.h"
#include "platform/communication/manager.h"
#include "platform/logging/twl_debug.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QSslCertificate>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <memory>

namespace TWL::Cloud::Detail {

namespace {

using TWB::Common::Communication::ConnectionManager;
using TWB::Common::Communication::ICommand;
using TWB::Common::Communication::Manager;

constexpr int trustReplyMs = 10 * 1000;

// A private folder for what rclone reads besides its environment: an empty configuration file, so that
// the user's own remotes never mix in, and the certificates to trust. Nothing secret goes there.
QString privateFolder()
{
    static std::unique_ptr<QTemporaryDir> folder;
    if (!folder || !folder->isValid())
        folder = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/twb-cloud-XXXXXX"));
    return folder->isValid() ? folder->path() : QString();
}

QString emptyConfig()
{
    const QString folder = privateFolder();
    if (folder.isEmpty())
        return QString();
    const QString path = folder + QStringLiteral("/rclone.conf");
    QFile file(path);
    if (!file.exists() && file.open(QIODevice::WriteOnly))
        file.close();
    return path;
}

// The system's authorities, which rclone stops reading once it is given a file of its own.
QByteArray systemAuthorities()
{
    static const QStringList bundles = {QStringLiteral("/etc/ssl/certs/ca-certificates.crt"),
        QStringLiteral("/etc/pki/tls/certs/ca-bundle.crt"), QStringLiteral("/etc/ssl/ca-bundle.pem"),
        QStringLiteral("/etc/pki/ca-trust/extracted/pem/tls-ca-bundle.pem"), QStringLiteral("/etc/ssl/cert.pem")};
    for (const QString& path : bundles) {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            return file.readAll();
    }
    return QByteArray();
}

// A file of the system's authorities and the trusted certificates; empty when it cannot be written.
QString trustFile(const QList<QByteArray>& trusted)
{
    QByteArray pem;
    for (const QByteArray& one : trusted) {
        for (const QSslCertificate& certificate : QSslCertificate::fromData(one, QSsl::Pem))
            pem += certificate.toPem();
    }
    if (pem.isEmpty())
        return QString();
    const QString folder = privateFolder();
    if (folder.isEmpty())
        return QString();
    const QString path
        = QStringLiteral("%1/trusted-%2.pem")
              .arg(folder,
                  QString::fromLatin1(QCryptographicHash::hash(pem, QCryptographicHash::Sha256).toHex().left(16)));
    if (QFile::exists(path))
        return path;
    QFile file(path + QStringLiteral(".new"));
    if (!file.open(QIODevice::WriteOnly) || file.write(systemAuthorities() + '\n' + pem) < 0)
        return QString();
    file.close();
    return file.rename(path) || QFile::exists(path) ? path : QString();
}

} // namespace

RcloneRun::RcloneRun(const RcloneRemote& remote, const QStringList& arguments, QObject* parent)
    : QObject(parent)
    , m_remote(remote)
    , m_arguments(arguments)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &RcloneRun::onTimeout);
}

RcloneRun::~RcloneRun()
{
    if (m_trustCommand)
        m_trustCommand->deleteLater();
    if (m_process && m_process->state() != QProcess::NotRunning) {
        m_process->disconnect(this);
        m_process->kill();
        m_process->waitForFinished(1000);
    }
}

QProcessEnvironment RcloneRun::cleanEnvironment()
{
    // The same families the service keeps out of its own runs: a user's AWS_CA_BUNDLE, for one, makes
    // rclone's S3 back-end fail before it sends a request.
    static const QStringList families
        = {QStringLiteral("RESTIC_"), QStringLiteral("RCLONE_"), QStringLiteral("AWS_"), QStringLiteral("AZURE_"),
            QStringLiteral("B2_"), QStringLiteral("GOOGLE_"), QStringLiteral("OS_"), QStringLiteral("ST_")};
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QStringList keys = environment.keys();
    for (const QString& key : keys) {
        for (const QString& family : families) {
            if (key.startsWith(family)) {
                environment.remove(key);
                break;
            }
        }
    }
    return environment;
}

void RcloneRun::start()
{
    m_toObscure = m_remote.obscured;
    const QPointer<OperationManager> manager = OperationManager::instance();
    if (manager) {
        m_trusted = manager->trustedCertificates();
        m_timer.setInterval(manager->timeout());
    }
    if (manager && manager->useServiceTrustStore())
        askTrust();
    else
        QTimer::singleShot(0, this, &RcloneRun::obscureNext);
}

void RcloneRun::askTrust()
{
    const QPointer<ConnectionManager> connection = ConnectionManager::instance();
    const QPointer<Manager> commands = Manager::instance();
    ICommand* command = nullptr;
    if (connection && commands && connection->isLocalManagmentConnected())
        command = commands->commandFactory(QStringLiteral("ReadFromSslStorage"));
    if (!command) {
        QTimer::singleShot(0, this, &RcloneRun::obscureNext);
        return;
    }
    m_trustCommand = command;
    command->setTimeout(trustReplyMs);
    connect(command, &ICommand::complite, this, &RcloneRun::onTrust);
    connect(command, &ICommand::error, this, &RcloneRun::onTrust);
    connect(command, &ICommand::timeout, this, &RcloneRun::onTrust);
    command->exec();
}

void RcloneRun::onTrust()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    command->deleteLater();
    // Without an answer the system's authorities alone are trusted: the run then fails as untrusted,
    // which is true as far as this process can tell.
    if (!command->failed && command->finished && command->reply().isObject() && !command->isReplyError()) {
        const QJsonArray pems = command->reply()
                                    .object()
                                    .value(QStringLiteral("data"))
                                    .toObject()
                                    .value(QStringLiteral("certificates"))
                                    .toArray();
        for (const QJsonValue& pem : pems)
            m_trusted << pem.toObject().value(QStringLiteral("pem")).toString().toLatin1();
    } else {
        TWL::TwlDebug("TWB").debug() << "The service gave no trusted certificates:"
                                     << (command->failed ? QStringLiteral("no answer") : command->replyErrorString());
    }
    obscureNext();
}

QProcess* RcloneRun::makeProcess()
{
    delete m_process;
    m_process = new QProcess(this);
    connect(m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this, &RcloneRun::onFinished);
    connect(m_process, &QProcess::errorOccurred, this, &RcloneRun::onError);
    connect(m_process, &QProcess::started, this, [this] {
        if (!m_stdin.isNull()) {
            m_process->write(m_stdin);
            m_process->closeWriteChannel();
        }
    });
    return m_process;
}

QProcessEnvironment RcloneRun::environment() const
{
    QProcessEnvironment environment = cleanEnvironment();
    for (auto it = m_remote.environment.constBegin(); it != m_remote.environment.constEnd(); ++it)
        environment.insert(it.key(), it.value());
    environment.insert(QStringLiteral("RCLONE_CONFIG"), emptyConfig());
    // A dialog waits for the answer: one attempt, and a wrong host fails in seconds, not minutes.
    environment.insert(QStringLiteral("RCLONE_RETRIES"), QStringLiteral("1"));
    environment.insert(QStringLiteral("RCLONE_LOW_LEVEL_RETRIES"), QStringLiteral("1"));
    environment.insert(QStringLiteral("RCLONE_CONTIMEOUT"), QStringLiteral("15s"));
    environment.insert(QStringLiteral("RCLONE_TIMEOUT"), QStringLiteral("60s"));
    environment.insert(QStringLiteral("RCLONE_ASK_PASSWORD"), QStringLiteral("false"));
    if (!m_caFile.isEmpty())
        environment.insert(QStringLiteral("RCLONE_CA_CERT"), m_caFile);
    return environment;
}

void RcloneRun::obscureNext()
{
    if (m_toObscure.isEmpty()) {
        run();
        return;
    }
    const QString key = m_toObscure.first();
    QProcess* process = makeProcess();
    process->setProcessEnvironment(cleanEnvironment());
    m_stdin = m_remote.environment.value(key).toUtf8();
    m_obscuring = true;
    const QPointer<OperationManager> manager = OperationManager::instance();
    process->start(manager ? manager->rcloneProgram() : QStringLiteral("rclone"),
        {QStringLiteral("obscure"), QStringLiteral("-")});
}

void RcloneRun::run()
{
    if (!m_trusted.isEmpty()) {
        m_caFile = trustFile(m_trusted);
        if (m_caFile.isEmpty())
            TWL::TwlDebug("TWB").warning() << "The trusted certificates could not be written for rclone";
    }
    QProcess* process = makeProcess();
    process->setProcessEnvironment(environment());
    m_stdin = QByteArray();
    m_obscuring = false;
    const QPointer<OperationManager> manager = OperationManager::instance();
    const QString program = manager ? manager->rcloneProgram() : QStringLiteral("rclone");
    TWL::TwlDebug("TWB").debug() << "rclone" << m_arguments.join(QLatin1Char(' '));
    if (m_timer.interval() > 0)
        m_timer.start();
    process->start(program, m_arguments);
}

void RcloneRun::onFinished(int exitCode, QProcess::ExitStatus status)
{
    if (!m_process || m_ended)
        return;
    RcloneResult result;
    result.output = m_process->readAllStandardOutput();
    result.errors = m_process->readAllStandardError();
    result.exitCode = status == QProcess::NormalExit ? exitCode : -1;
    if (m_obscuring) {
        const QString key = m_toObscure.takeFirst();
        const QString obscured = QString::fromUtf8(result.output).trimmed();
        if (result.exitCode != 0 || obscured.isEmpty()) {
            result.errorCode = IOperation::Failed;
            result.message = tr("rclone could not prepare the account's password.");
            end(result);
            return;
        }
        m_remote.environment.insert(key, obscured);
        obscureNext();
        return;
    }
    m_timer.stop();
    end(result);
}

void RcloneRun::onError(QProcess::ProcessError error)
{
    if (error != QProcess::FailedToStart || m_ended)
        return;
    RcloneResult result;
    result.errorCode = IOperation::ProgramMissing;
    result.message = tr("rclone, which reaches the storage, could not be started. Is it installed?");
    result.errors = m_process ? m_process->errorString().toUtf8() : QByteArray();
    end(result);
}

void RcloneRun::onTimeout()
{
    if (m_ended)
        return;
    if (m_process) {
        m_process->disconnect(this);
        m_process->kill();
    }
    RcloneResult result;
    result.errorCode = IOperation::TimedOut;
    result.message = tr("The storage did not answer in time.");
    end(result);
}

void RcloneRun::end(const RcloneResult& result)
{
    if (m_ended)
        return;
    m_ended = true;
    m_timer.stop();
    emit done(result);
}

} // namespace TWL::Cloud::Detail
