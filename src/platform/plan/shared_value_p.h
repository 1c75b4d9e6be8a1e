#pragma once

#include <QSharedPointer>

namespace TWB::Info::Plan {

/// Two shared values are equal when both are missing or both hold equal values.
template <typename T> bool sameValue(const QSharedPointer<T>& a, const QSharedPointer<T>& b)
{
    if (!a || !b)
        return !a && !b;
    return *a == *b;
}

} // namespace TWB::Info::Plan
