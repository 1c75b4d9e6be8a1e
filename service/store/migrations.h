#pragma once

#include <QStringList>

namespace TWB::Service {

/// The schema of the store as a list of steps. Step N brings a store from version N-1 to N, and a
/// released step is never edited: a change to the schema is a new step at the end.
class Migrations final
{
public:
    /// The number of steps, which is the version of a store that took them all.
    static int count();
    /// The statements of step `version` (from 1).
    static QStringList step(int version);
};

} // namespace TWB::Service
