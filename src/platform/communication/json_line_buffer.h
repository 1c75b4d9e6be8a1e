#pragma once

#include "platform/twbplatform_export.h"

#include <QByteArray>
#include <QIODevice>
#include <QJsonObject>
#include <QString>

namespace TWB::Common::Communication {

/// The framing of the service protocol without a socket: bytes go in as they arrive, and whole lines
/// come out one at a time, each one compact JSON object. Kept apart from the socket so that what the
/// peer sends can be checked, and fuzzed, on its own.
class TWBPLATFORM_EXPORT JsonLineBuffer final
{
public:
    enum class Result { Message, NeedMore, Error };

    static constexpr qint64 maxLineSize() { return qint64(64) * 1024 * 1024; }

    void append(const QByteArray& bytes) { m_buffer.append(bytes); }
    /// Reads what the device holds straight onto the end of the buffer, sparing a large reply the
    /// copies that readAll() and append() would make of it.
    void readFrom(QIODevice& device);
    /// Takes the next whole line. `Message` fills `message`; `NeedMore` means no whole line is there;
    /// `Error` fills `error` with what is wrong: a line that is not a JSON object, or one longer than the
    /// limit, finished or not. After an error the buffer is empty and must not be used again.
    Result next(QJsonObject* message, QString* error);

    /// Bytes received and not yet taken.
    qint64 size() const { return m_buffer.size() - m_start; }
    void setMaxLineSize(qint64 bytes) { m_maxLine = bytes; }
    qint64 maxLine() const { return m_maxLine; }

private:
    Result failWith(QString* error, const QString& reason);

    QByteArray m_buffer;
    int m_start = 0; // the first byte not yet taken
    int m_scanned = 0; // bytes after m_start known to hold no newline
    qint64 m_maxLine = maxLineSize();
};

} // namespace TWB::Common::Communication
