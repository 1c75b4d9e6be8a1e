#pragma once

#include "platform/cloud/cloud_type.h"
#include "platform/twbplatform_export.h"

#include <QJsonObject>
#include <QVariantMap>

namespace TWB::DataConverter::StorageConfig {

/// Turns an account's saved document into its cloud configuration: the keys are renamed where the two
/// views differ, the secrets are deciphered, and "CloudId" (a fresh id) and "CloudType" are added.
class TWBPLATFORM_EXPORT Twb2Twl final
{
public:
    /// From a saved document ("DetailParams") alone, whose type is told by the keys it holds; also takes
    /// a whole account row ("Type" and "DetailParams"). A document that fits no type gives an empty map.
    static QVariantMap fromTwb(const QJsonObject& account);
    /// From a saved document of a known type.
    static QVariantMap fromTwb(const QJsonObject& document, TWL::Cloud::Type type);
    /// The type a saved document's keys tell; Unknown when they fit none.
    static TWL::Cloud::Type guessType(const QJsonObject& document);
};

} // namespace TWB::DataConverter::StorageConfig
