#pragma once

#include "twbconsole_export.h"

#include <QModelIndex>
#include <QObject>
#include <QUuid>

class QWidget;

namespace TWB::GUI {

/// What the host's toolbar and context menu talk to: holds the selected plan, starts, stops and removes
/// it, and tells the host when that plan's state changes. It asks the user nothing; confirmations are
/// the host's. A start or stop shows only once the service confirms it by notification.
class TWBCONSOLE_EXPORT PlanControlObject final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanControlObject)
public:
    explicit PlanControlObject(QWidget* parent);
    ~PlanControlObject() override;

public Q_SLOTS:
    /// Makes the plan the one acted on; the number is not used.
    void setCurrentPlan(const QUuid& id, int unused);
    /// Starts the current plan when it is idle, stops it when it runs. `forceFull` asks a start for a
    /// full backup and is ignored by a stop.
    void onChangePlanStatus(bool forceFull);
    void onRemove();
    /// Editing is the host's: nothing to do here.
    void onEdit();
    void onCommandResult();
    void onModelDataChanged();
    void onPlanRemove();
    /// Tells the host the current plan's kind and run status.
    void updateWidget();

Q_SIGNALS:
    /// A command is about to be sent.
    void updatedBegin();
    void updatedComplite();
    /// The command failed; the text is the one logged.
    void updatedError(const QString& text);
    /// The current plan's "SubType" and "Status" columns.
    void statusChanged(int subType, int status);
    /// The current plan is gone from the plan table.
    void removeCurrentPlan(const QUuid& id);

private:
    /// The current plan's row of the shared plan table; invalid when the plan or the table is missing.
    QModelIndex currentRow() const;

    QUuid currentPlan;
};

} // namespace TWB::GUI
