#include "platform/plan/base.h"

#include "platform/plan/plan_xml_p.h"

#include <QDomElement>

namespace TWB::Info::Plan {

Base::Base(int type)
    : m_type(type)
{ }

Base::~Base() = default;

void Base::setType(int type)
{
    if (acceptsType(type))
        m_type = type;
}

QString Base::toXml() const
{
    QString text;
    QXmlStreamWriter stream(&text);
    stream.setAutoFormatting(true);
    stream.setAutoFormattingIndent(2);
    stream.writeStartDocument();
    stream.writeStartElement(QLatin1String(Xml::rootElement));
    stream.writeAttribute(QStringLiteral("format"), QString::number(Xml::formatVersion));
    stream.writeAttribute(QStringLiteral("class"), QLatin1String(className()));
    Xml::Writer writer(stream);
    writeFields(writer);
    stream.writeEndElement();
    stream.writeEndDocument();
    return text;
}

bool Base::equals(const Base& o) const
{
    return qstrcmp(className(), o.className()) == 0 && m_id == o.m_id && m_name == o.m_name && m_storage == o.m_storage
        && m_type == o.m_type && m_schedule == o.m_schedule && m_notification == o.m_notification
        && m_runMissedPlan == o.m_runMissedPlan && m_syncBeforeRun == o.m_syncBeforeRun;
}

bool Base::readXml(const QDomElement& root, QString* error)
{
    Xml::Reader reader;
    readFields(reader, root);
    if (!reader.ok() && error)
        *error = reader.error();
    return reader.ok();
}

void Base::writeFields(Xml::Writer& w) const
{
    w.uuid("Id", m_id);
    w.text("Name", m_name);
    w.uuid("Storage", m_storage);
    w.number("Type", m_type);
    w.boolean("RunMissedPlan", m_runMissedPlan);
    w.boolean("SyncBeforeRun", m_syncBeforeRun);
    w.schedule("Schedule", m_schedule);
    w.notification(m_notification);
}

void Base::readFields(Xml::Reader& r, const QDomElement& root)
{
    m_id = r.uuid(root, "Id");
    m_name = r.text(root, "Name");
    m_storage = r.uuid(root, "Storage");
    const int type = int(r.number(root, "Type", m_type));
    if (!acceptsType(type))
        r.fail(QStringLiteral("Type %1 does not fit a %2 plan").arg(type).arg(QLatin1String(className())));
    else
        m_type = type;
    m_runMissedPlan = r.boolean(root, "RunMissedPlan", m_runMissedPlan);
    m_syncBeforeRun = r.boolean(root, "SyncBeforeRun", m_syncBeforeRun);
    r.schedule(root, "Schedule", m_schedule);
    r.notification(root, m_notification);
}

} // namespace TWB::Info::Plan
