#include "support/process_tree.h"

#include <QDir>
#include <QFile>
#include <QStringList>

namespace TWB::Test {

QMap<qint64, QByteArray> descendants(qint64 ancestor)
{
    QMap<qint64, qint64> parents;
    QMap<qint64, QByteArray> commands;
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString& entry : entries) {
        bool ok = false;
        const qint64 pid = entry.toLongLong(&ok);
        if (!ok)
            continue;
        QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
        if (!stat.open(QIODevice::ReadOnly))
            continue;
        const QByteArray text = stat.readAll();
        // "pid (name) state ppid ...": the name may hold blanks and parentheses.
        const int close = text.lastIndexOf(')');
        const QList<QByteArray> fields = text.mid(close + 2).split(' ');
        if (fields.size() < 2)
            continue;
        parents.insert(pid, fields.at(1).toLongLong());
        QFile cmdline(QStringLiteral("/proc/%1/cmdline").arg(pid));
        if (cmdline.open(QIODevice::ReadOnly))
            commands.insert(pid, cmdline.readAll());
    }
    QMap<qint64, QByteArray> found;
    for (auto it = parents.constBegin(); it != parents.constEnd(); ++it) {
        for (qint64 up = it.value(); up > 1; up = parents.value(up, 0)) {
            if (up == ancestor) {
                found.insert(it.key(), commands.value(it.key()));
                break;
            }
        }
    }
    return found;
}

QByteArray environmentOf(qint64 pid)
{
    QFile environ(QStringLiteral("/proc/%1/environ").arg(pid));
    return environ.open(QIODevice::ReadOnly) ? environ.readAll() : QByteArray();
}

} // namespace TWB::Test
