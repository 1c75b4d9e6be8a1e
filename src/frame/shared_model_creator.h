#pragma once

#include "frame/base_model.h"
#include "frame/model_creator.h"

#include <QPointer>

namespace TWB::GUI {

/// Builds one model of type Model on the first create() and hands out that same model from then on,
/// as every caller of the registry expects. The model is a child of `owner`; without one the creator
/// deletes it.
template <typename Model> class SharedModelCreator final : public ModelCreator
{
public:
    explicit SharedModelCreator(const QString& name, QObject* owner = nullptr)
        : m_name(name)
        , m_owner(owner)
    { }
    ~SharedModelCreator() override
    {
        if (!m_owner)
            delete m_model.data();
    }
    SharedModelCreator(const SharedModelCreator&) = delete;
    SharedModelCreator& operator=(const SharedModelCreator&) = delete;

    BaseModel* create() override
    {
        if (!m_built) {
            m_built = true;
            m_model = new Model(m_owner);
        }
        // Null once the model is gone, so that a late caller does nothing.
        return m_model.data();
    }
    const QString& name() const override { return m_name; }

private:
    const QString m_name;
    QPointer<QObject> m_owner;
    QPointer<Model> m_model;
    bool m_built = false;
};

} // namespace TWB::GUI
