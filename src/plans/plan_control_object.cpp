#include "plans/plan_control_object.h"

#include "frame/base_model.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"
#include "platform/communication/icommand.h"
#include "platform/communication/manager.h"
#include "platform/logging/twl_debug.h"

#include <QJsonObject>
#include <QWidget>
#include <QtDebug>

namespace TWB::GUI {

using namespace TWB::Common::Communication;

namespace {

constexpr int SubTypeColumn = 2;
constexpr int StatusColumn = 4;
constexpr int Running = 1;
constexpr int Idle = 2;

BaseModel* planTable()
{
    auto manager = ModelManager::instance();
    return manager ? manager->create(ModelNames::PlanTable) : nullptr;
}

} // namespace

PlanControlObject::PlanControlObject(QWidget* parent)
    : QObject(parent)
{
    if (BaseModel* table = planTable()) {
        connect(table, &QAbstractItemModel::dataChanged, this, &PlanControlObject::onModelDataChanged);
        connect(table, &QAbstractItemModel::rowsRemoved, this, &PlanControlObject::onPlanRemove);
    }
}

PlanControlObject::~PlanControlObject() = default;

QModelIndex PlanControlObject::currentRow() const
{
    BaseModel* table = planTable();
    if (!table || table->rowCount() == 0)
        return QModelIndex();
    const QModelIndexList hits
        = table->match(table->index(0, 0), Qt::DisplayRole, QVariant::fromValue(currentPlan), 1, Qt::MatchExactly);
    return hits.isEmpty() ? QModelIndex() : hits.first();
}

void PlanControlObject::setCurrentPlan(const QUuid& id, int)
{
    currentPlan = id;
    updateWidget();
}

void PlanControlObject::onChangePlanStatus(bool forceFull)
{
    BaseModel* table = planTable();
    if (!table)
        return;
    Q_EMIT updatedBegin();
    try {
        const QModelIndex row = currentRow();
        const int status = table->index(row.row(), StatusColumn).data(Qt::DisplayRole).toInt();
        QString name;
        QJsonObject params {
            {QStringLiteral("ID"), currentPlan.toString()}, {QStringLiteral("profile"), currentProfile()}};
        if (status == Running) {
            name = QStringLiteral("PlanExecuteStop");
        } else if (status == Idle) {
            name = QStringLiteral("PlanExecuteStart");
            if (forceFull)
                params.insert(QStringLiteral("force_full"), true);
        } else {
            // A plan in no known run status can be neither started nor stopped.
            throw QStringLiteral("Commnunication command don't registrate");
        }
        ICommand* command = newCommand(name, this, &PlanControlObject::onCommandResult);
        setCommandParams(*command, params);
        command->exec();
    } catch (const QString& text) {
        qWarning().noquote() << text;
        Q_EMIT updatedError(text);
    }
}

void PlanControlObject::onRemove()
{
    Q_EMIT updatedBegin();
    try {
        ICommand* command = newCommand(QStringLiteral("PlanRemove"), this, &PlanControlObject::onCommandResult);
        setCommandParams(
            *command, {{QStringLiteral("ID"), currentPlan.toString()}, {QStringLiteral("profile"), currentProfile()}});
        // The row goes when the service reports the removal.
        command->exec();
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT updatedError(text);
    }
}

void PlanControlObject::onEdit() { }

void PlanControlObject::onCommandResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    try {
        replyData(*command);
        Q_EMIT updatedComplite();
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        Q_EMIT updatedError(text);
    }
    command->deleteLater();
}

void PlanControlObject::onModelDataChanged()
{
    updateWidget();
}

void PlanControlObject::updateWidget()
{
    const QModelIndex row = currentRow();
    if (!row.isValid())
        return;
    const QAbstractItemModel* table = row.model();
    const int subType = table->index(row.row(), SubTypeColumn).data(Qt::DisplayRole).toInt();
    const int status = table->index(row.row(), StatusColumn).data(Qt::DisplayRole).toInt();
    Q_EMIT statusChanged(subType, status);
}

void PlanControlObject::onPlanRemove()
{
    if (!planTable())
        return;
    if (currentRow().isValid())
        return;
    TWL::TwlDebug("TWB").info() << "Current plan remove";
    Q_EMIT removeCurrentPlan(currentPlan);
}

} // namespace TWB::GUI
