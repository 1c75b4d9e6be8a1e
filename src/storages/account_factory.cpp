#include "storages/account_factory.h"

#include "frame/application.h"
#include "platform/logging/twl_debug.h"
#include "storages/accounts/amazon_s3_compatible.h"
#include "storages/accounts/azure.h"
#include "storages/accounts/backblaze_b2.h"
#include "storages/accounts/google.h"
#include "storages/accounts/local.h"
#include "storages/accounts/openstack.h"
#include "storages/accounts/sftp.h"
#include "storages/storages_update_watcher.h"

#include <QMessageBox>
#include <QPointer>

namespace TWB::GUI::Settings::Account {

namespace {
constexpr int typeColumn = 5;
} // namespace

bool AccountFactory::canAdd(TWL::Cloud::Type type)
{
    if (type == TWL::Cloud::FileSystem || type == TWL::Cloud::Sftp)
        return true;
    return Application::isStandalon()
        && (type == TWL::Cloud::AzureBlob || type == TWL::Cloud::BackBlaze || type == TWL::Cloud::GoogleStorage
            || AmazonS3Compatible::traits(type, nullptr) || OpenStack::traits(type, nullptr));
}

Storages::Info* AccountFactory::view(const QModelIndex& index)
{
    const auto type = TWL::Cloud::Type(index.sibling(index.row(), typeColumn).data().toInt());
    Storages::Info* info = nullptr;
    AmazonS3Compatible::Traits traits {};
    if (type == TWL::Cloud::FileSystem)
        info = new Local;
    else if (type == TWL::Cloud::Sftp)
        info = new Sftp;
    else if (type == TWL::Cloud::AmazonS3)
        info = new AmazonS3;
    else if (type == TWL::Cloud::AzureBlob)
        info = new Azure;
    else if (type == TWL::Cloud::BackBlaze)
        info = new BackblazeB2;
    else if (type == TWL::Cloud::GoogleStorage)
        info = new Google;
    else if (AmazonS3Compatible::traits(type, &traits))
        info = new AmazonS3Compatible(type, traits.showEndpoint);
    else if (TWL::Cloud::openStackTypes().contains(type) && type != TWL::Cloud::GoogleStorage)
        info = new OpenStack(type);
    if (!info) {
        // Accounts of back-ends without a form of their own still show their name and kind.
        info = new Storages::Info(type);
    }
    info->setItem(index);
    return info;
}

Storages::Add* AccountFactory::add(TWL::Cloud::Type type, QWidget* parent)
{
    if (type == TWL::Cloud::FileSystem)
        return new Local::Add(parent);
    if (type == TWL::Cloud::Sftp)
        return new Sftp::Add(parent);
    if (Application::isStandalon() && type == TWL::Cloud::AzureBlob)
        return new Azure::Add(parent);
    if (Application::isStandalon() && type == TWL::Cloud::BackBlaze)
        return new BackblazeB2::Add(parent);
    if (Application::isStandalon() && type == TWL::Cloud::GoogleStorage)
        return new Google::Add(parent);
    if (Application::isStandalon() && OpenStack::traits(type, nullptr))
        return new OpenStack::Add(type, parent);
    AmazonS3Compatible::Traits traits {};
    if (Application::isStandalon() && AmazonS3Compatible::traits(type, &traits)) {
        if (type == TWL::Cloud::AmazonS3)
            return new AmazonS3::Add(parent);
        return new AmazonS3Compatible::Add(type, traits.showEndpoint, traits.showSignature, parent);
    }
    TWL::TwlDebug("TWB").warning() << "This account type don't support!" << int(type);
    return nullptr;
}

Storages::Add* AccountFactory::edit(const QModelIndex& index, QWidget* parent)
{
    if (!index.isValid())
        return nullptr;
    Storages::Add* dialog = add(TWL::Cloud::Type(index.sibling(index.row(), typeColumn).data().toInt()), parent);
    if (dialog)
        dialog->setItem(index);
    return dialog;
}

void AccountFactory::removeDialogExec(QAbstractItemModel* model, const QModelIndex& index, QWidget* parent)
{
    if (!model || !index.isValid())
        return;
    const QString name = index.sibling(index.row(), 0).data().toString();
    const QUuid id(index.sibling(index.row(), 1).data().toString());
    const QPersistentModelIndex row(index);
    auto box = new QMessageBox(QMessageBox::Question, QObject::tr("Are you sure?"),
        QObject::tr("Delete \"%1\" account?").arg(name), QMessageBox::Ok | QMessageBox::Cancel, parent);
    box->setDefaultButton(QMessageBox::Cancel);
    box->setWindowFlags(box->windowFlags() | Qt::Sheet);
    box->setAttribute(Qt::WA_DeleteOnClose);
    QPointer<QAbstractItemModel> guard(model);
    QObject::connect(box, &QMessageBox::finished, box, [box, guard, row, id, name, parent](int) {
        if (box->clickedButton() != box->button(QMessageBox::Ok) || !guard || !row.isValid())
            return;
        TWL::TwlDebug("TWB").debug() << "Remove local account:" << name << id.toString();
        guard->removeRows(row.row(), 1, row.parent());
        Storages::UpdateWatcher watcher(id, Storages::UpdateWatcher::RemoveAccount, parent);
        watcher.exec();
    });
    box->open();
}

} // namespace TWB::GUI::Settings::Account
