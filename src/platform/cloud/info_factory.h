#pragma once

#include "platform/cloud/cloud_type.h"
#include "platform/cloud/info.h"
#include "platform/twbplatform_export.h"

#include <QSharedPointer>
#include <QVariantMap>

namespace TWL::Cloud::Info {

class TWBPLATFORM_EXPORT InfoFactory final
{
public:
    /// The Info of a type; null for Unknown and numbers that name no type.
    static QSharedPointer<Base> create(Type type);
    /// The Info of a cloud configuration's "CloudType".
    static QSharedPointer<Base> create(const QVariantMap& config);
};

} // namespace TWL::Cloud::Info

namespace TWL::Cloud {
using InfoFactory = Info::InfoFactory;
} // namespace TWL::Cloud
