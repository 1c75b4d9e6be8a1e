#pragma once

#include "twbconsole_export.h"

#include <QDomDocument>
#include <QJsonDocument>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QUuid>

namespace TWB::Info::Plan {
class Base;
}

namespace TWB::GUI {

/// Cache of plan documents and of the plan objects built from them. Documents are fetched with
/// "PlanGetXML" when the host asks or when the service reports a change, so a cached plan never
/// goes stale.
class TWBCONSOLE_EXPORT PlanXmlList final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanXmlList)
public:
    static QPointer<PlanXmlList> instance();
    ~PlanXmlList() override;

    /// Fetches the plan's document. False when the request could not be sent.
    bool getPlan(const QUuid& id);
    bool containts(const QUuid& id) const { return documents.contains(id); }
    /// A copy of the plan's document, or a null document.
    QDomDocument planXml(const QUuid& id) const { return documents.value(id); }
    /// The plan object, built on first use and owned by this list; null without a usable document.
    /// Valid until the plan is updated or removed.
    TWB::Info::Plan::Base* plan(const QUuid& id);

    QUuid lastCreatedPlan() const { return m_lastCreatedPlan; }
    void setLastCreatedPlan(const QUuid& id) { m_lastCreatedPlan = id; }

Q_SIGNALS:
    void beginLoad(const QUuid& id);
    void complite(const QUuid& id);
    void update(const QUuid& id);
    void error(const QString& text);

public Q_SLOTS:
    void onCommandResult();
    void onNotification(const QJsonDocument& document);

private:
    PlanXmlList();

    void forget(const QUuid& id);

    QMap<QUuid, QDomDocument> documents;
    QMap<QUuid, TWB::Info::Plan::Base*> plans; // owned
    QUuid m_lastCreatedPlan;
};

} // namespace TWB::GUI
