#pragma once

#include "storages/storages_add.h"
#include "storages/storages_info.h"

class QLineEdit;
class QPushButton;

namespace TWB::GUI::Settings::Account {

/// A local or mounted folder.
class TWBCONSOLE_EXPORT Local : public Storages::Info
{
    Q_OBJECT
    Q_DISABLE_COPY(Local)
public:
    class Add;
    explicit Local(QWidget* parent = nullptr);
};

/// The folder is checked as it is typed: it must be writable, or creatable under a writable parent.
class TWBCONSOLE_EXPORT Local::Add : public Storages::Add
{
    Q_OBJECT
    Q_DISABLE_COPY(Add)
public:
    explicit Add(QWidget* parent = nullptr);

    QLineEdit* displayNameEdit() const { return displayName; }
    QLineEdit* pathEdit() const { return path; }
    /// Why the folder cannot hold backups; empty when it can.
    static QString folderProblem(const QString& folder);

public Q_SLOTS:
    void onAccept() override;
    void onSetItem(const QModelIndex& index) override;
    void onAdvancedClicked() override;
    void onDataChanged();
    void onBrowse();

private:
    QLineEdit* displayName; // owned as a child
    QLineEdit* path; // owned as a child
    QPushButton* browse; // owned as a child
};

} // namespace TWB::GUI::Settings::Account
