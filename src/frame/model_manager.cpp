#include "frame/model_manager.h"

#include "frame/base_model.h"
#include "frame/model_creator.h"

#include <QCoreApplication>

namespace TWB::GUI {

QPointer<ModelManager> ModelManager::instance()
{
    static QPointer<ModelManager> manager(new ModelManager);
    return manager;
}

ModelManager::ModelManager()
{
    if (auto* app = QCoreApplication::instance())
        connect(app, &QCoreApplication::aboutToQuit, this, &QObject::deleteLater);
}

void ModelManager::registrateCreator(ModelCreator& creator)
{
    creators.insert(creator.name(), &creator);
}

BaseModel* ModelManager::create(const QString& name) const
{
    ModelCreator* creator = creators.value(name);
    return creator ? creator->create() : nullptr;
}

} // namespace TWB::GUI
