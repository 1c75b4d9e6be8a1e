#include "backup_wizard/storage_class_info.h"

namespace TWB::GUI {

namespace {

QString fiveParts(const QString& a, const QString& b, const QString& c, const QString& d, const QString& e)
{
    return QStringLiteral("<p><b>%1</b> %2</p><ul><li>%3</li><li>%4</li><li>%5</li></ul>").arg(a, b, c, d, e);
}

} // namespace

QString StorageClassInfo::AmazonS3::toolTip(int storageClass)
{
    switch (storageClass) {
    case 5:
        return fiveParts(tr("S3 One Zone-Infrequent Access"),
            tr("stores data in a single Availability Zone (AZ) unlike other storage classes, which store data in a "
               "minimum of three AZs. Because of this, storing data in S3 One Zone-IA costs 20% less than storing it "
               "in S3 Standard-IA"),
            tr("Same low latency and high throughput performance of S3 Standard and S3 Standard-IA"),
            tr("Designed for durability of 99.999999999% of objects in a single Availability Zone, but data will be "
               "lost in the event of Availability Zone destruction"),
            tr("Designed for 99.5% availability over a given year"));
    case 6:
        return fiveParts(tr("S3 Intelligent-Tiering"),
            tr("storage class is designed to optimize costs by automatically moving data to the most cost-effective "
               "access tier, without performance impact or operational overhead. "),
            tr("Same low latency and high throughput performance of S3 Standard. "),
            tr("Designed for durability of 99.999999999% of objects across multiple Availability Zones. Resilient "
               "against events that impact an entire Availability Zone"),
            tr("Designed for 99.9% availability over a given year"));
    case 1:
        return fiveParts(tr("S3 Standard"),
            tr("offers high durability, availability, and performance object storage for frequently accessed data. "
               "Because it delivers low latency and high throughput, S3 Standard is perfect for a wide variety of use "
               "cases."),
            tr("Low latency and high throughput performance"),
            tr("Designed for durability of 99.999999999% of objects across multiple Availability Zones. Data is "
               "resilient in the event of one entire Availability Zone destruction"),
            tr("Designed for 99.99% availability over a given year"));
    case 7:
        return fiveParts(tr("S3 Glacier Deep Archive"),
            tr("is Amazon S3’s lowest-cost storage class and supports long-term retention and digital preservation "
               "for data that won’t be regularly accessed. It is designed for customers that retain data sets for "
               "7-10 years or longer to meet regulatory compliance requirements."),
            tr("Designed for durability of 99.999999999% of objects across multiple Availability Zones"),
            tr("Lowest cost storage class designed for long-term retention of data that will be retained for 7-10 "
               "years"),
            tr("Retrieval time within 12 hours"));
    case 3:
        return fiveParts(tr("S3 Glacier"),
            tr("is a secure, durable, and low-cost storage class for data archiving. To keep costs low yet suitable "
               "for varying needs, S3 Glacier provides three retrieval options that range from a few minutes to "
               "hours."),
            tr("Low-cost design is ideal for long-term archive"),
            tr("Configurable retrieval times, from minutes to hours"),
            tr("Designed for durability of 99.999999999% of objects across multiple Availability Zones. Data is "
               "resilient in the event of one entire Availability Zone destruction"));
    case 4:
        return fiveParts(tr("S3 Standard-IA"),
            tr(" is a storage class for data that is accessed less frequently, but requires rapid access when "
               "needed. S3 Standard-IA offers the high durability, high throughput, and low latency of S3 Standard, "
               "with a low per GB storage price and per GB retrieval fee."),
            tr("Same low latency and high throughput performance of S3 Standard"),
            tr("Designed for durability of 99.999999999% of objects across multiple Availability Zones. Data is "
               "resilient in the event of one entire Availability Zone destruction"),
            // The missing letter is in the product's own text.
            tr("esigned for 99.9% availability over a given year"));
    default:
        return QString();
    }
}

QString StorageClassInfo::Azure::toolTip(int tier)
{
    switch (tier) {
    case Default:
        return QStringLiteral("<p><b>%1</b> %2</p>")
            .arg(tr("Default"),
                tr("- with this setting the data will be sent to the storage and stored according to the container "
                   "tier setting, if none is configured the data will be stored in Hot storage tier."));
    case Hot:
        return QStringLiteral("<p><b>%1</b> %2</p><ul><li>%3</li><li>%4</li></ul>")
            .arg(tr("Hot"),
                tr("storage has higher storage costs than cool and archive storage, but the lowest access costs. "
                   "Example usage scenarios for the hot storage tier include"),
                tr("Data that is in active use or expected to be accessed (read from and written to) frequently."),
                tr("Data that is staged for processing and eventual migration to the cool storage tier."));
    case Archive:
        return fiveParts(tr("Archive"),
            tr("storage has the lowest storage cost and higher data retrieval costs compared to hot and cool storage. "
               "This tier is intended for data that can tolerate several hours of retrieval latency and will remain "
               "in the archive tier for at least 180 days. Example usage scenarios for the archive storage tier "
               "include:"),
            tr("Long-term backup, secondary backup, and archival datasets."),
            tr("Original (raw) data that must be preserved, even after it has been processed into final usable "
               "form."),
            tr("Compliance and archival data that needs to be stored for a long time and is hardly ever accessed."));
    case Cool:
        return fiveParts(tr("Cool"),
            tr("storage tier has lower storage costs and higher access costs compared to hot storage. This tier is "
               "intended for data that will remain in the cool tier for at least 30 days. Example usage scenarios "
               "for the cool storage tier include:"),
            tr("Short-term backup and disaster recovery datasets."),
            tr("Older media content not viewed frequently anymore but is expected to be available immediately when "
               "accessed."),
            tr("Large data sets that need to be stored cost effectively while more data is being gathered for future "
               "processing."));
    default:
        return QString();
    }
}

} // namespace TWB::GUI
