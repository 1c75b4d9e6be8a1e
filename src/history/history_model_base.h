#pragma once

#include "frame/base_model.h"
#include "twbconsole_export.h"

#include <QJsonObject>
#include <QMap>
#include <QSharedPointer>
#include <QStringList>
#include <QTemporaryFile>
#include <QUuid>
#include <QVariant>
#include <QVector>

namespace TWB::GUI {

/// What the two history tables share: a flat list of the service's entries, fetched page by page as
/// a view scrolls, and a CSV export of the whole selection in pages of the service's fixed size.
class TWBCONSOLE_EXPORT HistoryModelBase : public BaseModel
{
    Q_OBJECT
    Q_DISABLE_COPY(HistoryModelBase)
public:
    /// Entries of one page of the service; the export asks for another page only after a full one.
    static constexpr int ExportPageSize = 200;

    ~HistoryModelBase() override;

    /// Nothing is fetched before the first load.
    bool init() override { return true; }

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

    /// The entry of a row as the service gave it; empty outside the rows.
    QMap<QString, QVariant> entry(int row) const;

public Q_SLOTS:
    void onGetResult();
    void onGetExportResult();

Q_SIGNALS:
    /// Lines an export has collected so far, after each page.
    void exportProgress(int lines);

protected:
    struct Keys
    {
        QString command; // and the array in "data"
        QString plan; // key of the plan in the request
        QString lastId; // key of the paging id in the request
        QString rowId; // key of the paging id in an entry
        QString managerGone;
        QString noCommand;
        QStringList headers;
    };

    HistoryModelBase(const Keys& keys, QObject* parent);

    /// Sends one list page, or with `csv` one export page; false after logging and emitting error().
    bool send(int period, const QUuid& plan, int lastId, int filterOperation, bool csv);
    /// The rows of a selection: a `lastId` of 0 empties the list first; then asks for the page below it.
    bool startLoad(int period, const QUuid& plan, int lastId, int filterOperation);
    virtual QSharedPointer<QTemporaryFile> prepareExport(const QStringList& lines) const = 0;
    virtual void emitExportReady(const QSharedPointer<QTemporaryFile>& file) = 0;
    /// Keys of the request that only one of the two models sends.
    virtual void addParams(QJsonObject& params, int filterOperation) const;

    QVector<QMap<QString, QVariant>> rows;
    int period = 0;
    QUuid plan;
    int filterOperation = 0;
    bool hasMore = false;
    QUuid requestId;
    QStringList exportLines;

private:
    bool sendParams(const QJsonObject& params, bool csv);

    const Keys keys;
};

} // namespace TWB::GUI
