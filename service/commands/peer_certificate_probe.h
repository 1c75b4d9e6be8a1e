#pragma once

#include "service/commands/responder.h"

#include <QAbstractSocket>
#include <QObject>
#include <QTimer>

class QSslSocket;

namespace TWB::Service {

/// Shakes hands with a TLS endpoint and answers a request with the certificate the peer showed,
/// whether or not it can be trusted: that is what the user is asked to decide on. Runs on the
/// event loop and deletes itself once it has answered.
class PeerCertificateProbe final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(PeerCertificateProbe)
public:
    PeerCertificateProbe(const QString& host, quint16 port, const Responder& respond, QObject* parent = nullptr);

    /// Connects; the answer follows from the event loop, within `timeoutMs`.
    void start(int timeoutMs);

private:
    void onEncrypted();
    void onError(QAbstractSocket::SocketError error);
    void onTimeout();
    void finish();

    QString m_host;
    quint16 m_port = 0;
    Responder m_respond;
    QSslSocket* m_socket = nullptr; // owned by parent-child
    QTimer m_timer;
};

} // namespace TWB::Service
