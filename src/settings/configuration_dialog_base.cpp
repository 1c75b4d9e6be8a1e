#include "settings/configuration_dialog_base.h"

#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"
#include "widgets/warning_frame.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace TWB::GUI::Settings {

using namespace TWB::Common::Communication;

ConfigurationDialogBase::ConfigurationDialogBase(const Texts& texts, QWidget* parent)
    : QDialog(parent)
    , m_texts(texts)
{
    setWindowTitle(texts.title);
    setWindowFlags(windowFlags() & ~Qt::WindowContextHelpButtonHint);
    m_layout = new QVBoxLayout(this);
    auto* intro = new QLabel(texts.intro, this);
    intro->setWordWrap(true);
    m_layout->addWidget(intro);

    m_form = new QFormLayout;
    auto* fileRow = new QHBoxLayout;
    m_file = new QLineEdit(this);
    m_file->setMinimumWidth(320);
    auto* browse = new QPushButton(tr("Browse…"), this);
    fileRow->addWidget(m_file);
    fileRow->addWidget(browse);
    m_form->addRow(tr("File:"), fileRow);
    m_password = addPasswordRow(tr("Password:"));
    m_layout->addLayout(m_form);

    m_hint = new QLabel(this);
    m_hint->setEnabled(false);
    m_layout->addWidget(m_hint);
    m_error = new WarningFrame(QString(), this);
    m_error->hide();
    m_layout->addWidget(m_error);
    m_buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_action = m_buttons->addButton(texts.action, QDialogButtonBox::AcceptRole);
    m_action->setDefault(true);
    m_layout->addWidget(m_buttons);

    connect(browse, &QPushButton::clicked, this, [this] {
        const QString chosen = chooseFile();
        if (!chosen.isEmpty())
            m_file->setText(chosen);
    });
    connect(m_file, &QLineEdit::textChanged, this, &ConfigurationDialogBase::updateState);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &ConfigurationDialogBase::onAction);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

ConfigurationDialogBase::~ConfigurationDialogBase() = default;

QString ConfigurationDialogBase::errorText() const
{
    return m_error->isHidden() ? QString() : m_error->text();
}

// The first size Qt gives the dialog leaves the wrapped intro fewer lines than it takes at that width,
// and the rows below would be drawn over one another.
void ConfigurationDialogBase::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    const int needed = m_layout->totalHeightForWidth(width());
    if (needed > height()) {
        resize(width(), needed);
        m_layout->activate();
    }
}

void ConfigurationDialogBase::reject()
{
    if (!m_busy)
        QDialog::reject();
}

QLineEdit* ConfigurationDialogBase::addPasswordRow(const QString& label)
{
    auto* edit = new QLineEdit(this);
    edit->setEchoMode(QLineEdit::Password);
    m_form->addRow(label, edit);
    connect(edit, &QLineEdit::textChanged, this, &ConfigurationDialogBase::updateState);
    return edit;
}

void ConfigurationDialogBase::updateState()
{
    const QString why = missing();
    m_hint->setText(m_busy ? tr("Working…") : why);
    m_action->setEnabled(why.isEmpty() && !m_busy);
}

void ConfigurationDialogBase::onAction()
{
    if (!missing().isEmpty() || m_busy)
        return;
    m_error->hide();
    try {
        ICommand* command = newCommand(
            m_texts.command, this, &ConfigurationDialogBase::onCommandResult, m_texts.managerGone, m_texts.noCommand);
        QJsonObject values = params();
        values.insert(QStringLiteral("path"), m_file->text().trimmed());
        values.insert(QStringLiteral("password"), m_password->text());
        values.insert(QStringLiteral("profile"), currentProfile());
        setCommandParams(*command, values);
        command->exec();
        setBusy(true);
    } catch (const QString& text) {
        showError(text);
    }
}

void ConfigurationDialogBase::onCommandResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    setBusy(false);
    try {
        const QJsonObject data = replyData(*command).value(m_texts.command).toObject();
        m_result = describe(data);
        accept();
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        // The service's own sentence for a refusal stands under "error".
        const QString detail = command->isReplyError() ? command->reply()
                                                             .object()
                                                             .value(QStringLiteral("data"))
                                                             .toObject()
                                                             .value(QStringLiteral("error"))
                                                             .toString()
                                                       : QString();
        showError(detail.isEmpty() ? text : detail);
    }
    command->deleteLater();
}

void ConfigurationDialogBase::showError(const QString& text)
{
    m_error->setText(text);
    m_error->show();
}

void ConfigurationDialogBase::setBusy(bool busy)
{
    m_busy = busy;
    m_buttons->setEnabled(!busy);
    updateState();
}

} // namespace TWB::GUI::Settings
