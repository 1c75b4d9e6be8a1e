#include "app/console_window.h"

#include "frame/application.h"
#include "frame/application_event_controller.h"
#include "platform/communication/connection_manager.h"
#include "platform/defines/path.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <QVBoxLayout>

namespace TWB::Host {

using TWB::Common::Communication::ConnectionManager;

ConsoleWindow::ConsoleWindow(
    TWB::GUI::ApplicationEventController& controller, ServiceLauncher& launcher, QWidget* parent)
    : QMainWindow(parent)
    , m_launcher(launcher)
{
    setWindowTitle(TWB::GUI::Application::applicationName());
    resize(900, 560);

    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(32, 28, 32, 28);
    layout->setSpacing(12);

    auto* heading = new QLabel(TWB::GUI::Application::applicationName(), central);
    QFont headingFont = heading->font();
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.6);
    headingFont.setBold(true);
    heading->setFont(headingFont);
    layout->addWidget(heading);

    auto* stateRow = new QHBoxLayout;
    stateRow->setSpacing(10);
    m_stateDot = new QLabel(central);
    m_stateDot->setFixedSize(14, 14);
    m_stateTitle = new QLabel(central);
    QFont titleFont = m_stateTitle->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.15);
    m_stateTitle->setFont(titleFont);
    stateRow->addWidget(m_stateDot);
    stateRow->addWidget(m_stateTitle, 1);
    layout->addLayout(stateRow);

    m_stateDetail = new QLabel(central);
    m_stateDetail->setWordWrap(true);
    m_stateDetail->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_stateDetail->setContentsMargins(24, 0, 0, 0);
    layout->addWidget(m_stateDetail);

    m_retry = new QPushButton(tr("Connect now"), central);
    m_retry->setVisible(false);
    auto* retryRow = new QHBoxLayout;
    retryRow->setContentsMargins(24, 0, 0, 0);
    retryRow->addWidget(m_retry);
    retryRow->addStretch(1);
    layout->addLayout(retryRow);
    layout->addStretch(1);
    setCentralWidget(central);

    m_statusText = new QLabel(this);
    statusBar()->addWidget(m_statusText, 1);
    statusBar()->addPermanentWidget(new QLabel(tr("Version %1").arg(TWB::GUI::Application::buildVersion()), this));

    connect(m_retry, &QPushButton::clicked, this, [] {
        if (auto connection = ConnectionManager::instance())
            connection->connectNow();
    });
    connect(
        &controller, &TWB::GUI::ApplicationEventController::localManagmentConnected, this, &ConsoleWindow::onConnected);
    connect(&controller, &TWB::GUI::ApplicationEventController::localManagmentDisconnected, this,
        &ConsoleWindow::onDisconnected);
    connect(&launcher, &ServiceLauncher::stateChanged, this, &ConsoleWindow::onLauncherState);
    onLauncherState(launcher.state());
}

QString ConsoleWindow::connectionText() const
{
    return m_statusText->text();
}

void ConsoleWindow::onConnected()
{
    showState(tr("Connected"),
        tr("The local backup service answers on %1.").arg(SHARED::defines::Path::serviceSocket()),
        QColor(0x2e, 0x9e, 0x4f), false);
}

void ConsoleWindow::onDisconnected()
{
    // While the launcher is starting the service, that is the better news to show.
    if (m_launcher.state() == ServiceLauncher::State::Starting || m_launcher.state() == ServiceLauncher::State::Failed)
        return;
    showState(tr("Disconnected"),
        tr("The local backup service does not answer on %1. The console keeps trying to reach it.")
            .arg(SHARED::defines::Path::serviceSocket()),
        QColor(0xc6, 0x28, 0x28), true);
}

void ConsoleWindow::onLauncherState(ServiceLauncher::State state)
{
    switch (state) {
    case ServiceLauncher::State::Connecting:
        showState(tr("Connecting"), tr("Looking for the local backup service…"), QColor(0x9e, 0x9e, 0x9e), false);
        break;
    case ServiceLauncher::State::Starting:
        showState(tr("Starting the service"), tr("No local backup service answered, so the console started one."),
            QColor(0xf2, 0xa9, 0x00), false);
        break;
    case ServiceLauncher::State::Connected:
        onConnected();
        break;
    case ServiceLauncher::State::Disconnected:
        onDisconnected();
        break;
    case ServiceLauncher::State::Failed:
        showState(tr("Disconnected"), m_launcher.lastError(), QColor(0xc6, 0x28, 0x28), true);
        break;
    }
}

void ConsoleWindow::showState(const QString& text, const QString& detail, const QColor& colour, bool canRetry)
{
    m_stateDot->setStyleSheet(QStringLiteral("background: %1; border-radius: 7px;").arg(colour.name()));
    m_stateTitle->setText(text);
    m_stateDetail->setText(detail);
    m_retry->setVisible(canRetry);
    m_statusText->setText(text);
}

} // namespace TWB::Host
