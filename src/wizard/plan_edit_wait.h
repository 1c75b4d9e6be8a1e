#pragma once

#include "twbconsole_export.h"

#include <QDialog>
#include <QModelIndex>
#include <QUuid>
#include <QVector>

class QDialogButtonBox;
class QLabel;

namespace TWB::Common::Communication {
class ICommand;
}

namespace TWB::GUI {

class ProgressWheel;

/// Saves a plan and holds the user until the plan table shows it, then runs it if asked.
/// A wizard's summary page keeps it on the stack and reads result() after setPlan() returns:
/// Accepted means saved and, if asked for, started.
class TWBCONSOLE_EXPORT PlanEditWait final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanEditWait)
public:
    explicit PlanEditWait(bool isEdit, QWidget* parent = nullptr);

    /// Sends "PlanUpdate" and waits; returns when the dialog closes.
    void setPlan(const QUuid& id, const QString& xml, bool run);
    /// Accepts, or sends "PlanExecuteStart" first when the plan is to run after saving.
    void runPlan();
    /// Sends a command whose reply comes to onCommandResult(); a null command is ignored.
    void execCommand(TWB::Common::Communication::ICommand* command);

    /// The text the dialog shows.
    QString message() const;

Q_SIGNALS:
    void setMessage(const QString& text);
    void startWait();
    void stopWait();

public Q_SLOTS:
    void onCommandResult();
    void onRowsInserted(const QModelIndex& parent, int first, int last);
    void onDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles);
    /// Accepted when the plan was saved before a failure, Rejected otherwise.
    void reject() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// After a failure: the service's words and a way out. Closing accepts when the plan was saved.
    void showFailure(const QString& text, bool saved);

    QUuid planId;
    bool isEdit;
    bool runAfterSave = false;
    bool savedBeforeFailure = false;
    ProgressWheel* wheel = nullptr; // owned by parent-child
    QLabel* label = nullptr; // owned by parent-child
    QDialogButtonBox* buttons = nullptr; // owned by parent-child
};

} // namespace TWB::GUI
