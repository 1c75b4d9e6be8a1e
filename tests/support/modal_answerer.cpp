#include "support/modal_answerer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QtTest>

namespace TWB::Test {

namespace {
const int pollMs = 20;
}

ModalAnswerer::ModalAnswerer(QMessageBox::StandardButton button, int timeoutMs)
    : m_button(button)
    , m_remainingPolls(timeoutMs / pollMs)
{
    connect(&m_timer, &QTimer::timeout, this, &ModalAnswerer::poll);
    m_timer.start(pollMs);
}

ModalAnswerer::ModalAnswerer(const QString& buttonText, int timeoutMs)
    : m_buttonText(buttonText)
    , m_remainingPolls(timeoutMs / pollMs)
{
    connect(&m_timer, &QTimer::timeout, this, &ModalAnswerer::poll);
    m_timer.start(pollMs);
}

bool ModalAnswerer::wait(int timeoutMs)
{
    return QTest::qWaitFor([this] { return m_answered; }, timeoutMs);
}

void ModalAnswerer::poll()
{
    QWidget* modal = QApplication::activeModalWidget();
    if (--m_remainingPolls < 0) {
        m_timer.stop();
        // Nothing to press in time: close whatever is open rather than leave the test hanging.
        if (modal) {
            if (auto* dialog = qobject_cast<QDialog*>(modal))
                dialog->reject();
            else
                modal->close();
        }
        return;
    }
    if (!modal || !modal->isVisible())
        return;
    m_title = modal->windowTitle();
    m_flags = modal->windowFlags();
    if (auto* box = qobject_cast<QMessageBox*>(modal)) {
        m_text = box->text();
        m_informativeText = box->informativeText();
        m_icon = box->icon();
        if (m_button != QMessageBox::NoButton) {
            if (QAbstractButton* button = box->button(m_button)) {
                m_timer.stop();
                m_answered = true;
                button->click();
                return;
            }
        }
    }
    if (m_buttonText.isEmpty())
        return;
    // The button may appear later, as the dialog's state changes: keep looking until it shows.
    const auto buttons = modal->findChildren<QAbstractButton*>();
    for (QAbstractButton* button : buttons) {
        if (button->isVisible() && button->isEnabled() && button->text().remove(QLatin1Char('&')) == m_buttonText) {
            m_timer.stop();
            m_answered = true;
            button->click();
            return;
        }
    }
}

} // namespace TWB::Test
