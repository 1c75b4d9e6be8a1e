#include "platform/communication/json_line_buffer.h"

#include <QJsonDocument>
#include <QJsonParseError>

#include <algorithm>
#include <cctype>

namespace TWB::Common::Communication {

void JsonLineBuffer::readFrom(QIODevice& device)
{
    for (qint64 available = device.bytesAvailable(); available > 0; available = device.bytesAvailable()) {
        const int before = m_buffer.size();
        const int wanted = int(qMin<qint64>(available, m_maxLine + 1));
        m_buffer.resize(before + wanted);
        const qint64 got = device.read(m_buffer.data() + before, wanted);
        m_buffer.resize(before + int(qMax<qint64>(got, 0)));
        if (got <= 0)
            return;
    }
}

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
        // The line is parsed where it lies: a reply of megabytes is not copied first.
        const char* begin = m_buffer.constData() + m_start;
        const int length = newline - m_start;
        m_start = newline + 1;
        m_scanned = 0;
        if (length > m_maxLine)
            return failWith(error, QStringLiteral("line of %1 bytes exceeds the limit").arg(length));
        if (std::all_of(begin, begin + length, [](char c) { return std::isspace(static_cast<unsigned char>(c)); }))
            continue;
        QJsonParseError parseError;
        const QJsonDocument doc = QJsonDocument::fromJson(QByteArray::fromRawData(begin, length), &parseError);
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
