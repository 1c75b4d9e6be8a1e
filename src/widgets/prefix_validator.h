#pragma once

#include "twbconsole_export.h"

#include <QRegExpValidator>

namespace TWB::GUI {

/// Accepts a backup prefix: none of / : * ? > < | may stand in it.
class TWBCONSOLE_EXPORT PrefixValidator : public QRegExpValidator
{
    Q_OBJECT
    Q_DISABLE_COPY(PrefixValidator)
public:
    explicit PrefixValidator(QObject* parent = nullptr);
    ~PrefixValidator() override;

    State validate(QString& input, int& pos) const override;

Q_SIGNALS:
    /// A text was refused, so that the editor can clean it.
    void error() const;
};

} // namespace TWB::GUI
