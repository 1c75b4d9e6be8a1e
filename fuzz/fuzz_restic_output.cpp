// Feeds arbitrary bytes, line by line, to the reader of restic's output, as a run reads restic's
// standard output and error. Times it accepts must read back as themselves, and every failure must
// give people a reason to read.

#include "service/engine/restic_output.h"

#include <QByteArray>
#include <QDateTime>
#include <QJsonValue>
#include <QString>

#include <cstdint>
#include <cstdlib>

using TWB::Service::ResticOutput;

namespace {

void checkTime(const QString& text)
{
    const QDateTime time = ResticOutput::time(text);
    if (!time.isValid())
        return;
    if (time.timeSpec() != Qt::UTC)
        std::abort();
    const int year = time.date().year();
    if (year < 1 || year > 9999)
        return;
    if (ResticOutput::time(time.toString(Qt::ISODateWithMs)) != time)
        std::abort();
}

} // namespace

// Qt builds some caches (of time zones, for one) on first use and keeps them for the process: built
// here, they are not taken for leaks of the first input that needs them.
extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    checkTime(QStringLiteral("2026-01-01T00:00:00.5+01:00"));
    ResticOutput::object(QByteArrayLiteral("{\"time\":\"2026-01-01T00:00:00Z\"}"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), int(size));
    for (const QByteArray& line : bytes.split('\n')) {
        const QJsonObject message = ResticOutput::object(line);
        for (const QString& key : {QStringLiteral("time"), QStringLiteral("mtime"), QStringLiteral("message_type")})
            checkTime(message.value(key).toString());
        checkTime(QString::fromUtf8(line));

        const QString text = QString::fromUtf8(line);
        ResticOutput::noRepository(text);
        ResticOutput::wrongPassword(text);
        ResticOutput::locked(text);
        const int exitCode = line.isEmpty() ? -1 : int(static_cast<signed char>(line.at(0)));
        if (ResticOutput::reason(text, exitCode).isEmpty())
            std::abort();
    }
    return 0;
}
