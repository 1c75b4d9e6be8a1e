#pragma once

#include "history/history_model_base.h"
#include "twbconsole_export.h"

namespace TWB::GUI {

/// The file operations of runs, newest first, registered as "TwbHistoryGetByFileModel".
class TWBCONSOLE_EXPORT HistoryGetByFileModel : public HistoryModelBase
{
    Q_OBJECT
    Q_DISABLE_COPY(HistoryGetByFileModel)
public:
    explicit HistoryGetByFileModel(QObject* parent = nullptr);
    ~HistoryGetByFileModel() override;

    /// Column 1 shows the plan's id; its Qt::UserRole is the name the run recorded, which stays when
    /// the plan is removed.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    /// The operations of `plan` (all plans for a null id) in `period` of the kind `filterOperation`
    /// (0 for all) below the entry `lastId`; 0 starts anew.
    bool load(int period, const QUuid& plan, int lastId, int filterOperation);
    bool load(int period, const QUuid& plan, int filterOperation) { return load(period, plan, 0, filterOperation); }
    /// Collects every operation of the selection as CSV; saveFileReady() brings the file.
    bool issueFileExport(int period, const QUuid& plan, int lastId, int filterOperation);

    /// Narrows later loads and exports to the operations of one run (its "DbID"); 0 widens them again.
    void setRun(qint64 run) { runId = run; }
    qint64 run() const { return runId; }

    /// The icon type of an "Operation".
    static int operationIcon(int operation);

Q_SIGNALS:
    void saveFileReady(QSharedPointer<QTemporaryFile> file);

protected:
    QSharedPointer<QTemporaryFile> prepareExport(const QStringList& lines) const override;
    void emitExportReady(const QSharedPointer<QTemporaryFile>& file) override;
    void addParams(QJsonObject& params, int filterOperation) const override;

private:
    qint64 runId = 0;
};

} // namespace TWB::GUI
