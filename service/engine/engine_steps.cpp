#include "service/engine/engine_steps.h"

#include "platform/logging/twl_debug.h"
#include "platform/plan/backup.h"
#include "platform/plan/factory.h"
#include "service/engine/option_mapping.h"
#include "service/engine/repository_key_store.h"
#include "service/engine/restic_output.h"
#include "service/store/plan_store.h"
#include "service/store/product_options.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <memory>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace TWB::Service {

namespace {

// A folder that only the service's user may enter, from the moment it exists.
bool makePrivate(const QString& path, QString* error)
{
    const QByteArray name = QFile::encodeName(path);
    if (::mkdir(name.constData(), 0700) != 0 && errno != EEXIST) {
        *error = QStringLiteral("Cannot create %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    // An existing folder, or one the umask narrowed further, gets exactly 0700.
    if (::chmod(name.constData(), 0700) != 0) {
        *error = QStringLiteral("Cannot protect %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    return true;
}

} // namespace

EngineSteps::EngineSteps(const RunPlaces& places, const QString& folder, QObject* parent)
    : QObject(parent)
    , m_places(places)
    , m_folder(folder)
{ }

EngineSteps::~EngineSteps()
{
    removeFolder();
}

bool EngineSteps::makeFolder(QString* error)
{
    QDir().mkpath(m_places.cacheDir());
    QFile config(m_places.rcloneConfig());
    if (!config.exists() && config.open(QIODevice::WriteOnly))
        config.close();
    removeFolder();
    QDir().mkpath(m_places.dataDir);
    return makePrivate(m_places.runRoot(), error) && makePrivate(m_folder, error);
}

void EngineSteps::removeFolder()
{
    QDir(m_folder).removeRecursively();
}

bool EngineSteps::writeFile(const QString& name, const QByteArray& content, QString* error)
{
    QFile file(m_folder + QLatin1Char('/') + name);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)
        || !file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner)
        || file.write(content) != content.size() || !file.flush()) {
        *error = QStringLiteral("Cannot write %1: %2").arg(file.fileName(), file.errorString());
        return false;
    }
    return true;
}

bool EngineSteps::writeFiles(const BackendTarget& target, QString* error)
{
    for (auto it = target.files.constBegin(); it != target.files.constEnd(); ++it) {
        if (!writeFile(it.key(), it.value(), error))
            return false;
    }
    return true;
}

void EngineSteps::obscureSecrets(BackendTarget& target, std::function<void(const QString& error)> next)
{
    if (target.obscured.isEmpty()) {
        next(QString());
        return;
    }
    const QString key = target.obscured.takeFirst();
    EngineCall obscure;
    obscure.program = EngineCall::rcloneProgram();
    obscure.environment = EngineCall::cleanEnvironment();
    // The secret goes in on stdin: "-" makes rclone read it from there.
    obscure.arguments = QStringList {QStringLiteral("obscure"), QStringLiteral("-")};
    run(
        obscure, nullptr,
        [this, &target, key, next](int exitCode, const QString& error, const QByteArray& output) {
            const QString obscured = QString::fromUtf8(output).trimmed();
            if (exitCode != 0 || obscured.isEmpty()) {
                next(QStringLiteral("rclone cannot prepare the storage's password: %1").arg(error));
                return;
            }
            target.rcloneEnvironment.insert(key, obscured);
            obscureSecrets(target, next);
        },
        target.rcloneEnvironment.value(key).toUtf8());
}

EngineCall EngineSteps::restic(
    const BackendTarget& target, const QString& repository, const QString& password, const QStringList& arguments) const
{
    EngineCall call
        = EngineCall::restic(target, repository, password, m_places.cacheDir(), m_places.rcloneConfig(), arguments);
    OptionMapping::applyToRestic(ProductOptions(m_places.optionsFile()), target, call);
    return call;
}

EngineCall EngineSteps::rclone(const BackendTarget& target, const QStringList& arguments) const
{
    EngineCall call = EngineCall::rclone(target, m_places.rcloneConfig(), arguments);
    OptionMapping::applyToRclone(ProductOptions(m_places.optionsFile()), target, call);
    return call;
}

void EngineSteps::run(
    const EngineCall& call, EngineProcess::LineHandler onLine, Done done, const QByteArray& input, bool always)
{
    auto* process = new EngineProcess(this);
    m_process = process;
    QElapsedTimer clock;
    clock.start();
    connect(process, &EngineProcess::ended, this, [this, process, done, clock, always](int exitCode) {
        TWL::TwlDebug("TWB").debug() << process->program() << "ended with" << exitCode << "after" << clock.elapsed()
                                     << "ms";
        const QString error = process->errorText();
        const QByteArray output = process->output();
        process->deleteLater();
        if (m_process == process)
            m_process = nullptr;
        if (!always && m_gate && !m_gate())
            return;
        done(exitCode, error, output);
    });
    // The arguments hold no secret: those travel in the environment.
    TWL::TwlDebug("TWB").debug() << "Starting" << call.program << call.arguments.join(QLatin1Char(' '));
    process->begin(call, std::move(onLine), input);
}

void EngineSteps::runRestic(const BackendTarget& target, const QString& repository, const QString& password,
    const QStringList& arguments, EngineProcess::LineHandler onLine, Done done, bool always)
{
    const EngineCall call = restic(target, repository, password, arguments);
    run(
        call, onLine,
        [this, target, repository, password, call, onLine, done, always](
            int exitCode, const QString& error, const QByteArray& output) {
            if (exitCode == 0 || !ResticOutput::locked(error)) {
                done(exitCode, error, output);
                return;
            }
            // restic removes only locks whose process is gone from this machine, or that are old.
            TWL::TwlDebug("TWB").info() << "A lock stands in the way on" << repository << "; removing stale locks";
            run(
                restic(target, repository, password, {QStringLiteral("unlock")}), nullptr,
                [this, call, onLine, done, always](
                    int, const QString&, const QByteArray&) { run(call, onLine, done, QByteArray(), always); },
                QByteArray(), always);
        },
        QByteArray(), always);
}

void EngineSteps::interrupt(int graceMs)
{
    if (m_process)
        m_process->interrupt(graceMs);
}

QStringList EngineSteps::passwords(Database& database, const QUuid& plan, const QString& given)
{
    QStringList keys;
    try {
        if (const std::optional<RepositoryKeyStore::Key> known = RepositoryKeyStore(database).key(plan))
            keys << known->text;
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
    }
    if (!given.isEmpty())
        keys << given;
    if (const std::optional<PlanRecord> record = PlanStore(database).find(plan)) {
        std::unique_ptr<TWB::Info::Plan::Base> object(TWB::Info::Plan::Factory::create(record->xml));
        if (const auto* backup = dynamic_cast<const TWB::Info::Plan::Backup*>(object.get())) {
            if (backup->encryption().isEnabled() && !backup->encryption().password().isEmpty())
                keys << backup->encryption().password();
        }
    }
    keys << RepositoryKeyStore::openKey(plan);
    keys.removeDuplicates();
    return keys;
}

} // namespace TWB::Service
