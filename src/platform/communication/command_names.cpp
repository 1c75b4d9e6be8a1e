#include "platform/communication/command_names.h"

namespace TWB::Common::Communication {

const QStringList& knownCommandNames()
{
    static const QStringList names = {
        // plans
        QStringLiteral("PlanGetList"),
        QStringLiteral("PlanGetInfo"),
        QStringLiteral("PlanGetXML"),
        QStringLiteral("GetPlansXML"),
        QStringLiteral("PlanUpdate"),
        QStringLiteral("PlanExecuteStart"),
        QStringLiteral("PlanExecuteStop"),
        QStringLiteral("PlanRemove"),
        // sources and content
        QStringLiteral("GetUsedShare"),
        QStringLiteral("GetDiskInfo"),
        QStringLiteral("GetContentType"),
        QStringLiteral("GetRestoreContent"),
        QStringLiteral("GetRestoreContentManualMode"),
        QStringLiteral("GetRestoreContentByName"),
        QStringLiteral("GetDiskImageContent"),
        QStringLiteral("ContentGetFolder"),
        QStringLiteral("ContentGetFolderMultiPart"),
        // history
        QStringLiteral("HistoryListByPlan"),
        QStringLiteral("HistoryListByFiles"),
        // storage accounts
        QStringLiteral("StorageGetConnection"),
        QStringLiteral("StorageDeleteFileSystem"),
        QStringLiteral("StorageGetConnectionById"),
        QStringLiteral("GetStorageDestinationInfo"),
        QStringLiteral("StorageEditAccount"),
        QStringLiteral("SaveStorage"),
        QStringLiteral("AppendToSslStorage"),
        QStringLiteral("GetPeerSslCertificate"),
        // repository synchronisation
        QStringLiteral("CheckRestorePassword"),
        QStringLiteral("SynchronizeRepository"),
        QStringLiteral("SynchronizeRepositoryCancel"),
        QStringLiteral("GetSynchronizeRepositoryList"),
        // managed edition and settings
        QStringLiteral("GetFbsDestinationPrefixes"),
        QStringLiteral("ChangeUserPassword"),
        QStringLiteral("GetSettings"),
        QStringLiteral("GetProductOptions"),
        QStringLiteral("SetProductOptions"),
        QStringLiteral("GetNoticeSettings"),
        QStringLiteral("SetNoticeSettings"),
        QStringLiteral("SendTestEmail"),
        QStringLiteral("ChangeAccount"),
        QStringLiteral("ExportConfiguration"),
        QStringLiteral("ImportConfiguration"),
        QStringLiteral("SendDiagnosticLog"),
        QStringLiteral("ReadFromSslStorage"),
        QStringLiteral("RemoveFromSslStorage"),
        QStringLiteral("WriteToSslStorage"),
        // licensing
        QStringLiteral("CheckUserExists"),
        QStringLiteral("UserSignUp"),
        // declared for the service and the host
        QStringLiteral("RemoveFiles"),
        QStringLiteral("RemoveFilesCancel"),
        QStringLiteral("FbsDataDeletingInfo"),
        QStringLiteral("ChangeCommonMode"),
        QStringLiteral("ForceUpdate"),
        QStringLiteral("UninstallClient"),
        QStringLiteral("UninstallNotification"),
        QStringLiteral("GetAndApplyBackupConfiguration"),
        QStringLiteral("GetAndApplyRemoteDeployConfigurations"),
        QStringLiteral("DownloadAndApplyRebrandingPackage"),
        QStringLiteral("RegenerateHID"),
    };
    return names;
}

} // namespace TWB::Common::Communication
