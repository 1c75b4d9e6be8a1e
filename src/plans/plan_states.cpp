#include "plans/plan_states.h"

#include <QCoreApplication>

namespace TWB::GUI::PlanStates {

namespace {

// The translation context of every text in this file.
constexpr char Context[] = "TWB::GUI::PlanStates";

struct Entry
{
    int state;
    const char* name;
    const char* text; // marked for lupdate, translated on each call
};

// Sorted by number. The text of 101 ends at "battery": it is the wording users already know.
constexpr Entry Entries[] = {
    {Unknown, "Unknown", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Unknown")},
    {Starting, "Starting", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Starting")},
    {UpdatedFileSearch, "UpdatedFileSearch", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Updated file search")},
    {Running, "Running", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Running")},
    {PurgingFiles, "PurgingFiles", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Purging files")},
    {Pausing, "Pausing", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Pausing")},
    {Paused, "Paused", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Paused")},
    {Success, "Success", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Success")},
    {Warning, "Warning", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Warning")},
    {Fail, "Fail", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Fail")},
    {Interrupted, "Interrupted", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Interrupted")},
    {InterruptedBySchedule, "InterruptedBySchedule",
        QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Interrupted by schedule")},
    {UpdatingRepository, "UpdatingRepository", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Updating repository")},
    {Stopping, "Stopping", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Stopping")},
    {CreatingVSSSnapshot, "CreatingVSSSnapshot", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Creating VSS snapshot")},
    {CalculatingMD5, "CalculatingMD5", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Calculating MD5")},
    {InstantBackup, "InstantBackup", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Instant backup")},
    {InterruptedForUpdate, "InterruptedForUpdate", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Interrupted for update")},
    {RunningPreBackupAction, "RunningPreBackupAction",
        QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Running pre backup action")},
    {RunningPostBackupAction, "RunningPostBackupAction",
        QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Running post backup action")},
    {Preparing, "Preparing", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Preparing")},
    {Downloading, "Downloading", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Downloading")},
    {RunningWindowsBackup, "RunningWindowsBackup", QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Running windows backup")},
    {InterruptedSystemSleep, "InterruptedSystemSleep",
        QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Interrupted system sleep")},
    {InterruptedBySwitchingToBatteryPower, "InterruptedBySwitchingToBatteryPower",
        QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Interrupted by switching to battery")},
    {InterruptedByNetworkFilter, "InterruptedByNetworkFilter",
        QT_TRANSLATE_NOOP("TWB::GUI::PlanStates", "Interrupted by network filter")},
};

const Entry* find(int state)
{
    for (const Entry& entry : Entries) {
        if (entry.state == state)
            return &entry;
    }
    return nullptr;
}

QString translate(const char* text)
{
    return QCoreApplication::translate(Context, text);
}

} // namespace

bool isKnown(int state)
{
    return find(state) != nullptr;
}

QString name(int state)
{
    const Entry* entry = find(state);
    return entry ? QString::fromLatin1(entry->name) : QString();
}

QString displayText(int state)
{
    const Entry* entry = find(state);
    return entry ? translate(entry->text) : QString();
}

QMap<int, QString> kindTexts()
{
    return {
        {1, QCoreApplication::translate(Context, "Backup", "plan kind")},
        {2, QCoreApplication::translate(Context, "Restore", "plan kind")},
    };
}

QMap<int, QString> typeTexts()
{
    return {
        {0, QCoreApplication::translate(Context, "File", "plan type")},
        {1, QCoreApplication::translate(Context, "Disk Image", "plan type")},
        {2, QCoreApplication::translate(Context, "System Full File", "plan type")},
        {3, QCoreApplication::translate(Context, "Unknown", "plan type")},
    };
}

QMap<int, QString> runStatusTexts()
{
    return {
        {1, QCoreApplication::translate(Context, "Run", "run status: the plan is running")},
        {2, QCoreApplication::translate(Context, "Stop", "run status: the plan is idle")},
    };
}

} // namespace TWB::GUI::PlanStates
