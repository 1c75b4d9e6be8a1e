#include "plans/date_time_delegate.h"

#include <QDateTime>
#include <QLocale>

namespace TWB::GUI {

DateTimeDelegate::DateTimeDelegate(QObject* parent)
    : QStyledItemDelegate(parent)
{ }

DateTimeDelegate::~DateTimeDelegate() = default;

QString DateTimeDelegate::displayText(const QVariant& value, const QLocale& locale) const
{
    return toText(value, locale);
}

QString DateTimeDelegate::toText(const QVariant& value, const QLocale&)
{
    QDateTime time = QDateTime::fromString(value.toString(), QStringLiteral("yyyyMMddhhmmss"));
    time.setTimeSpec(Qt::UTC);
    // The system locale's short form, what Qt::SystemLocaleShortDate gave before it was deprecated.
    return QLocale::system().toString(time.toLocalTime(), QLocale::ShortFormat);
}

} // namespace TWB::GUI
