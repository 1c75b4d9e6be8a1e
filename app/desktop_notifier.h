#pragma once

#include <QJsonDocument>
#include <QObject>
#include <QString>
#include <QUuid>

class QDBusConnection;

namespace TWB::Host {

/// Posts a desktop notice (org.freedesktop.Notifications on the session bus) when a run fails, is
/// interrupted or ends with warnings, and when a scheduled run missed its time and started late.
/// The service's "DesktopNotifications" setting turns them off; it is asked at each event, so a
/// change counts at once. Where no notification service answers, nothing is shown and nothing stops.
class DesktopNotifier final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(DesktopNotifier)
public:
    explicit DesktopNotifier(QObject* parent = nullptr);

    /// Sends one notice on the session bus without waiting for it.
    void post(const QString& summary, const QString& body);

Q_SIGNALS:
    /// The notification service took the notice.
    void posted(const QString& summary);
    /// No notification service took it; `reason` says why.
    void notPosted(const QString& summary, const QString& reason);

private:
    enum class Event { Failed, Warning, Interrupted, Late };

    void onNotification(const QJsonDocument& document);
    void ask(const QUuid& plan, Event event, const QString& detail);
    void onSettingsResult();
    void onPlanResult();
};

} // namespace TWB::Host
