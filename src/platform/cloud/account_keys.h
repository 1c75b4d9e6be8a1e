#pragma once

#include "platform/cloud/cloud_type.h"
#include "platform/twbplatform_export.h"

#include <QString>
#include <QStringList>

/// The keys of an account's saved document (sent in "SaveStorage", read back as "DetailParams", secrets
/// enciphered) and of its cloud configuration (the map given to OperationManager, secrets plain).
/// The two differ on purpose in a few keys: "UserName" against "Username", "UseProy" against "UseProxy".
namespace TWL::Cloud::Key {

// Both views.
inline const QString CloudId = QStringLiteral("CloudId");
inline const QString CloudType = QStringLiteral("CloudType");
inline const QString AccessKey = QStringLiteral("AccessKey");
inline const QString SecretKey = QStringLiteral("SecretKey");
inline const QString ContainerName = QStringLiteral("ContainerName");
inline const QString ContainerId = QStringLiteral("ContainerId");
inline const QString UseSsl = QStringLiteral("UseSsl");
inline const QString Endpoint = QStringLiteral("Endpoint");
inline const QString Signature = QStringLiteral("Signature");
inline const QString Archive2Glacier = QStringLiteral("Archive2Glacier");
inline const QString Password = QStringLiteral("Password");
inline const QString Type = QStringLiteral("Type");
inline const QString AuthType = QStringLiteral("AuthType");
inline const QString ServiceAccount = QStringLiteral("ServiceAccount");
inline const QString ProjectId = QStringLiteral("ProjectId");
inline const QString PrivateKey = QStringLiteral("PrivateKey");
inline const QString RefreshToken = QStringLiteral("RefreshToken");
inline const QString InitCode = QStringLiteral("InitCode");
inline const QString ApiKey = QStringLiteral("ApiKey");
inline const QString UseInternalUrl = QStringLiteral("UseInternalUrl");
inline const QString Region = QStringLiteral("Region");
inline const QString TenantId = QStringLiteral("TenantId");
inline const QString TenantName = QStringLiteral("TenantName");
inline const QString DomainId = QStringLiteral("DomainId");
inline const QString DomainName = QStringLiteral("DomainName");
inline const QString UseScope = QStringLiteral("UseScope");
inline const QString ProjectName = QStringLiteral("ProjectName");
inline const QString AccountId = QStringLiteral("AccountId");
inline const QString ApplicationKey = QStringLiteral("ApplicationKey");
inline const QString Address = QStringLiteral("Address");
inline const QString Port = QStringLiteral("Port");
inline const QString KeepAlive = QStringLiteral("KeepAlive");
inline const QString Path = QStringLiteral("Path");
inline const QString User = QStringLiteral("User");

// Saved document only.
/// Azure and OpenStack user in the saved document.
inline const QString UserName = QStringLiteral("UserName");
/// SFTP proxy switch in the saved document, spelt as it has always been saved.
inline const QString UseProy = QStringLiteral("UseProy");

// Cloud configuration only.
/// Azure and OpenStack user in the cloud configuration.
inline const QString Username = QStringLiteral("Username");
inline const QString UseProxy = QStringLiteral("UseProxy");

// Further keys that particular pages read.
inline const QString AccountType = QStringLiteral("AccountType");
inline const QString BackupPrefix = QStringLiteral("BackupPrefix");
inline const QString DisplayName = QStringLiteral("DisplayName");
inline const QString UsedSpace = QStringLiteral("UsedSpace");
inline const QString StorageId = QStringLiteral("StorageId");
inline const QString AzureStack = QStringLiteral("AzureStack");
inline const QString AzureAccountType = QStringLiteral("AzureAccountType");
inline const QString ChunkSize = QStringLiteral("ChunkSize");
inline const QString Company = QStringLiteral("Company");
inline const QString Destination = QStringLiteral("Destination");
inline const QString LimitType = QStringLiteral("LimitType");
inline const QString IgnoreCertificate = QStringLiteral("IgnoreCertificate");
inline const QString AdditionalSettings = QStringLiteral("AdditionalSettings");
inline const QString GlacierRestoreType = QStringLiteral("GlacierRestoreType");
inline const QString EndpointHttps = QStringLiteral("EndpointHttps");
inline const QString EndpointHttp = QStringLiteral("EndpointHttp");
inline const QString FolderPath = QStringLiteral("FolderPath");
inline const QString SpaceLimit = QStringLiteral("SpaceLimit");

} // namespace TWL::Cloud::Key

namespace TWL::Cloud {

/// Google's ways of signing in, as "AuthType" holds them.
enum GoogleAuthType : int {
    GoogleAccessKey = 0,
    GoogleServiceAccount = 1,
    GoogleInstalledApplication = 2,
};

/// "Signature" of a saved document: 2 is AWS2; every other value, 0 of older documents included, is AWS4.
enum SavedSignature : int {
    SignatureAws2 = 2,
    SignatureAws4 = 4,
};

/// The keys a saved document of the type holds; `authType` picks Google's variant. Optional keys of the
/// S3 family ("Signature") and of OpenStack (those of its authentication versions) are included.
TWBPLATFORM_EXPORT QStringList savedDocumentKeys(Type type, int authType = GoogleAccessKey);
/// The keys of the saved document that are stored enciphered.
TWBPLATFORM_EXPORT QStringList savedSecretKeys(Type type, int authType = GoogleAccessKey);
/// The keys of the cloud configuration of the type, "CloudId" and "CloudType" included.
TWBPLATFORM_EXPORT QStringList cloudConfigKeys(Type type, int authType = GoogleAccessKey);

} // namespace TWL::Cloud
