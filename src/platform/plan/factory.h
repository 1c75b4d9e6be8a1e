#pragma once

#include "platform/twbplatform_export.h"

#include <QString>

class QDomDocument;

namespace TWB::Info::Plan {

class Base;

/// Builds plan objects from their XML documents.
class TWBPLATFORM_EXPORT Factory final
{
public:
    /// A new plan of the class the document names, owned by the caller; null when the document is
    /// no plan or is malformed. `error` receives the reason.
    static Base* create(const QDomDocument& document, QString* error = nullptr);
    /// The same from XML text.
    static Base* create(const QString& xml, QString* error = nullptr);
};

} // namespace TWB::Info::Plan
