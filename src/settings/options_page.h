#pragma once

#include "twbconsole_export.h"

#include <QList>
#include <QWidget>

#include <functional>

class QCheckBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QSpinBox;
class QVBoxLayout;

namespace TWB::GUI::Settings {

/// Base of the settings pages whose controls each stand for one product option. The values come from
/// `TWB::DefaultSettings` at every `loadSettings`, and a control's change is saved at once through it;
/// the controls stay disabled until the service's values are shown, so that their own defaults never
/// overwrite the stored ones.
class TWBCONSOLE_EXPORT OptionsPage : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(OptionsPage)
public:
    explicit OptionsPage(const QString& title, QWidget* parent = nullptr);

public Q_SLOTS:
    virtual void loadSettings();

Q_SIGNALS:
    /// The service's values are shown.
    void loaded();
    void error(const QString& text);

protected:
    /// A spin box for a whole number stored as text; `scale` is how many stored units one shown unit is.
    /// A missing or unreadable value shows the minimum.
    QSpinBox* addNumber(QFormLayout* form, const QString& label, const QString& key, int minimum, int maximum,
        const QString& suffix, qint64 scale = 1);
    /// A check box that stores "true" or "false"; `unset` is what a missing value means to the service.
    QCheckBox* addFlag(QFormLayout* form, const QString& text, const QString& key, bool unset);
    /// A limit that may be off: the check box clears the option, the spin box sets it.
    QSpinBox* addOptionalNumber(
        QFormLayout* form, const QString& text, const QString& key, int minimum, int maximum, const QString& suffix);
    QLineEdit* addText(QFormLayout* form, const QString& label, const QString& key);
    /// A titled group of this page with a form inside.
    QFormLayout* addGroup(const QString& title);
    /// A greyed line under a control that says what the option does.
    void addNote(QFormLayout* form, const QString& text);

    QVBoxLayout* pageLayout() const { return m_layout; }
    QWidget* controls() const { return m_controls; }

private:
    void onLoaded();
    void onError(const QString& text);
    void store(const QString& key, const QString& value);

    QVBoxLayout* m_layout; // owned by parent-child
    QVBoxLayout* m_controlsLayout; // owned by parent-child
    QWidget* m_controls; // owned by parent-child
    QLabel* errorLabel; // owned by parent-child
    /// Puts the stored values into the controls, one per control.
    QList<std::function<void()>> fillers;
    /// Set while the stored values are put into the controls, so that they are not sent straight back.
    bool filling = false;
    bool waiting = false;
};

} // namespace TWB::GUI::Settings
