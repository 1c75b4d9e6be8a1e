#include "widgets/email_validator.h"

#include "platform/utility/email_validator.h"

namespace TWB::GUI {

EmailValidator::EmailValidator(QObject* parent)
    : QValidator(parent)
{ }

EmailValidator::~EmailValidator() = default;

QValidator::State EmailValidator::validate(QString& input, int& pos) const
{
    switch (TWB::Common::EmailValidator::validate(input, pos)) {
    case TWB::Common::EmailValidator::State::Acceptable:
        return Acceptable;
    case TWB::Common::EmailValidator::State::Intermediate:
        return Intermediate;
    case TWB::Common::EmailValidator::State::Invalid:
        break;
    }
    return Invalid;
}

void EmailValidator::fixup(QString& input) const
{
    TWB::Common::EmailValidator::fixup(input);
}

} // namespace TWB::GUI
