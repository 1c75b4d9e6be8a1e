#include "plans/duraton_delegate.h"

#include "platform/utility/time_duraton.h"

namespace TWB::GUI {

DuratonDelegate::DuratonDelegate(QObject* parent)
    : QStyledItemDelegate(parent)
{ }

DuratonDelegate::~DuratonDelegate() = default;

QString DuratonDelegate::displayText(const QVariant& value, const QLocale& locale) const
{
    return toText(value, locale);
}

QString DuratonDelegate::toText(const QVariant& value, const QLocale&)
{
    if (value.isNull())
        return tr("N/A");
    return TWL::Utitlity::TimeDuraton::toString(value.toInt());
}

} // namespace TWB::GUI
