#include "platform/cloud/cloud_type.h"

namespace TWL::Cloud {

const QMap<Type, QString>& typeNames()
{
    // The names are what the cloud layer keys its back-ends by, blanks and brackets included.
    static const QMap<Type, QString> names = {
        {FileSystem, QStringLiteral("FileSystem")},
        {AmazonS3, QStringLiteral("AmazonS3")},
        {AzureBlob, QStringLiteral("AzureBlob")},
        {OracleCloud, QStringLiteral("OracleCloud")},
        {Rackspace, QStringLiteral("Rackspace")},
        {Openstack, QStringLiteral("Openstack")},
        {GoogleStorage, QStringLiteral("GoogleStorage")},
        {SoftLayer, QStringLiteral("SoftLayer")},
        {HPCloud, QStringLiteral("HPCloud")},
        {HPHelion, QStringLiteral("HPHelion")},
        {S3Compatible, QStringLiteral("S3Compatible")},
        {Scality, QStringLiteral("Scality")},
        {DreamObjects, QStringLiteral("DreamObjects")},
        {Cloudian, QStringLiteral("Cloudian")},
        {ThinkOn, QStringLiteral("ThinkOn")},
        {Aruba, QStringLiteral("Aruba")},
        {Tiscali, QStringLiteral("Tiscali")},
        {Seeweb, QStringLiteral("Seeweb")},
        {CenturyLink, QStringLiteral("CenturyLink")},
        {AmazonS3Chinese, QStringLiteral("AmazonS3Chinese")},
        {Minio, QStringLiteral("Minio")},
        {Dunkel, QStringLiteral("Dunkel")},
        {Connectria, QStringLiteral("Connectria")},
        {HostEurope, QStringLiteral("HostEurope")},
        {GreenQloud, QStringLiteral("GreenQloud")},
        {Constant, QStringLiteral("Constant")},
        {Webzilla, QStringLiteral("Webzilla")},
        {Verizon, QStringLiteral("Verizon")},
        {Wasabi, QStringLiteral("Wasabi")},
        {AlibabaCloud, QStringLiteral("AlibabaCloud")},
        {BackBlaze, QStringLiteral("BackBlaze")},
        {Sftp, QStringLiteral("Sftp")},
        {WasabiUB, QStringLiteral("Wasabi (UB)")},
        {WasabiUBStage, QStringLiteral("Wasabi (UB) Stage")},
        {WasabiStage, QStringLiteral("Wasabi Stage")},
        {AmazonS3UB, QStringLiteral("AmazonS3 (UB)")},
        {FBS_CLOUD, QStringLiteral("FBS_CLOUD")},
    };
    return names;
}

} // namespace TWL::Cloud
