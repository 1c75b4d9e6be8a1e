#pragma once

#include <QLatin1String>

/// Names under which the host registers the shared models.
namespace TWB::GUI::ModelNames {

inline const QLatin1String PlanTable("TwbPlanTableModel");
inline const QLatin1String PlanBackupTable("TwbPlanBackupTableModel");
inline const QLatin1String PlanRestoreTable("TwbPlanRestoreTableModel");
inline const QLatin1String StorageConnection("TwbStorageConnectionModel");
inline const QLatin1String StorageBackup("TwbStorageBackupModel");
inline const QLatin1String StorageBackupFull("TwbStorageBackupFullModel");
inline const QLatin1String StorageBackupTable("TwbStorageBackupTableModel");
inline const QLatin1String RestoreContent("TwbRestoreContentModel");
inline const QLatin1String RestoreContentFolder("TwbRestoreContentFolder");
inline const QLatin1String RestoreDiskConfiguration("TwbRestoreDiskConfigurationModel");
inline const QLatin1String HistoryGetByPlan("TwbHistoryGetByPlanModel");
inline const QLatin1String HistoryGetByFile("TwbHistoryGetByFileModel");
inline const QLatin1String DiskInfo("TwbDiskInfoModel");
inline const QLatin1String FileSystemChecked("TwbFileSystemCheckedModel");
inline const QLatin1String FileModelBase("TwbFileModelBase");
// The misspelling is the key the host and the library share.
inline const QLatin1String AmazonLifecyclePolicy("TwbAmazonLifececlyPolicyModel");
inline const QLatin1String SslTrustedStorage("TwbSslTrustedStorageModelInfo");

} // namespace TWB::GUI::ModelNames
