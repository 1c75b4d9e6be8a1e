#include "restore_wizard/page_destination.h"

#include "platform/plan/restore_file.h"
#include "widgets/check_box.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace TWB::GUI {

using TWB::Info::Plan::RestoreFile;

const char* RestorePlanEditWizard::PageDestination::FieldUseOriginalLocation = "Field_UseOriginalLocation";
const char* RestorePlanEditWizard::PageDestination::FieldUseCustomLocation = "Field_UseCustomLocation";
const char* RestorePlanEditWizard::PageDestination::FieldCustomLocationValue = "Field_CustomLocationValue";
const char* RestorePlanEditWizard::PageDestination::FieldUseOverwriteExistingFiles = "Field_UseOverwriteExistingFiles";
const char* RestorePlanEditWizard::PageDestination::FieldRestoreOnlyNewFiles = "Field_RestoreOnlyNewFiles";

namespace {

QString row(const QString& text)
{
    return QStringLiteral("<tr><td></td><td>%1</td></tr>").arg(text);
}

} // namespace

RestorePlanEditWizard::PageDestination::PageDestination(QWidget* parent)
    : PageBase(tr("Destination"), parent)
    , original(new QRadioButton(tr("Restore to original location"), this))
    , custom(new QRadioButton(tr("Restore to specific location"), this))
    , location(new QLineEdit(this))
    , browse(new QPushButton(tr("Browse"), this))
    , overwrite(new QCheckBox(tr("Overwrite existing files"), this))
    , onlyNew(new CheckBox(
          QStringLiteral("<table><tr><td>%1</td></tr><tr><td><small><b>%2</b> %3</small></td></tr></table>")
              .arg(QStringLiteral("Restore only new files"), QStringLiteral("Note:"),
                  QStringLiteral("files with newer date modified attribute will be restored")),
          this))
{
    setSubTitle(tr("Specify the local folder you want to restore the selected objects"));
    // Typing a path would skip the check that the folder exists; the browse dialog is the way in.
    location->setReadOnly(true);
    onlyNew->label()->setWordWrap(true);
    auto* label = new QLabel(tr("Destination:"), this);
    for (QWidget* widget :
        {static_cast<QWidget*>(label), static_cast<QWidget*>(location), static_cast<QWidget*>(browse)}) {
        widget->setEnabled(false);
        connect(custom, &QAbstractButton::toggled, widget, &QWidget::setEnabled);
    }
    onlyNew->setEnabled(false);
    connect(overwrite, &QAbstractButton::toggled, onlyNew, &QWidget::setEnabled);
    connect(original, &QAbstractButton::toggled, this, &QWizardPage::completeChanged);
    connect(custom, &QAbstractButton::toggled, this, &QWizardPage::completeChanged);
    connect(browse, &QPushButton::clicked, this, &PageDestination::onBrowseButtonClicked);

    auto* pathRow = new QHBoxLayout;
    pathRow->setContentsMargins(20, 0, 0, 0);
    pathRow->addWidget(label);
    pathRow->addWidget(location, 1);
    pathRow->addWidget(browse);
    auto* newRow = new QHBoxLayout;
    newRow->setContentsMargins(20, 0, 0, 0);
    newRow->addWidget(onlyNew, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(original);
    layout->addWidget(custom);
    layout->addLayout(pathRow);
    layout->addSpacing(10);
    layout->addWidget(overwrite);
    layout->addLayout(newRow);
    layout->addStretch(1);

    registerField(QLatin1String(FieldUseOriginalLocation), original);
    registerField(QLatin1String(FieldUseCustomLocation), custom);
    registerField(QLatin1String(FieldCustomLocationValue), location);
    registerField(QLatin1String(FieldUseOverwriteExistingFiles), overwrite);
    registerField(QLatin1String(FieldRestoreOnlyNewFiles), onlyNew);
}

int RestorePlanEditWizard::PageDestination::nextId() const
{
    return 103;
}

bool RestorePlanEditWizard::PageDestination::isComplete() const
{
    if (field(QLatin1String(FieldUseCustomLocation)).toBool())
        return !field(QLatin1String(FieldCustomLocationValue)).toString().isEmpty();
    return true;
}

bool RestorePlanEditWizard::PageDestination::validatePage()
{
    return true;
}

void RestorePlanEditWizard::PageDestination::onBrowseButtonClicked()
{
    QPointer<QFileDialog> dialog = new QFileDialog(this, QString(), QString(), QString());
    dialog->setWindowFlags(Qt::Sheet);
    const QString current = field(QLatin1String(FieldCustomLocationValue)).toString();
    if (!current.isEmpty())
        dialog->setDirectory(current);
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    dialog->setFileMode(QFileDialog::DirectoryOnly);
    QT_WARNING_POP
    const int result = dialog->exec();
    // The page may have gone with its wizard while the dialog was open.
    if (!dialog)
        return;
    if (result == QDialog::Accepted && !dialog->selectedFiles().isEmpty()) {
        setField(QLatin1String(FieldCustomLocationValue), dialog->selectedFiles().constFirst());
        Q_EMIT completeChanged();
    }
    delete dialog;
}

QString RestorePlanEditWizard::PageDestination::summary()
{
    QString text = QStringLiteral("<tr><td>%1</td><td></td></tr>").arg(tr("Destination:"));
    if (field(QLatin1String(FieldUseCustomLocation)).toBool())
        text += row(field(QLatin1String(FieldCustomLocationValue)).toString().toHtmlEscaped());
    else
        text += row(tr("Original location"));
    if (field(QLatin1String(FieldUseOverwriteExistingFiles)).toBool()) {
        // Worded apart from the check box on purpose.
        text += row(tr("Overwrite exist files"));
        if (field(QLatin1String(FieldRestoreOnlyNewFiles)).toBool())
            text += row(tr("Restore only new files"));
    }
    return text;
}

bool RestorePlanEditWizard::PageDestination::initPlan(TWB::Info::Plan::Base* plan)
{
    auto* files = dynamic_cast<RestoreFile*>(plan);
    if (!files)
        return false;
    if (field(QLatin1String(FieldUseOverwriteExistingFiles)).toBool()) {
        files->setSkipExistingFiles(false);
        files->setOnlyNewFiles(field(QLatin1String(FieldRestoreOnlyNewFiles)).toBool());
    } else {
        // The disabled check box may still show a tick; it means nothing without overwriting.
        files->setSkipExistingFiles(true);
        files->setOnlyNewFiles(false);
    }
    if (field(QLatin1String(FieldUseOriginalLocation)).toBool()) {
        files->setRestoreToOriginalLocation(true);
        files->setDestination(QString());
    } else if (field(QLatin1String(FieldUseCustomLocation)).toBool()) {
        files->setRestoreToOriginalLocation(false);
        files->setDestination(field(QLatin1String(FieldCustomLocationValue)).toString());
    }
    return true;
}

bool RestorePlanEditWizard::PageDestination::fromPlan(TWB::Info::Plan::Base* plan)
{
    const auto* files = dynamic_cast<const RestoreFile*>(plan);
    if (!files)
        return false;
    if (files->restoreToOriginalLocation()) {
        setField(QLatin1String(FieldUseOriginalLocation), true);
    } else {
        setField(QLatin1String(FieldUseCustomLocation), true);
        setField(QLatin1String(FieldCustomLocationValue), files->destination());
    }
    setField(QLatin1String(FieldUseOverwriteExistingFiles), !files->skipExistingFiles());
    setField(QLatin1String(FieldRestoreOnlyNewFiles), files->onlyNewFiles());
    return true;
}

} // namespace TWB::GUI
