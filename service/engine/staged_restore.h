#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

namespace TWB::Service {

/// Moves what restic restored into a staging folder to where it belongs, file by file, by the
/// plan's overwrite rule. A file reaches its place whole or not at all: by rename on the same
/// file system, else by a copy beside its place that is then renamed over it. The work is done
/// in slices on the event loop, so that the service keeps answering.
class StagedRestore final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(StagedRestore)
public:
    enum class Rule { SkipExisting, Overwrite, OverwriteOlder };
    /// The place of a staged file, from its path below the staging folder ("/home/alice/a.txt").
    using Placement = std::function<QString(const QString& stagedPath)>;

    StagedRestore(const QString& staging, Placement placement, Rule rule, QObject* parent = nullptr);

    void start();
    /// Ends after the file in hand; what was moved stays.
    void stop();

Q_SIGNALS:
    void restored(const QString& target, qint64 size, const QDateTime& modified);
    void skipped(const QString& target);
    void failed(const QString& target, const QString& why);
    void finished();

private:
    void slice();
    void place(const QString& source);
    bool moveInto(const QString& source, const QString& target, QString* why);

    QString m_staging;
    Placement m_placement;
    Rule m_rule;
    QStringList m_entries;
    QStringList m_moved; // staged folders that moved whole, with a trailing slash
    int m_next = 0;
    bool m_stopped = false;
};

} // namespace TWB::Service
