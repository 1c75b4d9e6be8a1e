#pragma once

#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QString>

namespace TWB::Common::Communication {
class ICommand;
}

namespace TWB::Test {

/// A console-side caller that sends and reads commands the way every model of the console does:
/// texts thrown as QString, caught in the same function, logged under "TWB" and emitted.
class TestCaller final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(TestCaller)
public:
    explicit TestCaller(QObject* parent = nullptr);

    /// Sends a command with "profile" and the given params. False when it could not be sent.
    bool send(const QString& name, const QJsonObject& params = QJsonObject(), int timeoutMs = 0);
    /// The last command sent; null once it was deleted.
    QPointer<TWB::Common::Communication::ICommand> lastCommand;

public Q_SLOTS:
    void onCommandResult();

Q_SIGNALS:
    void succeeded(const QJsonObject& data, const QJsonObject& request);
    void failed(const QString& text);
};

} // namespace TWB::Test
