#include "platform/plan/backup_file.h"

#include "platform/plan/plan_xml_p.h"

namespace TWB::Info::Plan {

BackupFile::BackupFile()
    : Backup(TypeFile)
{ }

bool BackupFile::acceptsType(int type) const
{
    return type == TypeFile || type == TypeSystemFullFile || type == TypeUnknown;
}

bool BackupFile::equals(const Base& other) const
{
    const auto* o = dynamic_cast<const BackupFile*>(&other);
    return o && Backup::equals(other) && m_items == o->m_items && m_excludeItems == o->m_excludeItems
        && m_excludeFolders == o->m_excludeFolders && m_filter == o->m_filter && m_filterType == o->m_filterType
        && m_backupEmptyFolders == o->m_backupEmptyFolders && m_excludeSystemAndHidden == o->m_excludeSystemAndHidden
        && m_reBackupModifiedSince == o->m_reBackupModifiedSince
        && m_filterCaseInsensitive == o->m_filterCaseInsensitive && m_excludeLargerThan == o->m_excludeLargerThan
        && m_excludeModifiedBefore == o->m_excludeModifiedBefore;
}

void BackupFile::writeFields(Xml::Writer& w) const
{
    Backup::writeFields(w);
    w.begin("Files");
    w.list("Items", "Item", m_items);
    w.list("ExcludeItems", "Item", m_excludeItems);
    w.list("ExcludeFolders", "Folder", m_excludeFolders);
    w.list("Filter", "Mask", m_filter);
    w.number("FilterType", m_filterType);
    w.boolean("BackupEmptyFolders", m_backupEmptyFolders);
    w.boolean("ExcludeSystemAndHidden", m_excludeSystemAndHidden);
    w.dateTime("ReBackupModifiedSince", m_reBackupModifiedSince);
    w.boolean("FilterCaseInsensitive", m_filterCaseInsensitive);
    w.unsignedNumber("ExcludeLargerThan", m_excludeLargerThan);
    w.dateTime("ExcludeModifiedBefore", m_excludeModifiedBefore);
    w.end();
}

void BackupFile::readFields(Xml::Reader& r, const QDomElement& root)
{
    Backup::readFields(r, root);
    const QDomElement e = Xml::Reader::child(root, "Files");
    if (e.isNull())
        return;
    m_items = r.list(e, "Items", "Item");
    m_excludeItems = r.list(e, "ExcludeItems", "Item");
    m_excludeFolders = r.list(e, "ExcludeFolders", "Folder");
    m_filter = r.list(e, "Filter", "Mask");
    m_filterType = FilterType(r.number(e, "FilterType", m_filterType));
    m_backupEmptyFolders = r.boolean(e, "BackupEmptyFolders", m_backupEmptyFolders);
    m_excludeSystemAndHidden = r.boolean(e, "ExcludeSystemAndHidden", m_excludeSystemAndHidden);
    m_reBackupModifiedSince = r.dateTime(e, "ReBackupModifiedSince");
    m_filterCaseInsensitive = r.boolean(e, "FilterCaseInsensitive", m_filterCaseInsensitive);
    m_excludeLargerThan = r.unsignedNumber(e, "ExcludeLargerThan", m_excludeLargerThan);
    m_excludeModifiedBefore = r.dateTime(e, "ExcludeModifiedBefore");
}

} // namespace TWB::Info::Plan
