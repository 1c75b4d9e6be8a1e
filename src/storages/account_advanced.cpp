#include "storages/account_advanced.h"

#include "storages/storages_add.h"
#include "widgets/prefix_validator.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QSet>
#include <QTimer>
#include <QVBoxLayout>

namespace TWB::GUI::Settings::Account {

namespace {

// Drops the characters that may not stand in a prefix.
QString prefixFilter(QString text)
{
    static const QString refused = QStringLiteral("/\\:*?<>|");
    QString kept;
    for (QChar c : text) {
        if (!refused.contains(c))
            kept.append(c);
    }
    return kept;
}

} // namespace

Advanced::Advanced(const QString& prefix, const QStringList& known, bool disabled, QWidget* add, QWidget* parent)
    : ProcessDialog(parent)
    , form(new QFormLayout)
    , combo(new QComboBox(this))
    , buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this))
    , add(add)
{
    setWindowTitle(tr("Advanced settings"));
    auto central = new QVBoxLayout;
    combo->setEditable(true);
    combo->setDuplicatesEnabled(false);
    combo->setMinimumWidth(200);
    const QString fallback = Storages::Add::defaultPrefix();
    combo->addItems(known);
    if (combo->findText(fallback) < 0)
        combo->addItem(fallback);
    initial = prefix.isEmpty() ? fallback : prefix;
    combo->setCurrentText(initial);
    combo->setEnabled(!disabled);
    auto validator = new PrefixValidator(combo);
    combo->lineEdit()->setValidator(validator);
    connect(validator, &PrefixValidator::error, this, &Advanced::onPrefixError);
    combo->installEventFilter(this);
    combo->lineEdit()->installEventFilter(this);
    form->addRow(tr("Prefix:"), combo);
    auto note = new QLabel(
        tr("<table><tr><td><b>Note:</b> Backup prefix helps you to find data in the bucket. You "
           "can</tr></td><tr><td>store "
           "backups from different computers in the same bucket and</tr></td><tr><td>distinguish them using the backup "
           "prefix. Backup prefix is set to the</tr></td><tr><td>computer name by default.</tr></td></table>"),
        this);
    QFont small = note->font();
    small.setPointSizeF(small.pointSizeF() - 1);
    note->setFont(small);
    form->addRow(QString(), note);
    central->addLayout(form);
    setCentralLayout(central);
    addDialogButtons(buttons);
    connect(combo, &QComboBox::currentTextChanged, this, &Advanced::onTextChanged);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        disconnectLoad();
        accept();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, [this] {
        disconnectLoad();
        reject();
    });
    onTextChanged();
}

Advanced::~Advanced() = default;

QString Advanced::prefix() const
{
    return combo->currentText().trimmed();
}

QPushButton* Advanced::okButton() const
{
    return buttons->button(QDialogButtonBox::Ok);
}

void Advanced::onTextChanged()
{
    okButton()->setEnabled(!combo->currentText().trimmed().isEmpty());
}

void Advanced::onPrefixError()
{
    // A refused character is dropped where it was typed, not argued about.
    QLineEdit* line = combo->lineEdit();
    const int position = line->cursorPosition();
    const QString text = line->text();
    const QString kept = prefixFilter(text);
    line->setText(kept);
    line->setCursorPosition(qMax(0, position - (text.size() - kept.size())));
}

bool Advanced::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonPress && combo->isEnabled() && !loadRan) {
        if (auto form = qobject_cast<Storages::Add*>(add.data())) {
            loadRan = true;
            startWaitProcess(true);
            loadConnection
                = connect(form, &Storages::Add::loadPrefixiesFinished, this, &Advanced::wrapperOnLoadPrefixes);
            form->loadPrefixes();
        }
    }
    return ProcessDialog::eventFilter(watched, event);
}

void Advanced::wrapperOnLoadPrefixes(const QStringList& prefixes)
{
    loaded = prefixes;
    QTimer::singleShot(500, this, &Advanced::onLoadPrefixes);
}

void Advanced::onLoadPrefixes()
{
    QSet<QString> all(loaded.begin(), loaded.end());
    for (int i = 0; i < combo->count(); ++i)
        all.insert(combo->itemText(i));
    const QString current = combo->currentText();
    combo->clear();
    combo->addItems(QStringList(all.begin(), all.end()));
    auto form = qobject_cast<Storages::Add*>(add.data());
    const QString keep = form && !form->accountPrefix().isEmpty() ? form->accountPrefix() : current;
    combo->setCurrentText(keep.isEmpty() ? Storages::Add::defaultPrefix() : keep);
    disconnectLoad();
    startWaitProcess(false);
}

void Advanced::disconnectLoad()
{
    if (loadConnection)
        disconnect(loadConnection);
}

AdvancedStorage::AdvancedStorage(
    bool useSsl, const QString& prefix, const QStringList& known, bool disabled, QWidget* add, QWidget* parent)
    : Advanced(prefix, known, disabled, add, parent)
    , ssl(new QCheckBox(tr("Use SSL"), this))
{
    ssl->setChecked(useSsl);
    form->insertRow(0, QString(), ssl);
}

bool AdvancedStorage::useSsl() const
{
    return ssl->isChecked();
}

} // namespace TWB::GUI::Settings::Account
