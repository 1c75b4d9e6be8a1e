#pragma once

#include "twbconsole_export.h"

#include <QObject>
#include <QUrl>

namespace TWB::GUI::Handlers {

/// Opens a URL through the system with the standard library and program search paths,
/// then puts the console's own paths back.
class TWBCONSOLE_EXPORT SystemUrlOpenHandler final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(SystemUrlOpenHandler)
public:
    explicit SystemUrlOpenHandler(QObject* parent = nullptr);

public Q_SLOTS:
    void handleUrl(const QUrl& url);
};

} // namespace TWB::GUI::Handlers
