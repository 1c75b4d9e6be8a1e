#include "storages/storages_info.h"

#include "platform/crypt/local_password.h"
#include "plans/true_false_delegate.h"
#include "storages/account_select.h"
#include "storages/storage_connections_model.h"
#include "widgets/elided_label.h"

#include <QFontMetricsF>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QJsonObject>
#include <QLabel>
#include <QLocale>
#include <QStyle>
#include <QVBoxLayout>

namespace TWB::GUI::Settings {

Storages::Info::Info(TWL::Cloud::Type type, QWidget* parent)
    : QWidget(parent)
    , type(type)
    , form(new QFormLayout)
    , name(new QLabel(this))
{
    auto layout = new QVBoxLayout(this);
    auto head = new QHBoxLayout;
    auto icon = new QLabel(this);
    icon->setPixmap(StorageConnectionsModel::storageIcon(type, IconManager::Large).pixmap(32, 32));
    auto kind = new QLabel(QStringLiteral("<b>%1</b>").arg(Account::storageName(type).toHtmlEscaped()), this);
    head->addWidget(icon);
    head->addWidget(kind, 1);
    layout->addLayout(head);
    // Rows of keys an account lacks are hidden; the space between rows lives in the rows themselves, so that
    // a hidden row leaves no gap behind.
    form->setVerticalSpacing(0);
    form->addRow(tr("Display Name:"), name);
    spaceRow(name);
    layout->addLayout(form);
    layout->addStretch(1);
}

Storages::Info::~Info() = default;

void Storages::Info::addField(const QString& label, const QString& key, Delegate delegate)
{
    auto value = new ElidedLabel(this);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    form->addRow(label, value);
    spaceRow(value);
    values.insert(key, value);
    if (delegate)
        delegates.insert(key, delegate);
}

void Storages::Info::spaceRow(QWidget* value)
{
    const int half = qMax(1, style()->pixelMetric(QStyle::PM_LayoutVerticalSpacing) / 2);
    value->setContentsMargins(0, half, 0, half);
    if (QWidget* label = form->labelForField(value))
        label->setContentsMargins(0, half, 0, half);
}

QString Storages::Info::fieldText(const QString& key) const
{
    ElidedLabel* value = values.value(key);
    return value && !value->isHidden() ? value->text() : QString();
}

QString Storages::Info::displayName() const
{
    return name->toolTip();
}

void Storages::Info::setItem(const QModelIndex& index)
{
    updateItem(index);
}

void Storages::Info::updateItem(const QModelIndex& index)
{
    const QString text = index.sibling(index.row(), 0).data().toString();
    name->setToolTip(text);
    name->setText(QFontMetricsF(name->font()).elidedText(text, Qt::ElideRight, 100));
    const QJsonObject details = index.sibling(index.row(), 8).data().toJsonObject();
    for (auto it = values.begin(); it != values.end(); ++it) {
        const bool present = details.contains(it.key());
        it.value()->setVisible(present);
        if (QWidget* label = form->labelForField(it.value()))
            label->setVisible(present);
        if (!present)
            continue;
        const QVariant value = details.value(it.key()).toVariant();
        const Delegate delegate = delegates.value(it.key());
        it.value()->setText(delegate ? delegate(value) : value.toString());
    }
}

QString Storages::Info::decryptDelegate(const QVariant& value)
{
    return SHARED::cryptNS::decrypt_local_password(value.toString());
}

QString Storages::Info::trueFalseDelegate(const QVariant& value)
{
    return TrueFalseDelegate::toText(value, QLocale());
}

} // namespace TWB::GUI::Settings
