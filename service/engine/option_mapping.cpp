#include "service/engine/option_mapping.h"

#include "service/engine/backend_mapping.h"
#include "service/engine/engine_call.h"
#include "service/store/product_options.h"

namespace TWB::Service {

namespace {

constexpr int fileSystem = 1;

bool isLocal(const BackendTarget& target)
{
    return !target.throughRclone && target.repositoryRoot.startsWith(QLatin1Char('/'));
}

// restic's name of the back-end, which its "<backend>.connections" option carries.
QString resticBackend(const BackendTarget& target)
{
    if (target.throughRclone)
        return QStringLiteral("rclone");
    if (isLocal(target))
        return QStringLiteral("local");
    return target.repositoryRoot.section(QLatin1Char(':'), 0, 0);
}

// Both programs are Go programs: the proxy and the soft memory limit are read from the environment.
void applyToProcess(const ProductOptions& options, const BackendTarget& target, EngineCall& call)
{
    const QString proxy = options.proxyUrl();
    if (!proxy.isEmpty() && !isLocal(target)) {
        for (const char* name : {"HTTP_PROXY", "HTTPS_PROXY", "http_proxy", "https_proxy"})
            call.environment.insert(QLatin1String(name), proxy);
    }
    if (const qint64 memory = options.memoryBytes())
        call.environment.insert(QStringLiteral("GOMEMLIMIT"), QString::number(memory));
    if (options.ignoreSsl())
        call.environment.insert(QStringLiteral("RCLONE_NO_CHECK_CERTIFICATE"), QStringLiteral("true"));
    if (const int retries = options.retryAttempts())
        call.environment.insert(QStringLiteral("RCLONE_LOW_LEVEL_RETRIES"), QString::number(retries));
}

} // namespace

void OptionMapping::applyToRestic(const ProductOptions& options, const BackendTarget& target, EngineCall& call)
{
    applyToProcess(options, target, call);
    // Global flags go before the command, where restic reads them whatever the command.
    QStringList flags;
    if (const int limit = options.bandwidth(isLocal(target) ? fileSystem : 0)) {
        flags << QStringLiteral("--limit-upload") << QString::number(limit) << QStringLiteral("--limit-download")
              << QString::number(limit);
    }
    if (const int pack = options.chunkSizeMiB())
        flags << QStringLiteral("--pack-size") << QString::number(pack);
    if (options.ignoreSsl() && !isLocal(target))
        flags << QStringLiteral("--insecure-tls");
    const QString backend = resticBackend(target);
    if (const int threads = options.threads())
        flags << QStringLiteral("--option") << QStringLiteral("%1.connections=%2").arg(backend).arg(threads);
    if (const int retries = options.retryAttempts(); retries && backend == QLatin1String("s3"))
        flags << QStringLiteral("--option") << QStringLiteral("s3.retries=%1").arg(retries);
    call.arguments = flags + call.arguments;
}

void OptionMapping::applyToRclone(const ProductOptions& options, const BackendTarget& target, EngineCall& call)
{
    applyToProcess(options, target, call);
    if (const int threads = options.threads())
        call.environment.insert(QStringLiteral("RCLONE_CHECKERS"), QString::number(threads));
    if (const int limit = options.bandwidth(isLocal(target) ? fileSystem : 0))
        call.environment.insert(QStringLiteral("RCLONE_BWLIMIT"), QString::number(limit) + QLatin1Char('K'));
}

} // namespace TWB::Service
