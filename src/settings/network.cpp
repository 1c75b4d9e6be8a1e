#include "settings/network.h"

#include <QFormLayout>

namespace TWB::GUI::Settings {

Network::Network(QWidget* parent)
    : OptionsPage(tr("Network"), parent)
{
    const QString speed = tr(" KByte/s");
    QFormLayout* bandwidth = addGroup(tr("Bandwidth"));
    addOptionalNumber(
        bandwidth, tr("Limit the speed with cloud storage to"), QStringLiteral("Cloud Bandwidth"), 1, 999999, speed);
    addOptionalNumber(
        bandwidth, tr("Limit the speed with local storage to"), QStringLiteral("Local Bandwidth"), 1, 999999, speed);
    addNote(bandwidth, tr("Each limit holds for uploads and downloads alike."));

    QFormLayout* connection = addGroup(tr("Connection"));
    addOptionalNumber(connection, tr("Try a failed storage request up to"), QStringLiteral("RetryAttempts"), 1,
        2147483647, tr(" times"));
    addNote(connection, tr("For S3 storages and for those reached through rclone."));
    addFlag(connection, tr("Ignore certificate errors"), QStringLiteral("IgnoreSSL"), false);
    addNote(connection, tr("Only for storages whose certificate you trust: the connection is no longer checked."));

    QFormLayout* proxy = addGroup(tr("Proxy server"));
    addText(proxy, tr("Host:"), QStringLiteral("ProxyHost"));
    addNumber(proxy, tr("Port:"), QStringLiteral("ProxyPort"), 1, 65535, QString());
    addNote(proxy, tr("Leave the host empty to connect directly. Local storages never use the proxy."));
}

} // namespace TWB::GUI::Settings
