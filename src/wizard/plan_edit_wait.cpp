#include "wizard/plan_edit_wait.h"

#include "frame/base_model.h"
#include "frame/model_manager.h"
#include "plans/plan_xml_list.h"
#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"
#include "platform/communication/icommand.h"
#include "platform/communication/manager.h"
#include "platform/logging/twl_debug.h"
#include "widgets/progress_wheel.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace TWB::GUI {

using namespace TWB::Common::Communication;

namespace {
const QString planTableModel = QStringLiteral("TwbPlanTableModel");
}

PlanEditWait::PlanEditWait(bool isEdit, QWidget* parent)
    : QDialog(parent)
    , isEdit(isEdit)
{
    // No close button: the dialog ends when the service has answered.
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
        | Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint);
    setWindowTitle(tr("Wait plan edit result"));

    wheel = new ProgressWheel(this);
    label = new QLabel(this);
    label->setWordWrap(true);
    label->setMinimumWidth(320);
    buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->hide();

    auto* row = new QHBoxLayout;
    row->addWidget(wheel);
    row->addWidget(label, 1);
    row->setSpacing(12);
    auto* layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetMinimumSize);
    layout->addLayout(row);
    layout->addWidget(buttons);

    connect(this, &PlanEditWait::startWait, wheel, &ProgressWheel::startAnimate);
    connect(this, &PlanEditWait::stopWait, wheel, &ProgressWheel::stopAnimate);
    connect(this, &PlanEditWait::setMessage, label, &QLabel::setText);
    connect(buttons, &QDialogButtonBox::rejected, this, &PlanEditWait::reject);
    wheel->startAnimate();
}

QString PlanEditWait::message() const
{
    return label->text();
}

void PlanEditWait::setPlan(const QUuid& id, const QString& xml, bool run)
{
    planId = id;
    runAfterSave = run;
    if (auto list = PlanXmlList::instance())
        list->setLastCreatedPlan(id);
    if (auto manager = ModelManager::instance()) {
        if (BaseModel* table = manager->create(planTableModel)) {
            if (isEdit)
                connect(table, &QAbstractItemModel::dataChanged, this, &PlanEditWait::onDataChanged);
            else
                connect(table, &QAbstractItemModel::rowsInserted, this, &PlanEditWait::onRowsInserted);
        }
    }
    try {
        ICommand* command = newCommand(QStringLiteral("PlanUpdate"), this, &PlanEditWait::onCommandResult);
        setCommandParams(*command,
            {{QStringLiteral("profile"), currentProfile()}, {QStringLiteral("planXML"), xml},
                {QStringLiteral("ID"), id.toString()}});
        command->exec();
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        return;
    }
    Q_EMIT startWait();
    Q_EMIT setMessage(tr("Exec edit plan command..."));
    QDialog::exec();
}

void PlanEditWait::execCommand(ICommand* command)
{
    if (!command)
        return;
    connect(command, &ICommand::complite, this, &PlanEditWait::onCommandResult);
    connect(command, &ICommand::error, this, &PlanEditWait::onCommandResult);
    connect(command, &ICommand::timeout, this, &PlanEditWait::onCommandResult);
    command->exec();
}

void PlanEditWait::onCommandResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    try {
        replyData(*command);
        if (command->commandName == QLatin1String("PlanUpdate"))
            Q_EMIT setMessage(tr("Wait command result..."));
        else if (command->commandName == QLatin1String("PlanExecuteStart"))
            accept();
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        // Without a way out, a failure would leave the user waiting for ever.
        if (command->commandName == QLatin1String("PlanUpdate"))
            showFailure(tr("The plan could not be saved: %1").arg(text), false);
        else if (command->commandName == QLatin1String("PlanExecuteStart"))
            showFailure(tr("The plan was saved, but it could not be started: %1").arg(text), true);
    }
    command->deleteLater();
}

void PlanEditWait::showFailure(const QString& text, bool saved)
{
    savedBeforeFailure = saved;
    Q_EMIT stopWait();
    Q_EMIT setMessage(text);
    buttons->show();
    buttons->button(QDialogButtonBox::Close)->setFocus();
    // The words of the service may be long: let the dialog grow to show them whole.
    adjustSize();
}

void PlanEditWait::onRowsInserted(const QModelIndex& parent, int first, int last)
{
    Q_UNUSED(parent)
    auto manager = ModelManager::instance();
    BaseModel* table = manager ? manager->create(planTableModel) : nullptr;
    if (!table)
        return;
    for (int row = first; row <= last; ++row) {
        if (QUuid(table->index(row, 0).data().toString()) == planId) {
            runPlan();
            return;
        }
    }
}

void PlanEditWait::onDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles)
{
    Q_UNUSED(roles)
    const QAbstractItemModel* model = topLeft.model();
    if (!model)
        return;
    for (int row = topLeft.row(); row <= bottomRight.row(); ++row) {
        if (QUuid(model->index(row, 0).data().toString()) == planId) {
            // Started once, however often the row changes afterwards.
            disconnect(model, &QAbstractItemModel::dataChanged, this, &PlanEditWait::onDataChanged);
            runPlan();
            return;
        }
    }
}

void PlanEditWait::runPlan()
{
    if (!runAfterSave) {
        accept();
        return;
    }
    Q_EMIT setMessage(tr("Running plan..."));
    try {
        ICommand* command = newCommand(QStringLiteral("PlanExecuteStart"), this, &PlanEditWait::onCommandResult);
        setCommandParams(
            *command, {{QStringLiteral("ID"), planId.toString()}, {QStringLiteral("profile"), currentProfile()}});
        command->exec();
    } catch (const QString& text) {
        qWarning("%s", qPrintable(text));
    }
}

void PlanEditWait::reject()
{
    // After a failed start the plan is saved all the same, and the wizard may close: Close, Escape and the
    // window's own close all end here, with the same result.
    done(savedBeforeFailure ? Accepted : Rejected);
}

void PlanEditWait::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && buttons->isHidden()) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

} // namespace TWB::GUI
