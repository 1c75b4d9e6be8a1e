#pragma once

// Drives the next modal dialog of a given class as a user would, from inside its own event loop.

#include <QApplication>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>

namespace TWB::Test {

template <typename Dialog> class ModalDriver final
{
public:
    /// Runs `act` once on the first modal `Dialog` that shows. Make it before the code that opens it.
    explicit ModalDriver(std::function<void(Dialog*)> act)
        : m_act(std::move(act))
    {
        m_timer.setInterval(20);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            auto dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
            if (!dialog || !dialog->isVisible())
                return;
            m_timer.stop();
            m_ran = true;
            m_act(dialog);
        });
        m_timer.start();
    }
    bool ran() const { return m_ran; }

private:
    std::function<void(Dialog*)> m_act;
    QTimer m_timer;
    bool m_ran = false;
};

} // namespace TWB::Test
