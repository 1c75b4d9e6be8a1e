#include "widgets/prefix_validator.h"

namespace TWB::GUI {

PrefixValidator::PrefixValidator(QObject* parent)
    : QRegExpValidator(QRegExp(QStringLiteral("[^/\\:\\*\\?><\\|]*")), parent)
{ }

PrefixValidator::~PrefixValidator() = default;

QValidator::State PrefixValidator::validate(QString& input, int& pos) const
{
    const State state = QRegExpValidator::validate(input, pos);
    if (state == Invalid)
        Q_EMIT error();
    return state;
}

} // namespace TWB::GUI
