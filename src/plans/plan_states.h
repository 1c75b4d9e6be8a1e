#pragma once

#include "twbconsole_export.h"

#include <QMap>
#include <QString>

/// The plan-state vocabulary that the plan tables, the status feed and every plan view share.
/// The numbers are the contract with the service and never change.
namespace TWB::GUI::PlanStates {

enum State : int {
    Unknown = -1,
    Starting = 0,
    UpdatedFileSearch = 1,
    Running = 2,
    PurgingFiles = 3,
    Pausing = 4,
    Paused = 5,
    Success = 6,
    Warning = 7,
    Fail = 8,
    Interrupted = 9,
    InterruptedBySchedule = 10,
    UpdatingRepository = 11,
    Stopping = 12,
    CreatingVSSSnapshot = 13,
    CalculatingMD5 = 14,
    InstantBackup = 15,
    InterruptedForUpdate = 16,
    RunningPreBackupAction = 17,
    RunningPostBackupAction = 18,
    Preparing = 19,
    Downloading = 20,
    RunningWindowsBackup = 21,
    InterruptedSystemSleep = 100,
    InterruptedBySwitchingToBatteryPower = 101,
    InterruptedByNetworkFilter = 102
};

/// Whether the number is one of the states above.
TWBCONSOLE_EXPORT bool isKnown(int state);
/// The state's name, as "UpdatedFileSearch"; empty for an unknown number.
TWBCONSOLE_EXPORT QString name(int state);
/// The state's translated text for display, as "Updated file search"; empty for an unknown number.
TWBCONSOLE_EXPORT QString displayText(int state);

/// Plan kind, the "SubType" column: 1 "Backup", 2 "Restore". Translated.
TWBCONSOLE_EXPORT QMap<int, QString> kindTexts();
/// Plan type, the "Type" column: 0 "File", 1 "Disk Image", 2 "System Full File", 3 "Unknown". Translated.
TWBCONSOLE_EXPORT QMap<int, QString> typeTexts();
/// Run status, the "Status" column: 1 "Run", 2 "Stop". Translated.
TWBCONSOLE_EXPORT QMap<int, QString> runStatusTexts();

} // namespace TWB::GUI::PlanStates
