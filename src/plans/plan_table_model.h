#pragma once

#include "frame/base_model.h"
#include "twbconsole_export.h"

#include <QIcon>
#include <QJsonDocument>
#include <QMap>
#include <QUuid>
#include <QVariant>
#include <QVector>

namespace TWB::GUI {

/// The one shared table of every plan the local service knows, registered as "TwbPlanTableModel".
/// Loaded once by init(); from then on it follows the service's plan notifications alone.
class TWBCONSOLE_EXPORT PlanTableModel final : public BaseModel
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanTableModel)
public:
    /// Column number to the plan's JSON key.
    static const QMap<int, QString> KEY;

    explicit PlanTableModel(QObject* parent = nullptr);
    ~PlanTableModel() override;

    /// Asks the service for every plan. A one-time load: a second call appends every plan again.
    bool init() override;
    /// Asks the service for one plan and adds or replaces its row when the answer comes.
    bool loadInfo(const QUuid& id);

    /// The icon of a plan kind (1 backup, 2 restore) in a plan state: running, success, warning, fail, or any
    /// other state. Empty for any other kind.
    static QIcon palnStatusIcon(int type, int status);
    /// The IconManager type behind palnStatusIcon(); 0 for a kind that has no icon.
    static int palnStatusIconType(int type, int status);

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

public Q_SLOTS:
    void onGetListResult();
    void onGetInfoResult();
    void onNotification(const QJsonDocument& document);

private:
    void removePlan(const QUuid& id);
    void changeState(const QUuid& id, int state);

    /// The raw object of each plan, as the service sent it.
    QMap<QUuid, QMap<QString, QVariant>> plans;
    /// Row order: arrival order.
    QVector<QUuid> order;
};

} // namespace TWB::GUI
