#include "service/engine/restic_output.h"

#include <QJsonDocument>
#include <QRegularExpression>

namespace TWB::Service {

QJsonObject ResticOutput::object(const QByteArray& line)
{
    const QByteArray trimmed = line.trimmed();
    if (!trimmed.startsWith('{'))
        return QJsonObject();
    return QJsonDocument::fromJson(trimmed).object();
}

QDateTime ResticOutput::time(const QString& text)
{
    static const QRegularExpression form(QStringLiteral(
        "^(\\d{4})-(\\d{2})-(\\d{2})T(\\d{2}):(\\d{2}):(\\d{2})(?:\\.(\\d{1,9}))?(Z|[+-]\\d{2}:\\d{2})$"));
    const QRegularExpressionMatch match = form.match(text.trimmed());
    if (!match.hasMatch())
        return QDateTime();
    const QDate date(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt());
    const QString fraction = (match.captured(7) + QStringLiteral("000")).left(3);
    const QTime clock(
        match.captured(4).toInt(), match.captured(5).toInt(), match.captured(6).toInt(), fraction.toInt());
    QDateTime result(date, clock, Qt::UTC);
    const QString zone = match.captured(8);
    if (zone != QLatin1String("Z")) {
        const int sign = zone.startsWith(QLatin1Char('-')) ? -1 : 1;
        const int offset = sign * (zone.mid(1, 2).toInt() * 3600 + zone.mid(4, 2).toInt() * 60);
        result = result.addSecs(-offset);
    }
    return result;
}

bool ResticOutput::noRepository(const QString& error)
{
    return error.contains(QLatin1String("Is there a repository at the following location?"));
}

bool ResticOutput::wrongPassword(const QString& error)
{
    return error.contains(QLatin1String("wrong password or no key found"));
}

bool ResticOutput::locked(const QString& error)
{
    return error.contains(QLatin1String("repository is already locked"));
}

QString ResticOutput::reason(const QString& error, int exitCode)
{
    QString text = error;
    text.remove(QStringLiteral("Fatal: "));
    text = text.simplified();
    if (text.isEmpty())
        return exitCode < 0 ? QStringLiteral("restic ended unexpectedly")
                            : QStringLiteral("restic ended with exit code %1").arg(exitCode);
    return text;
}

} // namespace TWB::Service
