#include "service/engine/engine_call.h"

#include "service/engine/backend_mapping.h"

#include <QStandardPaths>

namespace TWB::Service {

namespace {

QString programFrom(const char* variable, const QString& name)
{
    const QString set = qEnvironmentVariable(variable);
    if (!set.isEmpty())
        return set;
    const QString found = QStandardPaths::findExecutable(name);
    return found.isEmpty() ? name : found;
}

} // namespace

QString EngineCall::resticProgram()
{
    return programFrom("TWB_RESTIC", QStringLiteral("restic"));
}

QString EngineCall::rcloneProgram()
{
    return programFrom("TWB_RCLONE", QStringLiteral("rclone"));
}

QProcessEnvironment EngineCall::cleanEnvironment()
{
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

EngineCall EngineCall::restic(const BackendTarget& target, const QString& repository, const QString& password,
    const QString& cacheDir, const QString& rcloneConfig, const QStringList& arguments)
{
    EngineCall call;
    call.program = resticProgram();
    call.environment = cleanEnvironment();
    const QMap<QString, QString> variables = target.resticEnvironment();
    for (auto it = variables.constBegin(); it != variables.constEnd(); ++it)
        call.environment.insert(it.key(), it.value());
    call.environment.insert(QStringLiteral("RESTIC_PASSWORD"), password);
    call.environment.insert(QStringLiteral("RCLONE_CONFIG"), rcloneConfig);
    // Times given to restic ("backup --time") are UTC, so that a time the clock shows twice is one.
    call.environment.insert(QStringLiteral("TZ"), QStringLiteral("UTC"));
    // Progress once a second is all the service passes on.
    call.environment.insert(QStringLiteral("RESTIC_PROGRESS_FPS"), QStringLiteral("1"));
    call.arguments << QStringLiteral("--repo") << repository << QStringLiteral("--cache-dir") << cacheDir;
    for (const QString& option : target.options)
        call.arguments << QStringLiteral("--option") << option;
    if (target.throughRclone)
        call.arguments << QStringLiteral("--option") << QStringLiteral("rclone.program=%1").arg(rcloneProgram());
    call.arguments << arguments;
    return call;
}

EngineCall EngineCall::rclone(const BackendTarget& target, const QString& rcloneConfig, const QStringList& arguments)
{
    EngineCall call;
    call.program = rcloneProgram();
    call.environment = cleanEnvironment();
    for (auto it = target.rcloneEnvironment.constBegin(); it != target.rcloneEnvironment.constEnd(); ++it)
        call.environment.insert(it.key(), it.value());
    call.environment.insert(QStringLiteral("RCLONE_CONFIG"), rcloneConfig);
    call.arguments = arguments;
    return call;
}

} // namespace TWB::Service
