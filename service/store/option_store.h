#pragma once

#include <QString>

namespace TWB::Service {

class Database;

/// The service's own options, text by key. The product's user options live in options.ini;
/// these are the service's tuning and bookkeeping, which no dialog shows.
class OptionStore final
{
public:
    /// Entries of one part of a restore content listing; default 500.
    static constexpr char RestoreContentPageSize[] = "RestoreContentPageSize";
    /// Set once the first-start storage account was made, so that a user who removes it keeps it removed.
    static constexpr char DefaultStorageMade[] = "DefaultStorageMade";

    explicit OptionStore(Database& database)
        : m_database(database)
    { }

    QString value(const QString& key, const QString& fallback = QString());
    /// The value as a whole number in [minimum, maximum], or `fallback` when unset or out of range.
    int number(const QString& key, int fallback, int minimum, int maximum);
    void setValue(const QString& key, const QString& value);

private:
    Database& m_database;
};

} // namespace TWB::Service
