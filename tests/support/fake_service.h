#pragma once

#include <QByteArray>
#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QMetaType>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>

class QLocalServer;

namespace TWB::Common::Communication {
class JsonLineSocket;
}

namespace TWB::Test {

/// One request as the fake service received it.
struct FakeRequest
{
    QString command;
    QString id;
    QJsonObject params;
    QJsonObject envelope;
};

/// What the fake service does with one request.
class FakeReply
{
public:
    static FakeReply ok(const QJsonObject& data = QJsonObject());
    static FakeReply fail(const QString& text, const QJsonObject& data = QJsonObject());
    /// Writes these bytes instead of a reply.
    static FakeReply raw(const QByteArray& bytes);
    /// Closes the connection instead of replying.
    static FakeReply closeConnection();
    /// Never answers.
    static FakeReply none();

    /// The same reply, sent after a delay.
    FakeReply after(int milliseconds) const;

private:
    friend class FakeService;
    enum class Kind { Ok, Fail, Raw, Close, None };
    Kind kind = Kind::Ok;
    QJsonObject data;
    QString text;
    QByteArray bytes;
    int delayMs = 0;
};

/// A scripted service on a real local socket, speaking the real wire protocol.
/// Tests give a handler per command; a command without one gets "Unknown command: NAME".
class FakeService final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(FakeService)
public:
    using Handler = std::function<FakeReply(const FakeRequest&)>;

    explicit FakeService(QObject* parent = nullptr);
    ~FakeService() override;

    bool listen(const QString& path);
    /// Listens on `path`, brings the console's channel up with short waits and waits until it is connected.
    bool serveConsole(const QString& path);
    /// Closes every connection and stops listening, as a service that exits.
    void stop();
    bool isListening() const;

    void on(const QString& command, Handler handler);
    void on(const QString& command, const FakeReply& reply);

    /// Pushes a notification to every connected console.
    void notify(const QString& type, const QJsonObject& data = QJsonObject());
    /// Writes bytes as they are to every connected console.
    void sendRaw(const QByteArray& bytes);
    void closeClients();

    int clientCount() const;
    bool waitForClient(int timeoutMs = 5000);
    QList<FakeRequest> requests() const { return m_requests; }
    /// Requests of one command, oldest first.
    QList<FakeRequest> requests(const QString& command) const;
    void clearRequests() { m_requests.clear(); }

Q_SIGNALS:
    void requestReceived(const TWB::Test::FakeRequest& request);
    void clientConnected();

private:
    void onNewConnection();
    void onMessage(TWB::Common::Communication::JsonLineSocket* client, const QJsonObject& message);
    void answer(QPointer<TWB::Common::Communication::JsonLineSocket> client, const FakeRequest& request,
        const FakeReply& reply);

    QLocalServer* m_server = nullptr; // owned by parent-child
    QString m_path;
    QHash<QString, Handler> m_handlers;
    QList<QPointer<TWB::Common::Communication::JsonLineSocket>> m_clients;
    QList<FakeRequest> m_requests;
};

} // namespace TWB::Test

Q_DECLARE_METATYPE(TWB::Test::FakeRequest)
Q_DECLARE_METATYPE(TWB::Test::FakeReply)
