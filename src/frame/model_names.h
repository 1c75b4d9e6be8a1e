#pragma once

#include <QLatin1String>

/// Names under which the host registers the shared models.
namespace TWB::GUI::ModelNames {

inline constexpr QLatin1String PlanTable("TwbPlanTableModel");
inline constexpr QLatin1String PlanBackupTable("TwbPlanBackupTableModel");
inline constexpr QLatin1String PlanRestoreTable("TwbPlanRestoreTableModel");
inline constexpr QLatin1String StorageConnection("TwbStorageConnectionModel");
inline constexpr QLatin1String StorageBackup("TwbStorageBackupModel");
inline constexpr QLatin1String StorageBackupFull("TwbStorageBackupFullModel");
inline constexpr QLatin1String StorageBackupTable("TwbStorageBackupTableModel");
inline constexpr QLatin1String RestoreContent("TwbRestoreContentModel");
inline constexpr QLatin1String RestoreContentFolder("TwbRestoreContentFolder");
inline constexpr QLatin1String RestoreDiskConfiguration("TwbRestoreDiskConfigurationModel");
inline constexpr QLatin1String HistoryGetByPlan("TwbHistoryGetByPlanModel");
inline constexpr QLatin1String HistoryGetByFile("TwbHistoryGetByFileModel");
inline constexpr QLatin1String DiskInfo("TwbDiskInfoModel");
inline constexpr QLatin1String FileSystemChecked("TwbFileSystemCheckedModel");
inline constexpr QLatin1String FileModelBase("TwbFileModelBase");
// The misspelling is the key the host and the library share.
inline constexpr QLatin1String AmazonLifecyclePolicy("TwbAmazonLifececlyPolicyModel");
inline constexpr QLatin1String SslTrustedStorage("TwbSslTrustedStorageModelInfo");

} // namespace TWB::GUI::ModelNames
