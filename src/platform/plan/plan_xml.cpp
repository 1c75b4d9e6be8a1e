#include "platform/plan/plan_xml_p.h"

#include "platform/plan/disk_info.h"
#include "platform/plan/notification.h"
#include "platform/plan/restore_disk_configuration.h"
#include "platform/plan/schedule.h"

namespace TWB::Info::Plan::Xml {

namespace {

const QLatin1String encodingAttribute("encoding");
const QLatin1String utf16Base64("utf16-base64");

// Whether XML 1.0 carries the text unchanged: no control characters (parsers fold line ends),
// no non-characters or lone surrogates, and not blanks only (parsers drop such text nodes).
bool isPlainXmlText(const QString& value)
{
    if (!value.isEmpty() && value.trimmed().isEmpty())
        return false;
    const int size = value.size();
    for (int i = 0; i < size; ++i) {
        const ushort c = value.at(i).unicode();
        if (c < 0x20 || c == 0xFFFE || c == 0xFFFF)
            return false;
        if (QChar::isHighSurrogate(c)) {
            if (i + 1 >= size || !QChar::isLowSurrogate(value.at(i + 1).unicode()))
                return false;
            ++i;
        } else if (QChar::isLowSurrogate(c)) {
            return false;
        }
    }
    return true;
}

} // namespace

void Writer::textElement(const char* name, const QString& value)
{
    m_stream.writeStartElement(QLatin1String(name));
    if (isPlainXmlText(value)) {
        m_stream.writeCharacters(value);
    } else {
        m_stream.writeAttribute(encodingAttribute, utf16Base64);
        QByteArray units;
        units.reserve(value.size() * 2);
        for (const QChar c : value) {
            units.append(char(c.unicode() & 0xFF));
            units.append(char(c.unicode() >> 8));
        }
        m_stream.writeCharacters(QString::fromLatin1(units.toBase64()));
    }
    m_stream.writeEndElement();
}

void Writer::text(const char* name, const QString& value)
{
    textElement(name, value);
}

void Writer::boolean(const char* name, bool value)
{
    m_stream.writeTextElement(QLatin1String(name), value ? QStringLiteral("true") : QStringLiteral("false"));
}

void Writer::number(const char* name, long long value)
{
    m_stream.writeTextElement(QLatin1String(name), QString::number(value));
}

void Writer::unsignedNumber(const char* name, unsigned long long value)
{
    m_stream.writeTextElement(QLatin1String(name), QString::number(value));
}

void Writer::dateTime(const char* name, const QDateTime& value)
{
    m_stream.writeTextElement(QLatin1String(name), value.isValid() ? value.toString(Qt::ISODateWithMs) : QString());
}

void Writer::time(const char* name, const QTime& value)
{
    m_stream.writeTextElement(QLatin1String(name), value.isValid() ? value.toString(Qt::ISODateWithMs) : QString());
}

void Writer::date(const char* name, const QDate& value)
{
    m_stream.writeTextElement(QLatin1String(name), value.isValid() ? value.toString(Qt::ISODate) : QString());
}

void Writer::uuid(const char* name, const QUuid& value)
{
    m_stream.writeTextElement(QLatin1String(name), value.isNull() ? QString() : value.toString());
}

void Writer::list(const char* name, const char* itemName, const QStringList& values)
{
    begin(name);
    for (const QString& value : values)
        textElement(itemName, value);
    end();
}

void Writer::bits(const char* name, const QBitArray& value)
{
    QString text;
    text.reserve(value.size());
    for (int i = 0; i < value.size(); ++i)
        text.append(value.testBit(i) ? QLatin1Char('1') : QLatin1Char('0'));
    m_stream.writeTextElement(QLatin1String(name), text);
}

void Writer::schedule(const char* name, const Schedule& s)
{
    begin(name);
    boolean("Enabled", s.isEnable());
    number("Type", s.type());
    number("FrequencyType", s.frequencyType());
    dateTime("SpecificDate", s.specificDate());
    time("OccursAt", s.occursAt());
    boolean("DailyRecurrence", s.dailyRecurrence());
    begin("OccursEvery");
    number("Period", s.occursEvery().period);
    time("Start", s.occursEvery().start);
    time("End", s.occursEvery().end);
    end();
    bits("WeeklyDays", s.weeklyFrequency());
    begin("MonthlyByWeek");
    number("Week", s.monthlyFrequency().week);
    number("Day", s.monthlyFrequency().day);
    end();
    number("DayOfMonth", s.dayOfMonthFrequency());
    begin("MonthRepeat");
    number("Months", s.monthRepeat().months);
    date("From", s.monthRepeat().from);
    end();
    unsignedNumber("StopAfterSeconds", s.stopAfter());
    end();
}

void Writer::notification(const Notification& n)
{
    begin("Notification");
    number("Type", n.type());
    text("Subject", n.subject());
    boolean("DetailedReport", n.generateDetailedReport());
    end();
}

void Writer::diskInfo(const QSharedPointer<TWB::Info::DiskInfo>& info)
{
    if (!info)
        return;
    begin("DiskInfo");
    for (const auto& disk : info->disks) {
        begin("Disk");
        text("Id", disk.id);
        text("Model", disk.model);
        unsignedNumber("Size", disk.size);
        for (const auto& partition : disk.partitions) {
            begin("Partition");
            text("Id", partition.id);
            text("MountPoint", partition.mountPoint);
            text("FileSystem", partition.fileSystem);
            unsignedNumber("Size", partition.size);
            boolean("Selected", partition.selected);
            end();
        }
        end();
    }
    end();
}

void Writer::restoreDiskConfiguration(const QSharedPointer<TWB::Info::RestoreDiskConfiguration>& configuration)
{
    if (!configuration)
        return;
    begin("RestoreDiskConfiguration");
    text("TargetDisk", configuration->targetDisk);
    for (const auto& mapping : configuration->mappings) {
        begin("Mapping");
        text("Source", mapping.sourcePartition);
        text("Target", mapping.targetPartition);
        unsignedNumber("Size", mapping.size);
        end();
    }
    end();
}

QString Reader::decode(const QDomElement& element)
{
    const QString raw = element.text();
    if (!element.hasAttribute(encodingAttribute))
        return raw;
    if (element.attribute(encodingAttribute) != utf16Base64) {
        fail(QStringLiteral("%1 has an unknown encoding").arg(element.tagName()));
        return QString();
    }
    const auto decoded = QByteArray::fromBase64Encoding(raw.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded || decoded.decoded.size() % 2 != 0) {
        fail(QStringLiteral("%1 is not valid base64 text").arg(element.tagName()));
        return QString();
    }
    QString value;
    value.reserve(decoded.decoded.size() / 2);
    for (int i = 0; i < decoded.decoded.size(); i += 2)
        value.append(QChar(ushort(uchar(decoded.decoded.at(i)) | (uchar(decoded.decoded.at(i + 1)) << 8))));
    return value;
}

QString Reader::text(const QDomElement& parent, const char* name, const QString& fallback)
{
    const QDomElement e = child(parent, name);
    return e.isNull() ? fallback : decode(e);
}

bool Reader::boolean(const QDomElement& parent, const char* name, bool fallback)
{
    const QDomElement e = child(parent, name);
    if (e.isNull())
        return fallback;
    const QString value = e.text().trimmed();
    if (value == QLatin1String("true"))
        return true;
    if (value == QLatin1String("false"))
        return false;
    fail(QStringLiteral("%1 is not true or false").arg(QLatin1String(name)));
    return fallback;
}

long long Reader::number(const QDomElement& parent, const char* name, long long fallback, long long min, long long max)
{
    const QDomElement e = child(parent, name);
    if (e.isNull())
        return fallback;
    bool ok = false;
    const long long value = e.text().trimmed().toLongLong(&ok);
    if (!ok || value < min || value > max) {
        fail(QStringLiteral("%1 is not a number from %2 to %3").arg(QLatin1String(name)).arg(min).arg(max));
        return fallback;
    }
    return value;
}

unsigned long long Reader::unsignedNumber(const QDomElement& parent, const char* name, unsigned long long fallback)
{
    const QDomElement e = child(parent, name);
    if (e.isNull())
        return fallback;
    bool ok = false;
    const QString text = e.text().trimmed();
    const unsigned long long value = text.toULongLong(&ok);
    // toULongLong takes a leading minus sign and wraps; a size is never negative.
    if (!ok || text.startsWith(QLatin1Char('-'))) {
        fail(QStringLiteral("%1 is not an unsigned number").arg(QLatin1String(name)));
        return fallback;
    }
    return value;
}

QDateTime Reader::dateTime(const QDomElement& parent, const char* name)
{
    const QDomElement e = child(parent, name);
    const QString text = e.isNull() ? QString() : e.text().trimmed();
    if (text.isEmpty())
        return QDateTime();
    const QDateTime value = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!value.isValid())
        fail(QStringLiteral("%1 is not a date and time").arg(QLatin1String(name)));
    return value;
}

QTime Reader::time(const QDomElement& parent, const char* name, const QTime& fallback)
{
    const QDomElement e = child(parent, name);
    if (e.isNull())
        return fallback;
    const QString text = e.text().trimmed();
    if (text.isEmpty())
        return QTime();
    const QTime value = QTime::fromString(text, Qt::ISODateWithMs);
    if (!value.isValid())
        fail(QStringLiteral("%1 is not a time of day").arg(QLatin1String(name)));
    return value;
}

QDate Reader::date(const QDomElement& parent, const char* name)
{
    const QDomElement e = child(parent, name);
    const QString text = e.isNull() ? QString() : e.text().trimmed();
    if (text.isEmpty())
        return QDate();
    const QDate value = QDate::fromString(text, Qt::ISODate);
    if (!value.isValid())
        fail(QStringLiteral("%1 is not a date").arg(QLatin1String(name)));
    return value;
}

QUuid Reader::uuid(const QDomElement& parent, const char* name)
{
    const QDomElement e = child(parent, name);
    const QString text = e.isNull() ? QString() : e.text().trimmed();
    if (text.isEmpty())
        return QUuid();
    const QUuid value(text);
    if (value.isNull())
        fail(QStringLiteral("%1 is not an identifier").arg(QLatin1String(name)));
    return value;
}

QStringList Reader::list(const QDomElement& parent, const char* name, const char* itemName)
{
    QStringList values;
    const QDomElement e = child(parent, name);
    for (QDomElement item = e.firstChildElement(QLatin1String(itemName)); !item.isNull();
         item = item.nextSiblingElement(QLatin1String(itemName)))
        values << decode(item);
    return values;
}

QBitArray Reader::bits(const QDomElement& parent, const char* name, const QBitArray& fallback)
{
    const QDomElement e = child(parent, name);
    if (e.isNull())
        return fallback;
    const QString text = e.text().trimmed();
    QBitArray value(text.size());
    for (int i = 0; i < text.size(); ++i) {
        if (text.at(i) == QLatin1Char('1')) {
            value.setBit(i);
        } else if (text.at(i) != QLatin1Char('0')) {
            fail(QStringLiteral("%1 holds something other than 0 and 1").arg(QLatin1String(name)));
            return fallback;
        }
    }
    return value;
}

void Reader::schedule(const QDomElement& parent, const char* name, Schedule& s)
{
    const QDomElement e = child(parent, name);
    if (e.isNull())
        return;
    s.setEnable(boolean(e, "Enabled", s.isEnable()));
    s.setType(Schedule::Type(number(e, "Type", s.type())));
    s.setFrequencyType(Schedule::FrequencyType(number(e, "FrequencyType", s.frequencyType())));
    s.setSpecificDate(dateTime(e, "SpecificDate"));
    s.setOccursAt(time(e, "OccursAt", s.occursAt()));
    s.setDailyRecurrence(boolean(e, "DailyRecurrence", s.dailyRecurrence()));
    const QDomElement every = child(e, "OccursEvery");
    if (!every.isNull()) {
        const Schedule::OccursEvery old = s.occursEvery();
        s.setOccursEvery(
            int(number(every, "Period", old.period)), time(every, "Start", old.start), time(every, "End", old.end));
    }
    s.setWeeklyFrequency(bits(e, "WeeklyDays", s.weeklyFrequency()));
    const QDomElement monthly = child(e, "MonthlyByWeek");
    if (!monthly.isNull()) {
        const Schedule::MonthlyFrequency old = s.monthlyFrequency();
        s.setMonthlyFrequency(
            Schedule::WeekNumber(number(monthly, "Week", old.week)), int(number(monthly, "Day", old.day)));
    }
    s.setDayOfMonthFrequency(int(number(e, "DayOfMonth", s.dayOfMonthFrequency())));
    const QDomElement repeat = child(e, "MonthRepeat");
    if (!repeat.isNull())
        s.setMonthRepeat(int(number(repeat, "Months", s.monthRepeat().months)), date(repeat, "From"));
    s.setStopAfter(unsignedNumber(e, "StopAfterSeconds", s.stopAfter()));
}

void Reader::notification(const QDomElement& parent, Notification& n)
{
    const QDomElement e = child(parent, "Notification");
    if (e.isNull())
        return;
    n.setType(Notification::Type(number(e, "Type", n.type())));
    n.setSubject(text(e, "Subject", n.subject()));
    n.setGenerateDetailedReport(boolean(e, "DetailedReport", n.generateDetailedReport()));
}

QSharedPointer<TWB::Info::DiskInfo> Reader::diskInfo(const QDomElement& parent)
{
    const QDomElement e = child(parent, "DiskInfo");
    if (e.isNull())
        return {};
    auto info = QSharedPointer<TWB::Info::DiskInfo>::create();
    for (QDomElement d = e.firstChildElement(QStringLiteral("Disk")); !d.isNull();
         d = d.nextSiblingElement(QStringLiteral("Disk"))) {
        TWB::Info::DiskInfo::Disk disk;
        disk.id = text(d, "Id");
        disk.model = text(d, "Model");
        disk.size = unsignedNumber(d, "Size", 0);
        for (QDomElement p = d.firstChildElement(QStringLiteral("Partition")); !p.isNull();
             p = p.nextSiblingElement(QStringLiteral("Partition"))) {
            TWB::Info::DiskInfo::Partition partition;
            partition.id = text(p, "Id");
            partition.mountPoint = text(p, "MountPoint");
            partition.fileSystem = text(p, "FileSystem");
            partition.size = unsignedNumber(p, "Size", 0);
            partition.selected = boolean(p, "Selected", false);
            disk.partitions << partition;
        }
        info->disks << disk;
    }
    return info;
}

QSharedPointer<TWB::Info::RestoreDiskConfiguration> Reader::restoreDiskConfiguration(const QDomElement& parent)
{
    const QDomElement e = child(parent, "RestoreDiskConfiguration");
    if (e.isNull())
        return {};
    auto configuration = QSharedPointer<TWB::Info::RestoreDiskConfiguration>::create();
    configuration->targetDisk = text(e, "TargetDisk");
    for (QDomElement m = e.firstChildElement(QStringLiteral("Mapping")); !m.isNull();
         m = m.nextSiblingElement(QStringLiteral("Mapping"))) {
        TWB::Info::RestoreDiskConfiguration::Mapping mapping;
        mapping.sourcePartition = text(m, "Source");
        mapping.targetPartition = text(m, "Target");
        mapping.size = unsignedNumber(m, "Size", 0);
        configuration->mappings << mapping;
    }
    return configuration;
}

} // namespace TWB::Info::Plan::Xml
