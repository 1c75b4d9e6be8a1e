#pragma once

#include "platform/twbplatform_export.h"

#include <QString>

namespace TWB::Common {

/// The address check that every e-mail field of the product shares. An address is one local part,
/// "@" and a domain of at least two labels with a top-level label of two or more letters.
/// A text that typing can still turn into an address is Intermediate; a text that no typing at its
/// end can save (a space inside, a second "@", a forbidden character, "..") is Invalid.
class TWBPLATFORM_EXPORT EmailValidator final
{
public:
    enum class State { Invalid, Intermediate, Acceptable };

    static State validate(QString& input, int& pos);
    /// Removes the blanks around the address.
    static void fixup(QString& input);
};

} // namespace TWB::Common
