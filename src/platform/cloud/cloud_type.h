#pragma once

#include "platform/twbplatform_export.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QSet>
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
/// The name of one type; empty for a number without one.
TWBPLATFORM_EXPORT QString typeName(Type type);
/// The type of a name from typeNames(), or of a number written as text; Unknown for anything else.
TWBPLATFORM_EXPORT Type typeFromName(const QString& name);
/// Whether the number is one of the declared types (0 and 32 are not).
TWBPLATFORM_EXPORT bool isKnownType(int value);

/// The translated label of each type that a user can create in the standalone edition (22 of them).
/// Rebuilt on each call, so that a language loaded later is honoured.
TWBPLATFORM_EXPORT QMap<Type, QString> typeLabels();
/// The label of one type; empty for a type that cannot be created.
TWBPLATFORM_EXPORT QString typeLabel(Type type);
/// The labelled types in the order of the account chooser.
TWBPLATFORM_EXPORT const QList<Type>& chooserOrder();

/// Back-ends that speak S3 with an endpoint of their own.
TWBPLATFORM_EXPORT const QSet<Type>& s3CompatibleTypes();
/// Amazon's own S3 back-ends.
TWBPLATFORM_EXPORT const QSet<Type>& amazonTypes();
/// The OpenStack-like back-ends, Google Cloud among them as the type tables have always declared.
TWBPLATFORM_EXPORT const QSet<Type>& openStackTypes();
/// The SFTP back-end.
TWBPLATFORM_EXPORT const QSet<Type>& sftpTypes();
/// Whether a type is reached through the S3 protocol: Amazon's and the S3-compatible ones.
TWBPLATFORM_EXPORT bool isS3Like(Type type);

} // namespace TWL::Cloud
