#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace TWB::Service {

/// JSON text written straight into a buffer, for replies of thousands of objects: building them as
/// QJsonObjects and then serialising took longer than everything else such a command does.
class JsonWriter final
{
public:
    explicit JsonWriter(QByteArray& out)
        : m_out(out)
    { }

    void key(const char* name)
    {
        m_out.append(m_first ? "\"" : ",\"").append(name).append("\":");
        m_first = false;
    }
    void beginObject()
    {
        m_out.append('{');
        m_first = true;
    }
    void endObject() { m_out.append('}'); }
    void number(qint64 value) { m_out.append(QByteArray::number(value)); }
    /// A double as the shortest text that reads back to the same value.
    void real(double value);
    void boolean(bool value) { m_out.append(value ? "true" : "false"); }
    void numberOrEmpty(bool present, qint64 value)
    {
        if (present)
            number(value);
        else
            m_out.append("\"\"");
    }
    void string(const QString& text) { utf8(text.toUtf8()); }
    /// Text known to need no escapes, such as a UUID's.
    void plain(const QByteArray& text) { m_out.append('"').append(text).append('"'); }
    void utf8(const QByteArray& text);
    /// The form of StoreTime::toIso, "yyyy-MM-ddThh:mm:ssZ", or empty for no time.
    void time(const QDateTime& value);

private:
    QByteArray& m_out;
    bool m_first = true;
};

} // namespace TWB::Service
