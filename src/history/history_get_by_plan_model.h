#pragma once

#include "history/history_model_base.h"
#include "twbconsole_export.h"

namespace TWB::GUI {

/// The runs of plans, newest first, registered as "TwbHistoryGetByPlanModel".
class TWBCONSOLE_EXPORT HistoryGetByPlanModel : public HistoryModelBase
{
    Q_OBJECT
    Q_DISABLE_COPY(HistoryGetByPlanModel)
public:
    explicit HistoryGetByPlanModel(QObject* parent = nullptr);
    ~HistoryGetByPlanModel() override;

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    /// The runs of `plan` (all plans for a null id) in `period` below the entry `lastId`; 0 starts anew.
    bool load(int period, const QUuid& plan, int lastId);
    bool load(int period, const QUuid& plan) { return load(period, plan, 0); }
    /// Collects every run of the selection as CSV; savePlanReady() brings the file.
    bool issuePlanExport(int period, const QUuid& plan, int lastId);

    /// The "Finish Time" of an entry: its start plus its duration, empty while it runs.
    static QString finishTime(const QMap<QString, QVariant>& entry);

Q_SIGNALS:
    void savePlanReady(QSharedPointer<QTemporaryFile> file);

protected:
    QSharedPointer<QTemporaryFile> prepareExport(const QStringList& lines) const override;
    void emitExportReady(const QSharedPointer<QTemporaryFile>& file) override;
};

} // namespace TWB::GUI
