#include "platform/communication/json_line_socket.h"

#include <QJsonDocument>
#include <QJsonParseError>
#include <QLocalSocket>

namespace TWB::Common::Communication {

JsonLineSocket::JsonLineSocket(QLocalSocket* socket, QObject* parent)
    : QObject(parent)
    , m_socket(socket)
{
    connect(socket, &QLocalSocket::readyRead, this, &JsonLineSocket::onReadyRead);
}

bool JsonLineSocket::send(const QJsonObject& message)
{
    QByteArray line = QJsonDocument(message).toJson(QJsonDocument::Compact);
    line.append('\n');
    return sendRaw(line);
}

bool JsonLineSocket::sendRaw(const QByteArray& bytes)
{
    if (!m_socket || m_socket->state() != QLocalSocket::ConnectedState)
        return false;
    return m_socket->write(bytes) == bytes.size();
}

void JsonLineSocket::onReadyRead()
{
    if (!m_socket || m_failed)
        return;
    m_buffer.append(m_socket->readAll());
    int start = 0;
    while (!m_failed) {
        const int newline = m_buffer.indexOf('\n', start + m_scanned);
        if (newline < 0) {
            m_scanned = m_buffer.size() - start;
            break;
        }
        m_scanned = 0;
        const QByteArray line = m_buffer.mid(start, newline - start);
        start = newline + 1;
        if (line.size() > m_maxLine) {
            fail(QStringLiteral("line of %1 bytes exceeds the limit").arg(line.size()));
            break;
        }
        if (line.trimmed().isEmpty())
            continue;
        QJsonParseError parseError;
        const QJsonDocument doc = QJsonDocument::fromJson(line, &parseError);
        if (parseError.error != QJsonParseError::NoError) {
            fail(QStringLiteral("line is not JSON: %1").arg(parseError.errorString()));
            break;
        }
        if (!doc.isObject()) {
            fail(QStringLiteral("line is not a JSON object"));
            break;
        }
        // The receiver may close the socket or delete us from inside the slot.
        QPointer<JsonLineSocket> self(this);
        Q_EMIT messageReceived(doc.object());
        if (!self)
            return;
    }
    if (m_failed) {
        m_buffer.clear();
        m_scanned = 0;
        return;
    }
    m_buffer.remove(0, start);
    if (m_buffer.size() > m_maxLine)
        fail(QStringLiteral("unterminated line exceeds the limit"));
}

void JsonLineSocket::fail(const QString& reason)
{
    m_failed = true;
    m_buffer.clear();
    m_scanned = 0;
    QPointer<JsonLineSocket> self(this);
    Q_EMIT protocolError(reason);
    if (self && m_socket)
        m_socket->abort();
}

} // namespace TWB::Common::Communication
