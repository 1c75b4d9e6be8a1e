#pragma once

#include "twbconsole_export.h"

#include <QValidator>

namespace TWB::GUI {

/// Accepts one e-mail address, by the rules of the platform's address check.
class TWBCONSOLE_EXPORT EmailValidator : public QValidator
{
    Q_OBJECT
    Q_DISABLE_COPY(EmailValidator)
public:
    explicit EmailValidator(QObject* parent = nullptr);
    ~EmailValidator() override;

    State validate(QString& input, int& pos) const override;
    void fixup(QString& input) const override;
};

} // namespace TWB::GUI
