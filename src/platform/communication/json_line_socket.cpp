#include "platform/communication/json_line_socket.h"

#include <QJsonDocument>
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
    const bool written = m_socket->write(bytes) == bytes.size();
    Q_EMIT wrote();
    return written;
}

void JsonLineSocket::setPaused(bool paused)
{
    if (m_paused == paused)
        return;
    m_paused = paused;
    // Lines held while paused, and input that arrived meanwhile, are read on the next turn.
    if (!paused)
        QMetaObject::invokeMethod(this, &JsonLineSocket::onReadyRead, Qt::QueuedConnection);
}

void JsonLineSocket::onReadyRead()
{
    if (!m_socket || m_failed || m_paused)
        return;
    m_lines.readFrom(*m_socket);
    while (!m_failed && !m_paused) {
        QJsonObject message;
        QString error;
        const JsonLineBuffer::Result result = m_lines.next(&message, &error);
        if (result == JsonLineBuffer::Result::NeedMore)
            return;
        if (result == JsonLineBuffer::Result::Error) {
            fail(error);
            return;
        }
        // The receiver may close the socket or delete us from inside the slot.
        QPointer<JsonLineSocket> self(this);
        Q_EMIT messageReceived(message);
        if (!self)
            return;
    }
}

void JsonLineSocket::fail(const QString& reason)
{
    m_failed = true;
    QPointer<JsonLineSocket> self(this);
    Q_EMIT protocolError(reason);
    if (self && m_socket)
        m_socket->abort();
}

} // namespace TWB::Common::Communication
