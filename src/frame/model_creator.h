#pragma once

#include "twbconsole_export.h"

#include <QPointer>
#include <QString>

namespace TWB::GUI {

class BaseModel;
class ModelManager;

/// Makes the shared model registered under name(). The host supplies one per model name.
/// A creator that dies takes itself out of the registry it was registered with.
class TWBCONSOLE_EXPORT ModelCreator
{
public:
    ModelCreator() = default;
    ModelCreator(const ModelCreator&) = delete;
    ModelCreator& operator=(const ModelCreator&) = delete;
    virtual ~ModelCreator();

    virtual BaseModel* create() = 0;
    virtual const QString& name() const = 0;

private:
    friend class ModelManager;
    QPointer<ModelManager> registry; // the registry that holds this creator, if any
};

} // namespace TWB::GUI
