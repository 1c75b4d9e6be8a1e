#pragma once

#include "app/service_launcher.h"

#include <QMainWindow>

class QLabel;
class QPushButton;

namespace TWB::GUI {
class ApplicationEventController;
}

namespace TWB::Host {

/// The console's main window.
class ConsoleWindow final : public QMainWindow
{
    Q_OBJECT
    Q_DISABLE_COPY(ConsoleWindow)
public:
    ConsoleWindow(
        TWB::GUI::ApplicationEventController& controller, ServiceLauncher& launcher, QWidget* parent = nullptr);

    /// The connection text the status bar shows.
    QString connectionText() const;

private:
    void onConnected();
    void onDisconnected();
    void onLauncherState(ServiceLauncher::State state);
    void showState(const QString& text, const QString& detail, const QColor& colour, bool canRetry);

    ServiceLauncher& m_launcher;
    QLabel* m_stateDot = nullptr;
    QLabel* m_stateTitle = nullptr;
    QLabel* m_stateDetail = nullptr;
    QPushButton* m_retry = nullptr;
    QLabel* m_statusText = nullptr;
};

} // namespace TWB::Host
