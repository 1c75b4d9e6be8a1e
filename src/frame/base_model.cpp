#include "frame/base_model.h"

namespace TWB::GUI {

BaseModel::BaseModel(QObject* parent)
    : QAbstractItemModel(parent)
{ }

BaseModel::~BaseModel() = default;

} // namespace TWB::GUI
