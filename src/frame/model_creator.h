#pragma once

#include "twbconsole_export.h"

#include <QString>

namespace TWB::GUI {

class BaseModel;

/// Makes the shared model registered under name(). The host supplies one per model name.
class TWBCONSOLE_EXPORT ModelCreator
{
public:
    virtual ~ModelCreator();

    virtual BaseModel* create() = 0;
    virtual const QString& name() const = 0;
};

} // namespace TWB::GUI
