#pragma once

#include "platform/cloud/cloud_type.h"
#include "storages/storages.h"

#include <QDialog>
#include <QModelIndex>

class QAbstractItemModel;

namespace TWB::GUI::Settings::Account {

/// Maps a back-end to its view and its form.
class TWBCONSOLE_EXPORT AccountFactory final
{
public:
    /// The view of the row's account, filled from the row; null for a back-end without one. The caller owns it.
    static Storages::Info* view(const QModelIndex& index);
    /// The form of a new account of this back-end; null for a back-end that cannot be created here.
    static Storages::Add* add(TWL::Cloud::Type type, QWidget* parent);
    /// The form of the row's account, filled from the row once it shows.
    static Storages::Add* edit(const QModelIndex& index, QWidget* parent);
    /// Asks whether to delete the row's account and, on Ok, deletes it and waits for the list to drop
    /// it. Returns at once; the question closes by itself.
    static void removeDialogExec(QAbstractItemModel* model, const QModelIndex& index, QWidget* parent);
    /// Whether the running edition has a form for the type.
    static bool canAdd(TWL::Cloud::Type type);
};

} // namespace TWB::GUI::Settings::Account
