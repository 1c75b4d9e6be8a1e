#pragma once

#include "platform/twbplatform_export.h"

#include <QMap>
#include <QObject>
#include <QString>

namespace TWL::Cloud {
Q_NAMESPACE_EXPORT(TWBPLATFORM_EXPORT)

/// Storage back-ends. The numbers travel in account rows ("Type") and saved plans, so they never change;
/// 32 was never given out.
enum Type : int {
    /// No back-end; has no type name.
    Unknown = 0,
    FileSystem = 1,
    AmazonS3 = 2,
    AzureBlob = 3,
    OracleCloud = 4,
    Rackspace = 5,
    Openstack = 6,
    GoogleStorage = 7,
    SoftLayer = 8,
    HPCloud = 9,
    HPHelion = 10,
    S3Compatible = 11,
    Scality = 12,
    DreamObjects = 13,
    Cloudian = 14,
    ThinkOn = 15,
    Aruba = 16,
    Tiscali = 17,
    Seeweb = 18,
    CenturyLink = 19,
    AmazonS3Chinese = 20,
    Minio = 21,
    Dunkel = 22,
    Connectria = 23,
    HostEurope = 24,
    GreenQloud = 25,
    Constant = 26,
    Webzilla = 27,
    Verizon = 28,
    Wasabi = 29,
    AlibabaCloud = 30,
    BackBlaze = 31,
    Sftp = 33,
    WasabiUB = 34,
    WasabiUBStage = 35,
    WasabiStage = 36,
    AmazonS3UB = 37,
    FBS_CLOUD = 38,
};
Q_ENUM_NS(Type)

/// The name of each type, as a cloud configuration's "CloudType" holds it. Unknown and 32 have none.
TWBPLATFORM_EXPORT const QMap<Type, QString>& typeNames();

} // namespace TWL::Cloud
