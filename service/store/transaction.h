#pragma once

namespace TWB::Service {

class Database;

/// A write transaction that rolls back unless commit() was reached. It takes SQLite's write lock
/// at once (BEGIN IMMEDIATE), so that two writers wait for each other instead of failing midway.
/// One begun inside another is a savepoint of the outer one: its commit keeps its changes for the
/// outer commit, which alone makes them durable, and its rollback undoes only its own.
class Transaction final
{
public:
    explicit Transaction(Database& database);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// Makes the changes durable; throws on failure. Only after this may anyone be told of them.
    void commit();

private:
    Database& m_database;
    int m_level = 0; // 1 for the outermost
    bool m_done = false;
};

} // namespace TWB::Service
