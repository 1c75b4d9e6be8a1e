#pragma once

#include "service/engine/backend_mapping.h"
#include "service/engine/engine_process.h"
#include "service/engine/run_places.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <functional>

namespace TWB::Service {

class Database;

/// What runs and synchronisations share when they talk to a storage: a private folder for key
/// files and lists, rclone's empty configuration, the secrets rclone wants obscured, the order in
/// which passwords open a repository, and restic and rclone processes, one at a time. A lock that
/// a process of this machine left behind when it died is removed when it stands in the way, so
/// that no later operation on the repository is blocked by it.
class EngineSteps final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(EngineSteps)
public:
    using Done = std::function<void(int exitCode, const QString& error, const QByteArray& output)>;
    /// Asked when a program ended, before its `done`: false when its owner has stopped listening.
    using Gate = std::function<bool()>;

    EngineSteps(const RunPlaces& places, const QString& folder, QObject* parent = nullptr);
    ~EngineSteps() override;

    void setGate(Gate gate) { m_gate = std::move(gate); }

    /// Makes the private folder, mode 0700 from its first moment and inside a run folder of the
    /// same mode, and the empty rclone configuration. Anything a killed run left there goes first.
    bool makeFolder(QString* error);
    /// Removes the private folder with whatever it holds.
    void removeFolder();
    QString folder() const { return m_folder; }
    /// Writes a file of the private folder, readable by the service's user only.
    bool writeFile(const QString& name, const QByteArray& content, QString* error);
    /// Writes the key files the target needs.
    bool writeFiles(const BackendTarget& target, QString* error);

    /// Replaces the values of the target's obscured rclone variables by their obscured form, one
    /// "rclone obscure" each; `next` gets an error text, empty when all went well.
    void obscureSecrets(BackendTarget& target, std::function<void(const QString& error)> next);

    EngineCall restic(const BackendTarget& target, const QString& repository, const QString& password,
        const QStringList& arguments) const;
    EngineCall rclone(const BackendTarget& target, const QStringList& arguments) const;

    /// Runs one program. `done` comes on the event loop with its exit code (-1 when it crashed or
    /// did not start), the end of its stderr, and its stdout when no line handler took it. With
    /// `always` false, the gate decides first whether anyone still wants to hear.
    void run(const EngineCall& call, EngineProcess::LineHandler onLine, Done done, const QByteArray& input = {},
        bool always = false);
    /// Runs restic; when a lock stands in the way, "restic unlock" removes those of processes
    /// that are gone and the call is made once more.
    void runRestic(const BackendTarget& target, const QString& repository, const QString& password,
        const QStringList& arguments, EngineProcess::LineHandler onLine, Done done, bool always = false);

    /// Interrupts the program that runs now, as a terminal would; kills it after `graceMs`.
    void interrupt(int graceMs);
    bool isRunning() const { return !m_process.isNull(); }

    /// The passwords that may open a plan's repository, in the order to try them: the key the
    /// service keeps for it, `given`, the backup plan's own password, and the open key.
    static QStringList passwords(Database& database, const QUuid& plan, const QString& given = QString());

private:
    RunPlaces m_places;
    QString m_folder;
    Gate m_gate;
    QPointer<EngineProcess> m_process;
};

} // namespace TWB::Service
