#include "frame/model_creator.h"

#include "frame/model_manager.h"

namespace TWB::GUI {

ModelCreator::~ModelCreator()
{
    if (registry)
        registry->unregisterCreator(*this);
}

} // namespace TWB::GUI
