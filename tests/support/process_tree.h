#pragma once

#include <QByteArray>
#include <QMap>

namespace TWB::Test {

/// Process ids of the processes below `ancestor`, with their command lines ("\0" between arguments).
QMap<qint64, QByteArray> descendants(qint64 ancestor);
/// The environment of a process, as /proc shows it.
QByteArray environmentOf(qint64 pid);

} // namespace TWB::Test
