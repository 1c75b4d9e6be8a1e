#include "plans/true_false_delegate.h"

namespace TWB::GUI {

TrueFalseDelegate::TrueFalseDelegate(QObject* parent)
    : QStyledItemDelegate(parent)
{ }

TrueFalseDelegate::~TrueFalseDelegate() = default;

QString TrueFalseDelegate::displayText(const QVariant& value, const QLocale& locale) const
{
    return toText(value, locale);
}

QString TrueFalseDelegate::toText(const QVariant& value, const QLocale&)
{
    bool ok = false;
    const int flag = value.toInt(&ok);
    if (ok && flag == 0)
        return tr("no");
    if (ok && flag == 1)
        return tr("yes");
    return tr("N/A");
}

} // namespace TWB::GUI
