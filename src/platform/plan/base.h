#pragma once

#include "platform/plan/notification.h"
#include "platform/plan/schedule.h"
#include "platform/twbplatform_export.h"

#include <QString>
#include <QUuid>

class QDomElement;
class QXmlStreamWriter;

namespace TWB::Info::Plan {

namespace Xml {
class Reader;
class Writer;
} // namespace Xml

/// A plan: what the service stores and runs. The branches are told apart with dynamic_cast.
class TWBPLATFORM_EXPORT Base
{
public:
    /// The plan kind, in the "SubType" column of the plan table.
    enum Kind : int { KindBackup = 1, KindRestore = 2 };
    /// The plan type, in the "Type" column of the plan table.
    enum PlanType : int { TypeFile = 0, TypeDiskImage = 1, TypeSystemFullFile = 2, TypeUnknown = 3 };

    virtual ~Base();

    /// The whole plan as an XML document, as "PlanUpdate" carries it.
    virtual QString toXml() const;

    QUuid id() const { return m_id; }
    void setId(const QUuid& id) { m_id = id; }
    QString name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }
    /// The storage account; null when none is chosen.
    QUuid storage() const { return m_storage; }
    void setStorage(const QUuid& storage) { m_storage = storage; }
    /// 1 backup, 2 restore.
    virtual int subtype() const = 0;
    /// 0 file, 1 disk image, 2 system full file, 3 unknown.
    int type() const { return m_type; }
    /// File plans are file (0) or system full file (2); disk image plans stay 1.
    void setType(int type);
    Schedule& schedule() { return m_schedule; }
    const Schedule& schedule() const { return m_schedule; }
    Notification& notification() { return m_notification; }
    const Notification& notification() const { return m_notification; }
    bool runMuissedPlan() const { return m_runMissedPlan; }
    void setRunMissedPlan(bool run) { m_runMissedPlan = run; }
    bool syncBeforeRun() const { return m_syncBeforeRun; }
    void setSyncBeforeRun(bool sync) { m_syncBeforeRun = sync; }

    /// The class name the document records, so that the factory builds the same class again.
    virtual const char* className() const = 0;

    /// Equal in every accessor, and of the same class.
    virtual bool equals(const Base& other) const;
    bool operator==(const Base& other) const { return equals(other); }
    bool operator!=(const Base& other) const { return !equals(other); }

    /// Reads the document's content into this object; false with a reason when it is malformed.
    bool readXml(const QDomElement& root, QString* error);

protected:
    explicit Base(int type);
    Base(const Base&) = delete;
    Base& operator=(const Base&) = delete;

    /// Whether a type number fits this class.
    virtual bool acceptsType(int type) const = 0;
    virtual void writeFields(Xml::Writer& writer) const;
    virtual void readFields(Xml::Reader& reader, const QDomElement& root);

private:
    QUuid m_id;
    QString m_name;
    QUuid m_storage;
    int m_type;
    Schedule m_schedule;
    Notification m_notification;
    bool m_runMissedPlan = false;
    bool m_syncBeforeRun = false;
};

} // namespace TWB::Info::Plan
