#include "platform/defines/files_operations.h"

#include <QFile>
#include <QTextStream>

namespace SHARED::functions::files_operations {

QString get_attrib_from_file(const QString& path, const QString& attrib)
{
    QFile file(path);
    if (attrib.isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    QTextStream in(&file);
    in.setCodec("UTF-8");
    QString line;
    while (in.readLineInto(&line)) {
        const QString trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith(QLatin1Char('#')) || trimmed.startsWith(QLatin1Char(';'))
            || trimmed.startsWith(QLatin1Char('[')))
            continue;
        const int eq = trimmed.indexOf(QLatin1Char('='));
        if (eq <= 0 || trimmed.left(eq).trimmed() != attrib)
            continue;
        QString value = trimmed.mid(eq + 1).trimmed();
        if (value.size() >= 2 && value.startsWith(QLatin1Char('"')) && value.endsWith(QLatin1Char('"')))
            value = value.mid(1, value.size() - 2);
        return value;
    }
    return QString();
}

} // namespace SHARED::functions::files_operations
