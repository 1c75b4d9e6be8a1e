#include "platform/communication/json_line_buffer.h"

#include <QJsonDocument>
#include <QJsonParseError>

namespace TWB::Common::Communication {

JsonLineBuffer::Result JsonLineBuffer::next(QJsonObject* message, QString* error)
{
    for (;;) {
        // Only bytes that arrived since the last look are searched, so that a long line that comes in
        // small pieces costs its length once, not once for every piece.
        const int newline = m_buffer.indexOf('\n', m_start + m_scanned);
        if (newline < 0) {
            m_buffer.remove(0, m_start);
            m_start = 0;
            m_scanned = m_buffer.size();
            if (m_buffer.size() > m_maxLine)
                return failWith(error, QStringLiteral("unterminated line exceeds the limit"));
            return Result::NeedMore;
        }
        const QByteArray line = m_buffer.mid(m_start, newline - m_start);
        m_start = newline + 1;
        m_scanned = 0;
        if (line.size() > m_maxLine)
            return failWith(error, QStringLiteral("line of %1 bytes exceeds the limit").arg(line.size()));
        if (line.trimmed().isEmpty())
            continue;
        QJsonParseError parseError;
        const QJsonDocument doc = QJsonDocument::fromJson(line, &parseError);
        if (parseError.error != QJsonParseError::NoError)
            return failWith(error, QStringLiteral("line is not JSON: %1").arg(parseError.errorString()));
        if (!doc.isObject())
            return failWith(error, QStringLiteral("line is not a JSON object"));
        *message = doc.object();
        return Result::Message;
    }
}

JsonLineBuffer::Result JsonLineBuffer::failWith(QString* error, const QString& reason)
{
    m_buffer.clear();
    m_start = 0;
    m_scanned = 0;
    *error = reason;
    return Result::Error;
}

} // namespace TWB::Common::Communication
