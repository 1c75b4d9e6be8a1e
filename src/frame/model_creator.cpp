#include "frame/model_creator.h"

namespace TWB::GUI {

ModelCreator::~ModelCreator() = default;

} // namespace TWB::GUI
