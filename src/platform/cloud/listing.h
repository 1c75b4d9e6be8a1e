#pragma once

#include "platform/cloud/ioperation.h"
#include "platform/twbplatform_export.h"

#include <QJsonArray>

namespace TWL::Cloud::Operation {

/// One page of what a container holds below a prefix. data() holds Api::ListingObject entries, folders
/// and objects together, sorted by name.
class TWBPLATFORM_EXPORT Listing final : public IOperation
{
    Q_OBJECT
public:
    Listing(const QVariantMap& config, const QString& prefix, const QString& marker, const QString& delimiter,
        unsigned short count, QObject* parent = nullptr);

    void exec() override;
    QJsonArray data() const { return m_data; }
    /// The prefix the listing was asked for.
    QString prefix() const { return m_prefix; }
    /// The name to ask the next page from; empty on the last page.
    QString marker() const { return m_nextMarker; }
    QString delimiter() const { return m_delimiter; }
    /// Without a delimiter, how many folder levels below the prefix's folder are walked; 0, the default,
    /// walks all. Set before exec().
    void setMaxDepth(int depth) { m_maxDepth = depth; }

private:
    void take(const QJsonArray& entries);

    QString m_prefix;
    QString m_marker;
    QString m_delimiter;
    unsigned short m_count;
    int m_maxDepth = 0;
    QJsonArray m_data;
    QString m_nextMarker;
};

} // namespace TWL::Cloud::Operation
