#pragma once

#include "twbconsole_export.h"

#include <QAbstractItemModel>
#include <QString>

namespace TWB::GUI {

/// Base of the item models that hold the service's data.
class TWBCONSOLE_EXPORT BaseModel : public QAbstractItemModel
{
    Q_OBJECT
    Q_DISABLE_COPY(BaseModel)
public:
    explicit BaseModel(QObject* parent = nullptr);
    ~BaseModel() override;

    /// Starts the first load. True when the load was sent.
    virtual bool init() = 0;

Q_SIGNALS:
    /// A load is beginning.
    void updated();
    /// A load finished and the model is current.
    void complite();
    /// A load failed; the text is the one logged.
    void error(const QString& text);
};

} // namespace TWB::GUI
