#include "frame/get_program_path.h"

#include <QStringList>

namespace TWB::GUI {

QString getProgramPath(const QString& commandLine)
{
    // Blanks inside quotes are masked in a copy only to find where the first word ends.
    QString masked = commandLine;
    int from = 0;
    while (true) {
        const int open = masked.indexOf(QLatin1Char('"'), from);
        if (open < 0)
            break;
        const int close = masked.indexOf(QLatin1Char('"'), open + 1);
        if (close < 0)
            break;
        for (int i = open + 1; i < close; ++i) {
            if (masked.at(i) == QLatin1Char(' '))
                masked[i] = QLatin1Char('_');
        }
        from = close + 1;
    }

    const QStringList parts = masked.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QString result = commandLine;
    if (!parts.isEmpty()) {
        // The first part begins where the copy's first non-blank does.
        int start = 0;
        while (start < masked.size() && masked.at(start) == QLatin1Char(' '))
            ++start;
        result = commandLine.mid(start, parts.first().size());
    }
    if (result.startsWith(QLatin1Char('"')))
        result.remove(0, 1);
    if (result.endsWith(QLatin1Char('"')))
        result.chop(1);
    return result;
}

} // namespace TWB::GUI
