#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>

namespace TWB::Service {

/// What the commands changed, said once for every console to hear. The commands know nothing of the
/// socket: whoever owns the server connects notification() to it.
class Notifier final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(Notifier)
public:
    explicit Notifier(QObject* parent = nullptr);

    void send(const QString& type, const QJsonObject& data = QJsonObject());

Q_SIGNALS:
    void notification(const QString& type, const QJsonObject& data);
};

} // namespace TWB::Service
