#include "service/store/migrations.h"

namespace TWB::Service {

namespace {

// Times are kept as text in UTC, "yyyyMMddhhmmss", the form the console's history and content
// views read, so that they compare as text and need no conversion on the way out.
const QStringList step1 = {
    QStringLiteral("CREATE TABLE options ("
                   " key TEXT PRIMARY KEY,"
                   " value TEXT NOT NULL)"),
    // The saved document of each account, secrets enciphered with the local cipher.
    QStringLiteral("CREATE TABLE accounts ("
                   " id TEXT PRIMARY KEY,"
                   " display_name TEXT NOT NULL,"
                   " type INTEGER NOT NULL,"
                   " prefix TEXT NOT NULL DEFAULT '',"
                   " document TEXT NOT NULL,"
                   " created_utc TEXT NOT NULL,"
                   " updated_utc TEXT NOT NULL)"),
    // A plan is its XML; the other columns are what the plan table shows, taken from the XML
    // when it is saved, and the summary of the last run, which runs write.
    QStringLiteral("CREATE TABLE plans ("
                   " id TEXT PRIMARY KEY,"
                   " name TEXT NOT NULL,"
                   " subtype INTEGER NOT NULL,"
                   " type INTEGER NOT NULL,"
                   " storage_id TEXT NOT NULL DEFAULT '',"
                   " schedule_text TEXT NOT NULL DEFAULT '',"
                   " next_run_utc TEXT NOT NULL DEFAULT '',"
                   " next_run_full_utc TEXT NOT NULL DEFAULT '',"
                   " xml TEXT NOT NULL,"
                   " status INTEGER NOT NULL DEFAULT 2,"
                   " last_run_message TEXT,"
                   " last_run_status INTEGER,"
                   " last_run_utc TEXT,"
                   " last_duration INTEGER,"
                   " last_uploaded_count INTEGER,"
                   " last_failed_count INTEGER,"
                   " last_uploaded_size INTEGER,"
                   " last_file_count INTEGER,"
                   " last_file_size INTEGER,"
                   " created_utc TEXT NOT NULL,"
                   " updated_utc TEXT NOT NULL)"),
    QStringLiteral("CREATE INDEX plans_by_storage ON plans(storage_id)"),
    // History outlives its plan: a removed plan's runs keep its name.
    QStringLiteral("CREATE TABLE runs ("
                   " id INTEGER PRIMARY KEY AUTOINCREMENT,"
                   " plan_id TEXT NOT NULL,"
                   " plan_name TEXT NOT NULL,"
                   " operation INTEGER NOT NULL,"
                   " result INTEGER NOT NULL,"
                   " start_utc TEXT NOT NULL,"
                   " duration INTEGER NOT NULL DEFAULT 0,"
                   " file_count INTEGER NOT NULL DEFAULT 0,"
                   " size INTEGER NOT NULL DEFAULT 0,"
                   " error_message TEXT NOT NULL DEFAULT '')"),
    QStringLiteral("CREATE INDEX runs_by_plan ON runs(plan_id, id)"),
    QStringLiteral("CREATE INDEX runs_by_start ON runs(start_utc)"),
    QStringLiteral("CREATE TABLE file_operations ("
                   " id INTEGER PRIMARY KEY AUTOINCREMENT,"
                   " run_id INTEGER NOT NULL REFERENCES runs(id) ON DELETE CASCADE,"
                   " plan_id TEXT NOT NULL,"
                   " operation INTEGER NOT NULL,"
                   " path TEXT NOT NULL,"
                   " size INTEGER NOT NULL DEFAULT 0,"
                   " modified_utc TEXT NOT NULL DEFAULT '',"
                   " finish_utc TEXT NOT NULL,"
                   " duration INTEGER NOT NULL DEFAULT 0,"
                   " message TEXT NOT NULL DEFAULT '')"),
    QStringLiteral("CREATE INDEX file_operations_by_plan ON file_operations(plan_id, id)"),
    QStringLiteral("CREATE INDEX file_operations_by_run ON file_operations(run_id)"),
    // What a storage holds, by account, prefix and path. Folders are entries of their own, so that
    // a folder lists with one indexed range scan, folders first and then files, by name.
    QStringLiteral("CREATE TABLE catalog_entries ("
                   " id INTEGER PRIMARY KEY,"
                   " account_id TEXT NOT NULL,"
                   " prefix TEXT NOT NULL,"
                   " parent TEXT NOT NULL,"
                   " name TEXT NOT NULL,"
                   " kind INTEGER NOT NULL,"
                   " is_file INTEGER NOT NULL,"
                   " UNIQUE (account_id, prefix, parent, name))"),
    QStringLiteral("CREATE INDEX catalog_listing ON catalog_entries(account_id, prefix, parent, is_file, name)"),
    QStringLiteral("CREATE TABLE catalog_versions ("
                   " id INTEGER PRIMARY KEY,"
                   " entry_id INTEGER NOT NULL REFERENCES catalog_entries(id) ON DELETE CASCADE,"
                   " snapshot TEXT NOT NULL,"
                   " backup_utc TEXT NOT NULL,"
                   " modified_utc TEXT NOT NULL,"
                   " size INTEGER NOT NULL,"
                   " original_size INTEGER NOT NULL,"
                   " is_encrypted INTEGER NOT NULL DEFAULT 0,"
                   " is_compressed INTEGER NOT NULL DEFAULT 0,"
                   " is_full INTEGER NOT NULL DEFAULT 1,"
                   " revision INTEGER NOT NULL DEFAULT 0,"
                   " attribute INTEGER NOT NULL DEFAULT 0,"
                   " UNIQUE (entry_id, snapshot))"),
    QStringLiteral("CREATE INDEX catalog_versions_by_time ON catalog_versions(entry_id, backup_utc)"),
    // Certificates the user chose to trust for endpoints whose chain does not verify.
    QStringLiteral("CREATE TABLE certificates ("
                   " fingerprint TEXT PRIMARY KEY,"
                   " pem TEXT NOT NULL,"
                   " subject TEXT NOT NULL,"
                   " expires_utc TEXT NOT NULL,"
                   " added_utc TEXT NOT NULL)"),
};

// The engine: which plan's repository holds each version, when a file left the backups, the
// snapshots of each repository, and the keys of repositories whose plan has no password of its own.
const QStringList step2 = {
    QStringLiteral("ALTER TABLE catalog_versions ADD COLUMN plan_id TEXT NOT NULL DEFAULT ''"),
    // A version is held by its plan's backups from its own snapshot until the time, in milliseconds,
    // of the first later backup that held another version or no longer held the file; 0 while the
    // newest backup still holds it. Retention needs this to know which backups a version lives in.
    QStringLiteral("ALTER TABLE catalog_versions ADD COLUMN gone_ms INTEGER NOT NULL DEFAULT 0"),
    QStringLiteral("CREATE INDEX catalog_versions_by_plan ON catalog_versions(plan_id, snapshot)"),
    // Times in milliseconds: two backups of one plan may fall in the same second, and a point in
    // time must still tell them apart.
    QStringLiteral("CREATE TABLE catalog_snapshots ("
                   " plan_id TEXT NOT NULL,"
                   " snapshot TEXT NOT NULL,"
                   " time_ms INTEGER NOT NULL,"
                   " account_id TEXT NOT NULL,"
                   " prefix TEXT NOT NULL,"
                   " shares TEXT NOT NULL DEFAULT '',"
                   " PRIMARY KEY (plan_id, snapshot))"),
    QStringLiteral("CREATE INDEX catalog_snapshots_by_time ON catalog_snapshots(plan_id, time_ms)"),
    // The password that opens each repository now; "generated" when the service made it because the
    // plan has no password of its own.
    QStringLiteral("CREATE TABLE repository_keys ("
                   " plan_id TEXT PRIMARY KEY,"
                   " key TEXT NOT NULL,"
                   " generated INTEGER NOT NULL DEFAULT 0,"
                   " updated_utc TEXT NOT NULL)"),
};

// What the scheduler reads and writes of each plan, in a narrow table of its own: moving the next
// runs of 10,000 plans rewrote every page of the plans, documents and all, and the write of tens of
// megabytes kept the first commands after a long sleep waiting. The timing is the plan's schedules
// in a short form, so that working out next runs reads no plan document; empty for plans saved
// before, which are read in full once.
const QStringList step3 = {
    QStringLiteral("CREATE TABLE plan_timings ("
                   " plan_id TEXT PRIMARY KEY REFERENCES plans(id) ON DELETE CASCADE,"
                   " timing TEXT NOT NULL DEFAULT '',"
                   " next_run_utc TEXT NOT NULL DEFAULT '',"
                   " next_run_full_utc TEXT NOT NULL DEFAULT '')"),
    QStringLiteral("INSERT INTO plan_timings (plan_id, next_run_utc, next_run_full_utc)"
                   " SELECT id, next_run_utc, next_run_full_utc FROM plans"),
    QStringLiteral("ALTER TABLE plans DROP COLUMN next_run_utc"),
    QStringLiteral("ALTER TABLE plans DROP COLUMN next_run_full_utc"),
};

// The history pages newest first within a run and within one kind of operation as well; without
// these a run's page sorted all of its operations, and a filter on a rare kind walked the whole table.
const QStringList step4 = {
    QStringLiteral("CREATE INDEX file_operations_by_run_id ON file_operations(run_id, id)"),
    QStringLiteral("DROP INDEX file_operations_by_run"),
    QStringLiteral("CREATE INDEX file_operations_by_operation ON file_operations(operation, id)"),
    QStringLiteral("CREATE INDEX file_operations_by_plan_operation ON file_operations(plan_id, operation, id)"),
};

// The plan list reads 19 short columns of every plan; with the documents in the same rows it read
// every page of them, which made the first list after a start of the service take hundreds of
// milliseconds at 10,000 plans. The first index gives the list its order without a sort.
const QStringList step5 = {
    QStringLiteral("CREATE TABLE plan_documents ("
                   " plan_id TEXT PRIMARY KEY REFERENCES plans(id) ON DELETE CASCADE,"
                   " xml TEXT NOT NULL)"),
    QStringLiteral("INSERT INTO plan_documents (plan_id, xml) SELECT id, xml FROM plans"),
    QStringLiteral("ALTER TABLE plans DROP COLUMN xml"),
    QStringLiteral("CREATE INDEX plans_by_creation ON plans(created_utc)"),
    // The runs a stop cut short are looked for at every start, among all the runs there ever were.
    QStringLiteral("CREATE INDEX runs_unfinished ON runs(id) WHERE result = 2"),
};

} // namespace

int Migrations::count()
{
    return 5;
}

QStringList Migrations::step(int version)
{
    switch (version) {
    case 1:
        return step1;
    case 2:
        return step2;
    case 3:
        return step3;
    case 4:
        return step4;
    case 5:
        return step5;
    default:
        return {};
    }
}

} // namespace TWB::Service
