#include "platform/cloud/cloud_type.h"

#include <QCoreApplication>
#include <QPair>

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

namespace TWL::Cloud {

QString typeName(Type type)
{
    return typeNames().value(type);
}

Type typeFromName(const QString& name)
{
    const QString text = name.trimmed();
    if (text.isEmpty())
        return Unknown;
    bool number = false;
    const int value = text.toInt(&number);
    if (number)
        return isKnownType(value) ? Type(value) : Unknown;
    return typeNames().key(text, Unknown);
}

bool isKnownType(int value)
{
    return typeNames().contains(Type(value));
}

QMap<Type, QString> typeLabels()
{
    // Marked here, translated at each call.
    static const QList<QPair<Type, const char*>> labels = {
        {FileSystem, QT_TRANSLATE_NOOP("TWL::Cloud", "File System")},
        {AmazonS3, QT_TRANSLATE_NOOP("TWL::Cloud", "Amazon S3 & Glacier")},
        {AzureBlob, QT_TRANSLATE_NOOP("TWL::Cloud", "Azure")},
        {OracleCloud, QT_TRANSLATE_NOOP("TWL::Cloud", "Oracle Cloud")},
        {Rackspace, QT_TRANSLATE_NOOP("TWL::Cloud", "Rackspace")},
        {Openstack, QT_TRANSLATE_NOOP("TWL::Cloud", "OpenStack")},
        {GoogleStorage, QT_TRANSLATE_NOOP("TWL::Cloud", "Google Cloud")},
        {SoftLayer, QT_TRANSLATE_NOOP("TWL::Cloud", "SoftLayer")},
        {HPCloud, QT_TRANSLATE_NOOP("TWL::Cloud", "HP Cloud")},
        {S3Compatible, QT_TRANSLATE_NOOP("TWL::Cloud", "S3 Compatible")},
        {Scality, QT_TRANSLATE_NOOP("TWL::Cloud", "Scality")},
        {DreamObjects, QT_TRANSLATE_NOOP("TWL::Cloud", "DreamObjects")},
        {Cloudian, QT_TRANSLATE_NOOP("TWL::Cloud", "Cloudian")},
        {ThinkOn, QT_TRANSLATE_NOOP("TWL::Cloud", "ThinkOn")},
        {CenturyLink, QT_TRANSLATE_NOOP("TWL::Cloud", "CenturyLink")},
        {AmazonS3Chinese, QT_TRANSLATE_NOOP("TWL::Cloud", "Amazon S3 (China)")},
        {Minio, QT_TRANSLATE_NOOP("TWL::Cloud", "Minio")},
        {Verizon, QT_TRANSLATE_NOOP("TWL::Cloud", "Verizon")},
        {Wasabi, QT_TRANSLATE_NOOP("TWL::Cloud", "Wasabi")},
        {AlibabaCloud, QT_TRANSLATE_NOOP("TWL::Cloud", "Alibaba Cloud")},
        {BackBlaze, QT_TRANSLATE_NOOP("TWL::Cloud", "Backblaze B2")},
        {Sftp, QT_TRANSLATE_NOOP("TWL::Cloud", "SFTP")},
    };
    QMap<Type, QString> translated;
    for (const auto& label : labels)
        translated.insert(label.first, QCoreApplication::translate("TWL::Cloud", label.second));
    return translated;
}

QString typeLabel(Type type)
{
    return typeLabels().value(type);
}

const QList<Type>& chooserOrder()
{
    static const QList<Type> order = {AmazonS3, AzureBlob, FileSystem, GoogleStorage, Openstack, Rackspace,
        AmazonS3Chinese, BackBlaze, CenturyLink, OracleCloud, Scality, SoftLayer, S3Compatible, Cloudian, DreamObjects,
        HPCloud, ThinkOn, Verizon, Minio, Wasabi, AlibabaCloud, Sftp};
    return order;
}

const QSet<Type>& s3CompatibleTypes()
{
    static const QSet<Type> types = {S3Compatible, Scality, DreamObjects, Cloudian, ThinkOn, Aruba, Tiscali, Seeweb,
        CenturyLink, Dunkel, Connectria, HostEurope, GreenQloud, Constant, Webzilla, Minio, Verizon, Wasabi,
        AlibabaCloud, WasabiUB, WasabiUBStage, WasabiStage};
    return types;
}

const QSet<Type>& amazonTypes()
{
    static const QSet<Type> types = {AmazonS3, AmazonS3Chinese, AmazonS3UB};
    return types;
}

const QSet<Type>& openStackTypes()
{
    static const QSet<Type> types = {OracleCloud, Rackspace, Openstack, GoogleStorage, SoftLayer, HPCloud, HPHelion};
    return types;
}

const QSet<Type>& sftpTypes()
{
    static const QSet<Type> types = {Sftp};
    return types;
}

bool isS3Like(Type type)
{
    return amazonTypes().contains(type) || s3CompatibleTypes().contains(type);
}

} // namespace TWL::Cloud
