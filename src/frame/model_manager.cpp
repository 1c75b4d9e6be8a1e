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
    if (ModelCreator* replaced = creators.value(creator.name()); replaced && replaced != &creator) {
        creators.remove(creator.name());
        if (!creators.values().contains(replaced))
            replaced->registry = nullptr;
    }
    creators.insert(creator.name(), &creator);
    creator.registry = this;
}

void ModelManager::unregisterCreator(ModelCreator& creator)
{
    for (auto it = creators.begin(); it != creators.end();) {
        if (it.value() == &creator)
            it = creators.erase(it);
        else
            ++it;
    }
    creator.registry = nullptr;
}

BaseModel* ModelManager::create(const QString& name) const
{
    ModelCreator* creator = creators.value(name);
    return creator ? creator->create() : nullptr;
}

} // namespace TWB::GUI
