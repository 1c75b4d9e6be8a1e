#pragma once

#include <QString>

namespace TWB::Service {

/// The plan states a run passes through, by the numbers the console knows them by.
namespace RunState {

enum State : int {
    Starting = 0,
    Running = 2,
    PurgingFiles = 3,
    Success = 6,
    Warning = 7,
    Fail = 8,
    Interrupted = 9,
    UpdatingRepository = 11,
    Stopping = 12,
    RunningPreBackupAction = 17,
    RunningPostBackupAction = 18,
    Preparing = 19,
    Downloading = 20,
    InterruptedByBattery = 101,
};

/// The state's name as progress notifications carry it in "status".
inline QString name(int state)
{
    switch (state) {
    case Starting:
        return QStringLiteral("Starting");
    case Running:
        return QStringLiteral("Running");
    case PurgingFiles:
        return QStringLiteral("PurgingFiles");
    case Success:
        return QStringLiteral("Success");
    case Warning:
        return QStringLiteral("Warning");
    case Fail:
        return QStringLiteral("Fail");
    case Interrupted:
        return QStringLiteral("Interrupted");
    case UpdatingRepository:
        return QStringLiteral("UpdatingRepository");
    case Stopping:
        return QStringLiteral("Stopping");
    case RunningPreBackupAction:
        return QStringLiteral("RunningPreBackupAction");
    case RunningPostBackupAction:
        return QStringLiteral("RunningPostBackupAction");
    case Preparing:
        return QStringLiteral("Preparing");
    case Downloading:
        return QStringLiteral("Downloading");
    case InterruptedByBattery:
        return QStringLiteral("InterruptedBySwitchingToBatteryPower");
    default:
        return QStringLiteral("Unknown");
    }
}

} // namespace RunState

} // namespace TWB::Service
