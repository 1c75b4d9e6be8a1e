#pragma once

#include "wizard/page_base.h"

#include <QStringList>

class QStringListModel;

namespace TWB::GUI {

class EditListWidget;
class WarningFrame;

/// Which files of the chosen folders a backup plan takes: file masks (to back up only, or to leave
/// out), folders left out by name, hidden files, a size limit and a modified-before date.
class TWBCONSOLE_EXPORT PageAdvancedFilter : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageAdvancedFilter)
    Q_PROPERTY(QStringList masks READ masks WRITE setMasks NOTIFY masksChanged)
    Q_PROPERTY(QStringList excludedFolders READ excludedFolders WRITE setExcludedFolders NOTIFY excludedFoldersChanged)
public:
    /// 0 all files, 1 only files that match the masks, 2 all but those: BackupFile::FilterType.
    static const char* FieldFilterType;
    static const char* FieldFilterMasks;
    static const char* FieldFilterCaseSensitive;
    static const char* FieldExcludeFolders;
    static const char* FieldExcludeHidden;
    static const char* FieldSizeLimitEnable;
    static const char* FieldSizeLimitValue;
    /// 0 KB, 1 MB, 2 GB.
    static const char* FieldSizeLimitUnit;
    static const char* FieldModifiedBeforeEnable;
    static const char* FieldModifiedBeforeValue;

    explicit PageAdvancedFilter(QWidget* parent = nullptr);

    int nextId() const override;
    bool isComplete() const override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

    QStringList masks() const;
    void setMasks(const QStringList& masks);
    QStringList excludedFolders() const;
    void setExcludedFolders(const QStringList& folders);

    /// Why restic would refuse a mask as an exclude pattern, or an empty string when it takes it.
    static QString maskError(const QString& mask);
    /// Why the page's input cannot be saved, or an empty string; the page shows the same text.
    QString inputError() const;

    EditListWidget* maskList() const { return maskEdit; }
    EditListWidget* folderList() const { return folderEdit; }

Q_SIGNALS:
    void masksChanged();
    void excludedFoldersChanged();

private:
    void onInputChanged();
    static QStringList entries(const QStringListModel* model);

    QStringListModel* maskModel; // owned by the page
    QStringListModel* folderModel; // owned by the page
    EditListWidget* maskEdit; // owned as a child
    EditListWidget* folderEdit; // owned as a child
    WarningFrame* error; // owned as a child
};

} // namespace TWB::GUI
