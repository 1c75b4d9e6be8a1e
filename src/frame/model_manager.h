#pragma once

#include "twbconsole_export.h"

#include <QMap>
#include <QObject>
#include <QPointer>
#include <QString>

namespace TWB::GUI {

class BaseModel;
class ModelCreator;

/// Registry of the shared models by name. The host registers one creator per name;
/// the library asks for models by name at each use and keeps no pointer.
class TWBCONSOLE_EXPORT ModelManager final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(ModelManager)
public:
    static QPointer<ModelManager> instance();

    /// Stores the creator under its name, replacing an earlier one. Does not take ownership: a creator
    /// unregisters itself when it is destroyed.
    void registrateCreator(ModelCreator& creator);
    /// Forgets the creator under every name it holds; create() then gives null for those names.
    void unregisterCreator(ModelCreator& creator);
    /// The model of that name, or null when no creator has the name.
    BaseModel* create(const QString& name) const;

private:
    ModelManager();

    QMap<QString, ModelCreator*> creators; // not owned
};

} // namespace TWB::GUI
