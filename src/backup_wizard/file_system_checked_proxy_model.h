#pragma once

#include "twbconsole_export.h"

#include <QSortFilterProxyModel>

namespace TWB::GUI {

/// Hides hidden files and folders below the top level unless asked to show them. Hidden rows keep
/// their marks, and the marks of the folders above still count them.
class TWBCONSOLE_EXPORT FileSystemCheckedProxyModel : public QSortFilterProxyModel
{
    Q_OBJECT
    Q_DISABLE_COPY(FileSystemCheckedProxyModel)
public:
    explicit FileSystemCheckedProxyModel(QObject* parent = nullptr);
    ~FileSystemCheckedProxyModel() override;

    bool isShowHidden() const { return showHidden; }
    void setSourceModel(QAbstractItemModel* model) override;

public slots:
    void setIsShowHidden(bool show);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private slots:
    void onDataChange(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles);

private:
    bool showHidden = false;
};

} // namespace TWB::GUI
