#pragma once

#include "platform/plan/backup.h"

#include <QDateTime>
#include <QStringList>

namespace TWB::Info::Plan {

/// A backup of files and folders.
class TWBPLATFORM_EXPORT BackupFile final : public Backup
{
public:
    /// How the masks of filter() apply.
    enum FilterType : int { NoFilter = 0, IncludeMasks = 1, ExcludeMasks = 2 };

    BackupFile();

    const char* className() const override { return "BackupFile"; }

    QStringList items() const { return m_items; }
    void setItems(const QStringList& items) { m_items = items; }
    QStringList excludeItems() const { return m_excludeItems; }
    void setExcludeItems(const QStringList& items) { m_excludeItems = items; }
    /// Folders left out wherever they stand, by name.
    QStringList excludeFolderList() const { return m_excludeFolders; }
    void setExcludeFolderList(const QStringList& folders) { m_excludeFolders = folders; }
    /// File masks.
    QStringList filter() const { return m_filter; }
    void setFilter(const QStringList& masks) { m_filter = masks; }
    FilterType filterType() const { return m_filterType; }
    void setFilterType(FilterType type) { m_filterType = type; }
    /// The masks match names whatever their case.
    bool filterCaseInsensitive() const { return m_filterCaseInsensitive; }
    void setFilterCaseInsensitive(bool insensitive) { m_filterCaseInsensitive = insensitive; }
    bool backupEmptyFolders() const { return m_backupEmptyFolders; }
    void setBackupEmptyFolders(bool backup) { m_backupEmptyFolders = backup; }
    bool excludeSystemAndHidden() const { return m_excludeSystemAndHidden; }
    void setExcludeSystemAndHidden(bool exclude) { m_excludeSystemAndHidden = exclude; }
    /// Files larger than this many bytes are left out; 0 means no limit.
    unsigned long long excludeLargerThan() const { return m_excludeLargerThan; }
    void setExcludeLargerThan(unsigned long long bytes) { m_excludeLargerThan = bytes; }
    /// Files last modified before this moment are left out; an invalid time means none are.
    QDateTime excludeModifiedBefore() const { return m_excludeModifiedBefore; }
    void setExcludeModifiedBefore(const QDateTime& before) { m_excludeModifiedBefore = before; }
    QDateTime reBackupModifiedSince() const { return m_reBackupModifiedSince; }
    void setReBackupModifiedSince(const QDateTime& since) { m_reBackupModifiedSince = since; }

    bool equals(const Base& other) const override;

protected:
    bool acceptsType(int type) const override;
    void writeFields(Xml::Writer& writer) const override;
    void readFields(Xml::Reader& reader, const QDomElement& root) override;

private:
    QStringList m_items;
    QStringList m_excludeItems;
    QStringList m_excludeFolders;
    QStringList m_filter;
    FilterType m_filterType = NoFilter;
    bool m_filterCaseInsensitive = false;
    bool m_backupEmptyFolders = true;
    bool m_excludeSystemAndHidden = false;
    unsigned long long m_excludeLargerThan = 0;
    QDateTime m_excludeModifiedBefore;
    QDateTime m_reBackupModifiedSince;
};

} // namespace TWB::Info::Plan
