#pragma once

#include "twbconsole_export.h"

#include <QJsonDocument>
#include <QObject>

namespace TWB::GUI {

/// Turns the service's connection state and application-wide notifications into host signals.
/// Connect its signals first, then call init(): init() reports the present state at once.
class TWBCONSOLE_EXPORT ApplicationEventController final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(ApplicationEventController)
public:
    explicit ApplicationEventController(QObject* parent = nullptr);

    /// Subscribes to the channel once; later calls do nothing.
    void init();

Q_SIGNALS:
    void updateStarted();
    void localManagmentConnected();
    void localManagmentDisconnected();

public Q_SLOTS:
    void onNotification(const QJsonDocument& document);
    void onLocalManagmentStatusChanged();

private:
    bool initialized = false;
};

} // namespace TWB::GUI
