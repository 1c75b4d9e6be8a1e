#pragma once

#include "platform/twbplatform_export.h"

#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>

namespace TWB::Common::Communication {

class ICommand;

/// Makes commands for the local service. A singleton that dies at aboutToQuit(): test the pointer.
class TWBPLATFORM_EXPORT Manager final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(Manager)
public:
    static QPointer<Manager> instance();

    /// A new command with its envelope filled in, or null when no command has that name.
    /// The caller owns it.
    ICommand* commandFactory(const QString& name);

    bool isRegistered(const QString& name) const { return m_names.contains(name); }
    /// Adds a command name that the shared list does not hold.
    void registerCommand(const QString& name) { m_names.insert(name); }

    /// One session id for every request of this process.
    QString sessionId() const { return m_sessionId; }

    /// Reply time allowed to new commands, in milliseconds.
    void setDefaultTimeout(int milliseconds) { m_defaultTimeoutMs = milliseconds; }
    int defaultTimeout() const { return m_defaultTimeoutMs; }
    static constexpr int standardTimeout() { return 120 * 1000; }

private:
    Manager();

    QSet<QString> m_names;
    QString m_sessionId;
    int m_defaultTimeoutMs = standardTimeout();
};

} // namespace TWB::Common::Communication
