#pragma once

#include "platform/communication/json_line_buffer.h"
#include "platform/twbplatform_export.h"

#include <QByteArray>
#include <QJsonObject>
#include <QObject>
#include <QPointer>

#include <QLocalSocket>

namespace TWB::Common::Communication {

/// Framing of the service protocol over one local socket: one compact JSON object per line.
/// Both ends use it: the console's connection and each client connection of the service.
/// A line that is not a JSON object, or that grows past maxLineSize(), is a protocol error:
/// protocolError() is emitted once and the socket is aborted.
class TWBPLATFORM_EXPORT JsonLineSocket final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(JsonLineSocket)
public:
    /// Takes over reading of the socket; does not own it.
    explicit JsonLineSocket(QLocalSocket* socket, QObject* parent = nullptr);

    /// Writes one message. Returns false when the socket is not connected.
    bool send(const QJsonObject& message);
    /// Writes raw bytes as they are; tests use it to produce broken lines.
    bool sendRaw(const QByteArray& bytes);

    QLocalSocket* socket() const { return m_socket; }

    /// Stops handing on requests, leaving further input unread, until resumed: a peer that does not
    /// read what it is sent must not be served without end.
    void setPaused(bool paused);
    bool isPaused() const { return m_paused; }
    /// Bytes received and not yet handed on: an unfinished line, or lines held while paused.
    qint64 bufferedBytes() const { return m_lines.size(); }

    static constexpr qint64 maxLineSize() { return JsonLineBuffer::maxLineSize(); }
    /// Lowers the line limit, so that tests need not send 64 MiB.
    void setMaxLineSize(qint64 bytes) { m_lines.setMaxLineSize(bytes); }

Q_SIGNALS:
    void messageReceived(const QJsonObject& message);
    void protocolError(const QString& reason);
    /// Bytes were queued for writing.
    void wrote();

private:
    void onReadyRead();
    void fail(const QString& reason);

    QPointer<QLocalSocket> m_socket; // not owned
    JsonLineBuffer m_lines;
    bool m_failed = false;
    bool m_paused = false;
};

} // namespace TWB::Common::Communication
