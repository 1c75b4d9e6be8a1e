#pragma once

// The XML form of plan documents, shared by the plan classes. Not installed.

#include <QBitArray>
#include <QDate>
#include <QDateTime>
#include <QDomElement>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QTime>
#include <QUuid>
#include <QXmlStreamWriter>

#include <limits>

namespace TWB::Info {
class DiskInfo;
class RestoreDiskConfiguration;
} // namespace TWB::Info

namespace TWB::Info::Plan {
class Notification;
class Schedule;
} // namespace TWB::Info::Plan

namespace TWB::Info::Plan::Xml {

inline constexpr int formatVersion = 1;
inline constexpr char rootElement[] = "Plan";

/// Writes elements in one fixed form: booleans as true/false, times in ISO 8601, identifiers with
/// braces, and texts that XML cannot carry as they are (control characters, lone surrogates,
/// blanks only) as base64 of their UTF-16 code units.
class Writer final
{
public:
    explicit Writer(QXmlStreamWriter& stream)
        : m_stream(stream)
    { }

    void begin(const char* name) { m_stream.writeStartElement(QLatin1String(name)); }
    void end() { m_stream.writeEndElement(); }
    void text(const char* name, const QString& value);
    void boolean(const char* name, bool value);
    void number(const char* name, long long value);
    void unsignedNumber(const char* name, unsigned long long value);
    void dateTime(const char* name, const QDateTime& value);
    void time(const char* name, const QTime& value);
    void date(const char* name, const QDate& value);
    void uuid(const char* name, const QUuid& value);
    void list(const char* name, const char* itemName, const QStringList& values);
    void bits(const char* name, const QBitArray& value);

    void schedule(const char* name, const Schedule& schedule);
    void notification(const Notification& notification);
    void diskInfo(const QSharedPointer<TWB::Info::DiskInfo>& info);
    void restoreDiskConfiguration(const QSharedPointer<TWB::Info::RestoreDiskConfiguration>& configuration);

private:
    void textElement(const char* name, const QString& value);

    QXmlStreamWriter& m_stream;
};

/// Reads what Writer wrote. A missing element leaves the default in place, so that older
/// documents still load; a malformed value marks the whole document as refused.
class Reader final
{
public:
    bool ok() const { return m_error.isEmpty(); }
    QString error() const { return m_error; }
    void fail(const QString& why)
    {
        if (m_error.isEmpty())
            m_error = why;
    }

    static QDomElement child(const QDomElement& parent, const char* name)
    {
        return parent.firstChildElement(QLatin1String(name));
    }

    QString text(const QDomElement& parent, const char* name, const QString& fallback = QString());
    bool boolean(const QDomElement& parent, const char* name, bool fallback);
    long long number(const QDomElement& parent, const char* name, long long fallback,
        long long min = std::numeric_limits<int>::min(), long long max = std::numeric_limits<int>::max());
    unsigned long long unsignedNumber(const QDomElement& parent, const char* name, unsigned long long fallback);
    QDateTime dateTime(const QDomElement& parent, const char* name);
    QTime time(const QDomElement& parent, const char* name, const QTime& fallback);
    QDate date(const QDomElement& parent, const char* name);
    QUuid uuid(const QDomElement& parent, const char* name);
    QStringList list(const QDomElement& parent, const char* name, const char* itemName);
    QBitArray bits(const QDomElement& parent, const char* name, const QBitArray& fallback);

    void schedule(const QDomElement& parent, const char* name, Schedule& schedule);
    void notification(const QDomElement& parent, Notification& notification);
    QSharedPointer<TWB::Info::DiskInfo> diskInfo(const QDomElement& parent);
    QSharedPointer<TWB::Info::RestoreDiskConfiguration> restoreDiskConfiguration(const QDomElement& parent);

private:
    QString decode(const QDomElement& element);

    QString m_error;
};

} // namespace TWB::Info::Plan::Xml
