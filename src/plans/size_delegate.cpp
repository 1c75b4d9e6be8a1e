#include "plans/size_delegate.h"

#include "platform/utility/transform.h"

#include <cmath>

namespace TWB::GUI {

SizeDelegate::SizeDelegate(QObject* parent)
    : QStyledItemDelegate(parent)
{ }

SizeDelegate::~SizeDelegate() = default;

QString SizeDelegate::displayText(const QVariant& value, const QLocale& locale) const
{
    return toText(value, locale);
}

QString SizeDelegate::toText(const QVariant& value, const QLocale&)
{
    return toText(value, tr("N/A"));
}

QString SizeDelegate::toText(const QVariant& value, const QString& noSize)
{
    // 2^63 and 2^64 are exact in a double, so the comparison is exact too.
    const double bytes = value.toDouble();
    if (bytes == std::ldexp(1.0, 64) || bytes == std::ldexp(1.0, 63))
        return noSize;
    return SHARED::functions::help::transform::from_byte_to_norm(bytes);
}

} // namespace TWB::GUI
