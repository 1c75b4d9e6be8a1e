#include "settings/advanced.h"

#include <QFormLayout>

namespace TWB::GUI::Settings {

namespace {

constexpr qint64 megabyte = 1024 * 1024;

} // namespace

Advanced::Advanced(QWidget* parent)
    : OptionsPage(tr("Advanced"), parent)
{
    QFormLayout* run = addGroup(tr("Backup runs"));
    addNumber(run, tr("Threads for one backup plan:"), QStringLiteral("MultiThread threads count"), 1, 100, QString());
    addNote(run, tr("Parallel connections to the storage."));
    // restic refuses packs above 128 MByte.
    addNumber(run, tr("Upload chunk size:"), QStringLiteral("DefaultChunkSize"), 5, 128, tr(" MByte"), megabyte);
    addNote(run, tr("Larger chunks mean fewer, bigger files in the storage."));
    addNumber(run, tr("Memory a plan may use:"), QStringLiteral("MultiThread memory usage"), 100, 999999999,
        tr(" MByte"), megabyte);
    addNote(run, tr("A soft limit: a run frees memory more eagerly as it comes near it."));
}

} // namespace TWB::GUI::Settings
