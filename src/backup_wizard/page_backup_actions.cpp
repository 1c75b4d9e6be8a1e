#include "backup_wizard/page_backup_actions.h"

#include "frame/license_restrictions.h"
#include "platform/plan/backup.h"
#include "widgets/warning_frame.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QStandardPaths>
#include <QVBoxLayout>

namespace TWB::GUI {

const char* PageBackupActions::FieldPreActionEnable = "Field_PreActionEnable";
const char* PageBackupActions::FieldPreActionProgram = "Field_PreActionProgram";
const char* PageBackupActions::FieldPreActionArguments = "Field_PreActionArguments";
const char* PageBackupActions::FieldPreActionTerminateOnFailure = "Field_PreActionTerminateOnFailure";
const char* PageBackupActions::FieldPostActionEnable = "Field_PostActionEnable";
const char* PageBackupActions::FieldPostActionProgram = "Field_PostActionProgram";
const char* PageBackupActions::FieldPostActionArguments = "Field_PostActionArguments";
const char* PageBackupActions::FieldPostActionRunAlways = "Field_PostActionRunAlways";

namespace {

const int notificationPage = 5;
const int summaryPage = 6;

/// The program and arguments rows of one action, indented under its check box, and enabled by it.
QGridLayout* commandRows(QCheckBox* enable, QLineEdit* program, QLineEdit* arguments, QWidget* page)
{
    auto* browse = new QPushButton(PageBackupActions::tr("Browse..."), page);
    QObject::connect(browse, &QPushButton::clicked, program, [program] {
        QPointer<QLineEdit> guard(program);
        const QString start = QFileInfo(program->text().trimmed()).absolutePath();
        const QString chosen = QFileDialog::getOpenFileName(
            QApplication::activeWindow(), PageBackupActions::tr("Select program"), start);
        if (guard && !chosen.isEmpty())
            guard->setText(chosen);
    });
    program->setPlaceholderText(PageBackupActions::tr("Program or script to run"));
    arguments->setPlaceholderText(PageBackupActions::tr("Arguments, as on a command line"));
    auto* programLabel = new QLabel(PageBackupActions::tr("Program:"), page);
    auto* argumentsLabel = new QLabel(PageBackupActions::tr("Arguments:"), page);
    auto* grid = new QGridLayout;
    grid->setContentsMargins(20, 0, 0, 0);
    grid->addWidget(programLabel, 0, 0);
    grid->addWidget(program, 0, 1);
    grid->addWidget(browse, 0, 2);
    grid->addWidget(argumentsLabel, 1, 0);
    grid->addWidget(arguments, 1, 1, 1, 2);
    for (QWidget* w : {static_cast<QWidget*>(programLabel), static_cast<QWidget*>(program),
             static_cast<QWidget*>(browse), static_cast<QWidget*>(argumentsLabel), static_cast<QWidget*>(arguments)}) {
        w->setEnabled(false);
        QObject::connect(enable, &QCheckBox::toggled, w, &QWidget::setEnabled);
    }
    return grid;
}

QString commandLine(const QString& program, const QString& arguments)
{
    const QString text = arguments.trimmed().isEmpty() ? program.trimmed()
                                                       : program.trimmed() + QLatin1Char(' ') + arguments.trimmed();
    return text.toHtmlEscaped();
}

} // namespace

PageBackupActions::PageBackupActions(QWidget* parent)
    : PageBase(tr("Pre / Post actions"), parent)
    , error(new WarningFrame(QString(), this))
    , onSuccess(new QRadioButton(tr("Only after a successful backup"), this))
    , always(new QRadioButton(tr("After every backup, even a failed one"), this))
{
    setSubTitle(tr("Run a command before the backup starts and after it ends"));

    auto* preEnable = new QCheckBox(tr("Run a command before the backup"), this);
    auto* preProgram = new QLineEdit(this);
    auto* preArguments = new QLineEdit(this);
    auto* terminate = new QCheckBox(tr("Do not run the backup if the command fails"), this);
    terminate->setEnabled(false);
    connect(preEnable, &QCheckBox::toggled, terminate, &QWidget::setEnabled);

    auto* postEnable = new QCheckBox(tr("Run a command after the backup"), this);
    auto* postProgram = new QLineEdit(this);
    auto* postArguments = new QLineEdit(this);
    auto* group = new QButtonGroup(this);
    group->addButton(onSuccess);
    group->addButton(always);
    onSuccess->setChecked(true);
    for (QRadioButton* radio : {onSuccess, always}) {
        radio->setEnabled(false);
        connect(postEnable, &QCheckBox::toggled, radio, &QWidget::setEnabled);
    }

    auto* note = new QLabel(tr("The commands run as your user on this computer, with TWB_PLAN_ID, TWB_PLAN_NAME "
                               "and TWB_RUN_STATE in their environment. A command fails when it ends with an "
                               "exit code other than 0."),
        this);
    note->setWordWrap(true);
    QPalette grey = note->palette();
    grey.setColor(QPalette::WindowText, QColor(100, 100, 100));
    note->setPalette(grey);

    error->hide();

    auto* preRows = commandRows(preEnable, preProgram, preArguments, this);
    preRows->addWidget(terminate, 2, 1, 1, 2);
    auto* postRows = commandRows(postEnable, postProgram, postArguments, this);
    postRows->addWidget(onSuccess, 2, 1, 1, 2);
    postRows->addWidget(always, 3, 1, 1, 2);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(preEnable);
    layout->addLayout(preRows);
    layout->addSpacing(12);
    layout->addWidget(postEnable);
    layout->addLayout(postRows);
    layout->addSpacing(12);
    layout->addWidget(note);
    layout->addWidget(error);
    layout->addStretch(1);

    registerField(QLatin1String(FieldPreActionEnable), preEnable);
    registerField(QLatin1String(FieldPreActionProgram), preProgram);
    registerField(QLatin1String(FieldPreActionArguments), preArguments);
    registerField(QLatin1String(FieldPreActionTerminateOnFailure), terminate);
    registerField(QLatin1String(FieldPostActionEnable), postEnable);
    registerField(QLatin1String(FieldPostActionProgram), postProgram);
    registerField(QLatin1String(FieldPostActionArguments), postArguments);
    registerField(QLatin1String(FieldPostActionRunAlways), always);

    for (QCheckBox* box : {preEnable, postEnable})
        connect(box, &QCheckBox::toggled, this, &PageBackupActions::completeChanged);
    for (QLineEdit* edit : {preProgram, postProgram}) {
        connect(edit, &QLineEdit::textChanged, this, &PageBackupActions::completeChanged);
        connect(edit, &QLineEdit::textChanged, error, &QWidget::hide);
    }
}

int PageBackupActions::nextId() const
{
    return License::LicenseRestrictions::isNotificationsAvailable() ? notificationPage : summaryPage;
}

bool PageBackupActions::isComplete() const
{
    for (auto [enable, program] : {std::make_pair(FieldPreActionEnable, FieldPreActionProgram),
             std::make_pair(FieldPostActionEnable, FieldPostActionProgram)}) {
        if (field(QLatin1String(enable)).toBool() && field(QLatin1String(program)).toString().trimmed().isEmpty())
            return false;
    }
    return true;
}

QString PageBackupActions::programError(const QString& program)
{
    const QString name = program.trimmed();
    if (!name.contains(QLatin1Char('/'))) {
        if (QStandardPaths::findExecutable(name).isEmpty())
            return tr("No program \"%1\" is found in the folders of PATH.").arg(name);
        return QString();
    }
    const QFileInfo info(name);
    if (info.isRelative())
        return tr("\"%1\" is no full path: the service does not run from your folder.").arg(name);
    if (!info.exists())
        return tr("\"%1\" does not exist.").arg(name);
    if (info.isDir() || !info.isExecutable())
        return tr("\"%1\" cannot be run: it is no executable file.").arg(name);
    return QString();
}

bool PageBackupActions::validatePage()
{
    // The programs are looked at once, when the user leaves the page, not at every key press.
    for (auto [enable, program] : {std::make_pair(FieldPreActionEnable, FieldPreActionProgram),
             std::make_pair(FieldPostActionEnable, FieldPostActionProgram)}) {
        if (!field(QLatin1String(enable)).toBool())
            continue;
        const QString why = programError(field(QLatin1String(program)).toString());
        if (!why.isEmpty()) {
            error->setText(QStringLiteral("<p>%1</p>").arg(why.toHtmlEscaped()));
            error->show();
            return false;
        }
    }
    error->hide();
    return true;
}

QString PageBackupActions::summary()
{
    const QString row = QStringLiteral("<tr><td>%1</td><td>%2</td></tr>");
    QString rows;
    if (field(QLatin1String(FieldPreActionEnable)).toBool()) {
        rows += row.arg(tr("Before backup:"),
            commandLine(field(QLatin1String(FieldPreActionProgram)).toString(),
                field(QLatin1String(FieldPreActionArguments)).toString()));
        if (field(QLatin1String(FieldPreActionTerminateOnFailure)).toBool())
            rows += row.arg(QString(), tr("The backup does not run if the command fails"));
    }
    if (field(QLatin1String(FieldPostActionEnable)).toBool()) {
        rows += row.arg(tr("After backup:"),
            commandLine(field(QLatin1String(FieldPostActionProgram)).toString(),
                field(QLatin1String(FieldPostActionArguments)).toString()));
        rows += row.arg(QString(),
            field(QLatin1String(FieldPostActionRunAlways)).toBool() ? tr("Runs after every backup")
                                                                    : tr("Runs only after a successful backup"));
    }
    return rows;
}

bool PageBackupActions::initPlan(TWB::Info::Plan::Base* plan)
{
    auto* backup = dynamic_cast<TWB::Info::Plan::Backup*>(plan);
    if (!backup)
        return false;
    auto& pre = backup->actions().pre();
    pre.setEnabled(field(QLatin1String(FieldPreActionEnable)).toBool());
    pre.setProgram(field(QLatin1String(FieldPreActionProgram)).toString().trimmed());
    pre.setArguments(field(QLatin1String(FieldPreActionArguments)).toString());
    pre.setTerminateOnFailure(field(QLatin1String(FieldPreActionTerminateOnFailure)).toBool());
    auto& post = backup->actions().post();
    post.setEnabled(field(QLatin1String(FieldPostActionEnable)).toBool());
    post.setProgram(field(QLatin1String(FieldPostActionProgram)).toString().trimmed());
    post.setArguments(field(QLatin1String(FieldPostActionArguments)).toString());
    post.setRunOnBackupFailure(field(QLatin1String(FieldPostActionRunAlways)).toBool());
    return true;
}

bool PageBackupActions::fromPlan(TWB::Info::Plan::Base* plan)
{
    auto* backup = dynamic_cast<TWB::Info::Plan::Backup*>(plan);
    if (!backup)
        return false;
    const auto& pre = backup->actions().pre();
    setField(QLatin1String(FieldPreActionEnable), pre.isEnabled());
    setField(QLatin1String(FieldPreActionProgram), pre.program());
    setField(QLatin1String(FieldPreActionArguments), pre.arguments());
    setField(QLatin1String(FieldPreActionTerminateOnFailure), pre.terminateOnFailure());
    const auto& post = backup->actions().post();
    setField(QLatin1String(FieldPostActionEnable), post.isEnabled());
    setField(QLatin1String(FieldPostActionProgram), post.program());
    setField(QLatin1String(FieldPostActionArguments), post.arguments());
    // The field is the one radio button; the other one follows through the group.
    (post.runOnBackupFailure() ? always : onSuccess)->setChecked(true);
    return true;
}

} // namespace TWB::GUI
