#pragma once

#include "twbconsole_export.h"

#include <QJsonDocument>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QUuid>
#include <QVariant>

namespace TWB::GUI {

/// The newest progress message of each running plan, for the host's views. The messages are kept whole
/// and passed on unread; the plan table keeps only a plan's run status and its last run.
class TWBCONSOLE_EXPORT PlanStatusList final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanStatusList)
public:
    /// The one list of the application, built on first use; null once it went at aboutToQuit().
    static QPointer<PlanStatusList> instance();

    explicit PlanStatusList(QObject* parent = nullptr);
    ~PlanStatusList() override;

    /// A copy of the plan's last progress message, or an empty map.
    QMap<QString, QVariant> status(const QUuid& id) const { return statuses.value(id); }
    /// Forgets the plan's message; an unknown plan changes nothing.
    void removeStatus(const QUuid& id) { statuses.remove(id); }

Q_SIGNALS:
    /// The new progress message of a plan.
    void updated(const QUuid& id, const QMap<QString, QVariant>& message);

public Q_SLOTS:
    void onNotification(const QJsonDocument& document);

private:
    QMap<QUuid, QMap<QString, QVariant>> statuses;
};

} // namespace TWB::GUI
