#pragma once

#include "frame/base_model.h"
#include "twbconsole_export.h"

#include <QList>
#include <QPair>
#include <QPersistentModelIndex>
#include <QUuid>
#include <QVector>

namespace TWB::GUI {

/// The plans of one kind as the host's plan tables show them: the shared plan table's columns, with the
/// last run's time before its status and message, and two columns read from the plan document: the
/// storage (5) and the document itself (14). Those two fill in once PlanXmlList has the document.
class TWBCONSOLE_EXPORT PlanFullTableModel : public BaseModel
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanFullTableModel)
public:
    explicit PlanFullTableModel(QObject* parent = nullptr);
    ~PlanFullTableModel() override;

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    /// The filtered table's rows; none before init().
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    /// The shared table's column behind one of ours, or -1 for a column read from the plan document.
    static int sourceColumn(int column);

public Q_SLOTS:
    void onRowsAboutToBeInserted(const QModelIndex& parent, int first, int last);
    void onRowsAboutToBeRemoved(const QModelIndex& parent, int first, int last);
    void onRowsInserted(const QModelIndex& parent, int first, int last);
    void onRowsRemoved(const QModelIndex& parent, int first, int last);
    void onDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles);
    /// A plan's document arrived or was dropped: its row's document columns change.
    void onPlanXmlLoad(const QUuid& id);

protected:
    /// Shows the plans of one kind (1 backup, 2 restore) of the registry's shared plan table.
    /// False when the registry has no table. A second call changes nothing.
    bool initSource(int kind);
    /// data() for the plans of one kind: the document columns stay empty for a plan of another kind.
    QVariant kindData(const QModelIndex& index, int role, int kind) const;

    /// The filtered and sorted plan table; null until init().
    QAbstractItemModel* source = nullptr; // owned, as a child

private:
    void onLayoutAboutToBeChanged();
    void onLayoutChanged();

    enum class RowChange { None, Insert, Remove };
    /// The row change begun and not yet ended, so that an end comes only after its begin.
    RowChange pendingChange = RowChange::None;
    /// Our persistent indexes across a re-sort of the source: each with its source row and our column.
    QList<QPair<QModelIndex, QPersistentModelIndex>> layoutRows;
};

} // namespace TWB::GUI
