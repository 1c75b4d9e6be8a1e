#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>

class QLocalSocket;

namespace TWB::Common::Communication {
class JsonLineSocket;
}

namespace TWB::Ctl {

/// One connection of twbctl to the service: sends one request and waits for its reply, or prints
/// notifications as they come.
class CtlClient final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(CtlClient)
public:
    explicit CtlClient(QObject* parent = nullptr);
    ~CtlClient() override;

    bool connectTo(const QString& path, QString* error);
    /// Sends the request and waits for its reply. False with a reason when none came.
    bool call(const QString& command, const QJsonObject& params, int timeoutMs, QJsonObject* reply, QString* error);
    /// Prints each notification on stdout, one JSON object a line, until the connection ends or
    /// `count` notifications were printed (0: no limit). Returns the exit code.
    int watch(int count);

private:
    QLocalSocket* m_socket = nullptr; // owned by parent-child
    TWB::Common::Communication::JsonLineSocket* m_lines = nullptr; // owned by parent-child
};

} // namespace TWB::Ctl
