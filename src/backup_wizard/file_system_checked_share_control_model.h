#pragma once

#include "backup_wizard/file_system_checked_model.h"
#include "twbconsole_export.h"

#include <QMap>
#include <QStringList>
#include <QUuid>

namespace TWB::GUI {

/// The local disks as a checked tree for editions that let all backup plans together use one network
/// share only. It learns from the service which plan uses which share, and warns when a plan takes a
/// share beside the one in use; the mark stays, as the limit is the licence's and the user may still
/// choose.
class TWBCONSOLE_EXPORT FileSystemCheckedShareControlModel : public FileSystemCheckedModel
{
    Q_OBJECT
    Q_DISABLE_COPY(FileSystemCheckedShareControlModel)
public:
    /// Lists the volumes and asks the service which shares the plans use.
    explicit FileSystemCheckedShareControlModel(QObject* parent = nullptr);
    /// A tree over the given volumes instead of this machine's, as a listing of the volumes gives them.
    explicit FileSystemCheckedShareControlModel(const QJsonArray& volumes, QObject* parent = nullptr);
    ~FileSystemCheckedShareControlModel() override;

    /// The share root (a top-level share's real path) that `path` is or lies under; empty for a path on
    /// no share.
    QString isShare(const QString& path) const;
    using FileSystemCheckedModel::initChecked;
    /// Marks the paths of the plan being edited and takes the shares they lie on as the plan's own.
    void initChecked(const QUuid& planId, const QStringList& includes, const QStringList& excludes);
    /// A check mark as the base sets it; a share checked beside the one in use raises
    /// shareControlAttention(), and a share unchecked is given up.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    /// The top-level shares of this machine.
    QStringList shareRoots() const { return shares; }
    /// Share root to the plan that uses it, as far as is known.
    QMap<QString, QUuid> usedShares() const { return usedShare; }
    /// The shares the plan being edited uses.
    QStringList planShares() const { return ownShares; }

public slots:
    void onGetUsedShareResult();

signals:
    /// The plan now uses a share beside the one the plans use already.
    void shareControlAttention();

private:
    void askUsedShares();

    QStringList shares;
    QMap<QString, QUuid> usedShare;
    QUuid planId;
    QStringList ownShares;
    bool restoring = false;
};

} // namespace TWB::GUI
