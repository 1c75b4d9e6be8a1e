#include "settings/options_page.h"

#include "platform/settings/default_settings.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QVBoxLayout>

namespace TWB::GUI::Settings {

namespace {

QString flag(bool on)
{
    return on ? QStringLiteral("true") : QStringLiteral("false");
}

QString stored(const QString& key)
{
    const QPointer<DefaultSettings> settings = DefaultSettings::instance();
    return settings ? settings->value(key) : QString();
}

} // namespace

OptionsPage::OptionsPage(const QString& title, QWidget* parent)
    : QWidget(parent)
{
    setWindowTitle(title);
    m_controls = new QWidget(this);
    m_controls->setEnabled(false);
    m_controlsLayout = new QVBoxLayout(m_controls);
    m_controlsLayout->setContentsMargins(0, 0, 0, 0);
    errorLabel = new QLabel(this);
    errorLabel->setWordWrap(true);
    errorLabel->setStyleSheet(QStringLiteral("color: #c0392b"));
    errorLabel->hide();
    m_layout = new QVBoxLayout(this);
    m_layout->addWidget(m_controls);
    m_layout->addWidget(errorLabel);
    m_layout->addStretch(1);
    if (const QPointer<DefaultSettings> settings = DefaultSettings::instance()) {
        connect(settings, &DefaultSettings::loaded, this, &OptionsPage::onLoaded);
        connect(settings, &DefaultSettings::error, this, &OptionsPage::onError);
    }
}

void OptionsPage::loadSettings()
{
    if (const QPointer<DefaultSettings> settings = DefaultSettings::instance()) {
        waiting = true;
        m_controls->setEnabled(false);
        settings->load();
    }
}

void OptionsPage::onLoaded()
{
    filling = true;
    for (const auto& fill : qAsConst(fillers))
        fill();
    filling = false;
    if (waiting || !m_controls->isEnabled()) {
        waiting = false;
        errorLabel->hide();
        m_controls->setEnabled(true);
        Q_EMIT loaded();
    }
}

void OptionsPage::onError(const QString& text)
{
    errorLabel->setText(tr("The settings could not be read or saved: %1").arg(text));
    errorLabel->show();
    Q_EMIT error(text);
}

void OptionsPage::store(const QString& key, const QString& value)
{
    if (filling || !m_controls->isEnabled())
        return;
    if (const QPointer<DefaultSettings> settings = DefaultSettings::instance())
        settings->setValue(key, value);
}

QFormLayout* OptionsPage::addGroup(const QString& title)
{
    auto* group = new QGroupBox(title, m_controls);
    auto* form = new QFormLayout(group);
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    m_controlsLayout->addWidget(group);
    return form;
}

void OptionsPage::addNote(QFormLayout* form, const QString& text)
{
    auto* note = new QLabel(text, m_controls);
    note->setWordWrap(true);
    note->setEnabled(false);
    form->addRow(note);
}

QSpinBox* OptionsPage::addNumber(QFormLayout* form, const QString& label, const QString& key, int minimum, int maximum,
    const QString& suffix, qint64 scale)
{
    auto* spin = new QSpinBox(m_controls);
    spin->setRange(minimum, maximum);
    spin->setSuffix(suffix);
    // One save when the user is done typing, not one per key.
    spin->setKeyboardTracking(false);
    form->addRow(label, spin);
    // Integer division shows a stored value that is no whole number of shown units rounded down.
    fillers << [spin, key, scale] { spin->setValue(int(stored(key).toLongLong() / scale)); };
    connect(spin, qOverload<int>(&QSpinBox::valueChanged), this,
        [this, key, scale](int value) { store(key, QString::number(qint64(value) * scale)); });
    return spin;
}

QCheckBox* OptionsPage::addFlag(QFormLayout* form, const QString& text, const QString& key, bool unset)
{
    auto* check = new QCheckBox(text, m_controls);
    form->addRow(check);
    fillers << [check, key, unset] {
        const QString value = stored(key);
        check->setChecked(value.isEmpty() ? unset : value == QLatin1String("true"));
    };
    connect(check, &QCheckBox::toggled, this, [this, key](bool on) { store(key, flag(on)); });
    return check;
}

QSpinBox* OptionsPage::addOptionalNumber(
    QFormLayout* form, const QString& text, const QString& key, int minimum, int maximum, const QString& suffix)
{
    auto* row = new QWidget(m_controls);
    auto* check = new QCheckBox(text, row);
    auto* spin = new QSpinBox(row);
    spin->setRange(minimum, maximum);
    spin->setSuffix(suffix);
    spin->setKeyboardTracking(false);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(check);
    layout->addWidget(spin);
    layout->addStretch(1);
    form->addRow(row);
    fillers << [check, spin, key] {
        const int value = stored(key).toInt();
        check->setChecked(value > 0);
        spin->setEnabled(value > 0);
        if (value > 0)
            spin->setValue(value);
    };
    auto save = [this, check, spin, key] {
        spin->setEnabled(check->isChecked());
        store(key, check->isChecked() ? QString::number(spin->value()) : QString());
    };
    connect(check, &QCheckBox::toggled, this, save);
    connect(spin, qOverload<int>(&QSpinBox::valueChanged), this, save);
    return spin;
}

QLineEdit* OptionsPage::addText(QFormLayout* form, const QString& label, const QString& key)
{
    auto* edit = new QLineEdit(m_controls);
    edit->setMinimumWidth(220);
    form->addRow(label, edit);
    fillers << [edit, key] { edit->setText(stored(key)); };
    connect(edit, &QLineEdit::editingFinished, this, [this, edit, key] {
        if (edit->isModified()) {
            edit->setModified(false);
            store(key, edit->text().trimmed());
        }
    });
    return edit;
}

} // namespace TWB::GUI::Settings
