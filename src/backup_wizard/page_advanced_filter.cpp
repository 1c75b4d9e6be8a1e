#include "backup_wizard/page_advanced_filter.h"

#include "frame/application.h"
#include "platform/plan/backup_file.h"
#include "platform/rebranding/rebranding.h"
#include "widgets/edit_list_widget.h"
#include "widgets/warning_frame.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QLocale>
#include <QSpinBox>
#include <QStringListModel>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace TWB::GUI {

using TWB::Info::Plan::BackupFile;

const char* PageAdvancedFilter::FieldFilterType = "Field_FilterType";
const char* PageAdvancedFilter::FieldFilterMasks = "Field_FilterMasks";
const char* PageAdvancedFilter::FieldFilterCaseSensitive = "Field_FilterCaseSensitive";
const char* PageAdvancedFilter::FieldExcludeFolders = "Field_ExcludeFolders";
const char* PageAdvancedFilter::FieldExcludeHidden = "Field_ExcludeSystemAndHidden";
const char* PageAdvancedFilter::FieldSizeLimitEnable = "Field_SizeLimitEnable";
const char* PageAdvancedFilter::FieldSizeLimitValue = "Field_SizeLimitValue";
const char* PageAdvancedFilter::FieldSizeLimitUnit = "Field_SizeLimitUnit";
const char* PageAdvancedFilter::FieldModifiedBeforeEnable = "Field_ModifiedBeforeEnable";
const char* PageAdvancedFilter::FieldModifiedBeforeValue = "Field_ModifiedBeforeValue";

namespace {

const char* const cloudTypeField = "Field_CloudType";
const int compressionPage = 3;
const int retentionPage = 103;
const int defaultSizeValue = 100;
const int defaultSizeUnit = 1; // MB

unsigned long long unitBytes(int unit)
{
    return 1ULL << (10 * (unit + 1));
}

/// One part of a pattern between slashes, in the syntax of Go's filepath.Match, which restic
/// checks each part against: the reason it is malformed, or an empty string.
QString partError(const QString& part)
{
    const int n = part.size();
    // One end of a range in a character class; advances `i` past it.
    auto rangeEnd = [&part, n](int& i, bool start) -> QString {
        if (i >= n)
            return PageAdvancedFilter::tr("a \"[\" is not closed by \"]\"");
        if (part.at(i) == QLatin1Char('-'))
            return PageAdvancedFilter::tr("a \"-\" in \"[...]\" has no character before it");
        if (part.at(i) == QLatin1Char(']'))
            return start ? PageAdvancedFilter::tr("\"[]\" holds no character")
                         : PageAdvancedFilter::tr("a \"-\" in \"[...]\" has no character after it");
        if (part.at(i) == QLatin1Char('\\') && ++i >= n)
            return PageAdvancedFilter::tr("a \"[\" is not closed by \"]\"");
        if (++i >= n)
            return PageAdvancedFilter::tr("a \"[\" is not closed by \"]\"");
        return QString();
    };
    int i = 0;
    while (i < n) {
        const QChar c = part.at(i);
        if (c == QLatin1Char('\\')) {
            if (i + 1 >= n)
                return PageAdvancedFilter::tr("a \"\\\" at the end of a name escapes nothing");
            i += 2;
            continue;
        }
        if (c != QLatin1Char('[')) {
            ++i;
            continue;
        }
        ++i;
        if (i < n && part.at(i) == QLatin1Char('^'))
            ++i;
        for (int ranges = 0;; ++ranges) {
            if (i < n && part.at(i) == QLatin1Char(']') && ranges > 0) {
                ++i;
                break;
            }
            QString why = rangeEnd(i, ranges == 0);
            if (why.isEmpty() && part.at(i) == QLatin1Char('-'))
                why = rangeEnd(++i, false);
            if (!why.isEmpty())
                return why;
        }
    }
    return QString();
}

} // namespace

PageAdvancedFilter::PageAdvancedFilter(QWidget* parent)
    : PageBase(tr("Advanced filter"), parent)
    , maskModel(new QStringListModel(this))
    , folderModel(new QStringListModel(this))
    , maskEdit(new EditListWidget(false, this))
    , folderEdit(new EditListWidget(false, this))
    , error(new WarningFrame(QString(), this))
{
    setSubTitle(tr("Choose which files of the selected folders are backed up"));

    auto* filterType = new QComboBox(this);
    filterType->addItems({tr("Back up all files"), tr("Back up only files that match these masks"),
        tr("Back up all files except those that match these masks")});

    auto* caseSensitive = new QCheckBox(tr("Masks are case-sensitive"), this);
    caseSensitive->setChecked(true);
    maskEdit->setModel(maskModel, 0);
    folderEdit->setModel(folderModel, 0);
    for (EditListWidget* list : {maskEdit, folderEdit}) {
        list->setFixedHeight(118);
        list->addItemButton()->setToolTip(list == maskEdit ? tr("Add a mask") : tr("Add a folder name"));
        list->removeItemButton()->setToolTip(tr("Remove the selected entry"));
        auto* model = list == maskEdit ? maskModel : folderModel;
        connect(list->addItemButton(), &QToolButton::clicked, this, [list, model] {
            const int row = model->rowCount();
            model->insertRows(row, 1);
            list->view()->setCurrentIndex(model->index(row));
            list->view()->edit(model->index(row));
        });
        connect(list->removeItemButton(), &QToolButton::clicked, this, [list, model] {
            const QModelIndex current = list->view()->currentIndex();
            if (current.isValid())
                model->removeRows(current.row(), 1);
        });
        // A row left empty once its editor closed is no entry: drop it.
        connect(list->view()->itemDelegate(), &QAbstractItemDelegate::closeEditor, this, [model] {
            for (int row = model->rowCount() - 1; row >= 0; --row) {
                if (model->index(row).data().toString().trimmed().isEmpty())
                    model->removeRows(row, 1);
            }
        });
    }
    maskEdit->view()->setToolTip(tr("Masks such as *.tmp or cache/*; * and ? match within a name, [abc] any one "
                                    "of the characters, ** any number of folders"));
    folderEdit->view()->setToolTip(tr("Folders of these names are skipped wherever they are"));

    error->hide();

    auto* hidden = new QCheckBox(tr("Skip hidden files and folders"), this);

    auto* sizeEnable = new QCheckBox(tr("Skip files larger than:"), this);
    auto* sizeValue = new QSpinBox(this);
    sizeValue->setRange(1, 999999);
    sizeValue->setValue(defaultSizeValue);
    auto* sizeUnit = new QComboBox(this);
    sizeUnit->addItems({tr("KB"), tr("MB"), tr("GB")});
    sizeUnit->setCurrentIndex(defaultSizeUnit);
    auto* dateEnable = new QCheckBox(tr("Skip files modified before:"), this);
    auto* dateValue = new QDateEdit(QDate::currentDate().addYears(-1), this);
    dateValue->setCalendarPopup(true);
    dateValue->setDisplayFormat(QLocale::system().dateFormat(QLocale::ShortFormat));
    for (QWidget* w : {static_cast<QWidget*>(sizeValue), static_cast<QWidget*>(sizeUnit)}) {
        w->setEnabled(false);
        connect(sizeEnable, &QCheckBox::toggled, w, &QWidget::setEnabled);
    }
    dateValue->setEnabled(false);
    connect(dateEnable, &QCheckBox::toggled, dateValue, &QWidget::setEnabled);
    auto masksInUse = [this, caseSensitive](int type) {
        maskEdit->setEnabled(type != BackupFile::NoFilter);
        caseSensitive->setEnabled(type != BackupFile::NoFilter);
        onInputChanged();
    };
    connect(filterType, qOverload<int>(&QComboBox::currentIndexChanged), this, masksInUse);
    masksInUse(filterType->currentIndex());

    auto* lists = new QGridLayout;
    lists->addWidget(new QLabel(tr("File masks:"), this), 0, 0);
    lists->addWidget(new QLabel(tr("Skip folders named:"), this), 0, 1);
    lists->addWidget(maskEdit, 1, 0);
    lists->addWidget(folderEdit, 1, 1);
    lists->addWidget(caseSensitive, 2, 0);
    lists->setColumnStretch(2, 1);
    lists->setHorizontalSpacing(20);

    auto* limits = new QGridLayout;
    limits->addWidget(sizeEnable, 0, 0);
    limits->addWidget(sizeValue, 0, 1);
    limits->addWidget(sizeUnit, 0, 2);
    limits->addWidget(dateEnable, 1, 0);
    limits->addWidget(dateValue, 1, 1, 1, 2);
    limits->setColumnStretch(3, 1);

    auto* typeRow = new QHBoxLayout;
    typeRow->addWidget(filterType);
    typeRow->addStretch(1);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(typeRow);
    layout->addLayout(lists);
    layout->addWidget(error);
    layout->addWidget(hidden);
    layout->addLayout(limits);
    layout->addStretch(1);

    registerField(QLatin1String(FieldFilterType), filterType);
    registerField(QLatin1String(FieldFilterMasks), this, "masks", SIGNAL(masksChanged()));
    registerField(QLatin1String(FieldFilterCaseSensitive), caseSensitive);
    registerField(QLatin1String(FieldExcludeFolders), this, "excludedFolders", SIGNAL(excludedFoldersChanged()));
    registerField(QLatin1String(FieldExcludeHidden), hidden);
    registerField(QLatin1String(FieldSizeLimitEnable), sizeEnable);
    registerField(QLatin1String(FieldSizeLimitValue), sizeValue);
    registerField(QLatin1String(FieldSizeLimitUnit), sizeUnit);
    registerField(QLatin1String(FieldModifiedBeforeEnable), dateEnable);
    registerField(QLatin1String(FieldModifiedBeforeValue), dateValue);

    for (QStringListModel* model : {maskModel, folderModel}) {
        connect(model, &QAbstractItemModel::dataChanged, this, &PageAdvancedFilter::onInputChanged);
        connect(model, &QAbstractItemModel::rowsRemoved, this, &PageAdvancedFilter::onInputChanged);
        connect(model, &QAbstractItemModel::modelReset, this, &PageAdvancedFilter::onInputChanged);
    }
}

QString PageAdvancedFilter::maskError(const QString& mask)
{
    QString pattern = mask.trimmed();
    // restic reads a leading "!" as "do not exclude what matches the rest".
    if (pattern.startsWith(QLatin1Char('!')))
        pattern.remove(0, 1);
    const QStringList parts = pattern.split(QLatin1Char('/'));
    for (const QString& part : parts) {
        if (part == QLatin1String("**"))
            continue;
        const QString why = partError(part);
        if (!why.isEmpty())
            return why;
    }
    return QString();
}

QStringList PageAdvancedFilter::entries(const QStringListModel* model)
{
    QStringList result;
    const QStringList rows = model->stringList();
    for (const QString& row : rows) {
        if (!row.trimmed().isEmpty())
            result << row.trimmed();
    }
    return result;
}

QStringList PageAdvancedFilter::masks() const
{
    return entries(maskModel);
}

void PageAdvancedFilter::setMasks(const QStringList& masks)
{
    if (masks != this->masks())
        maskModel->setStringList(masks);
}

QStringList PageAdvancedFilter::excludedFolders() const
{
    return entries(folderModel);
}

void PageAdvancedFilter::setExcludedFolders(const QStringList& folders)
{
    if (folders != excludedFolders())
        folderModel->setStringList(folders);
}

QString PageAdvancedFilter::inputError() const
{
    if (field(QLatin1String(FieldFilterType)).toInt() != BackupFile::NoFilter) {
        const QStringList list = masks();
        if (list.isEmpty())
            return tr("Add at least one file mask, or back up all files.");
        for (const QString& mask : list) {
            const QString why = maskError(mask);
            if (!why.isEmpty())
                return tr("The mask \"%1\" cannot be used: %2.").arg(mask, why);
        }
    }
    const QStringList folders = excludedFolders();
    for (const QString& folder : folders) {
        if (folder.contains(QLatin1Char('/')))
            return tr("\"%1\" is no folder name: a name holds no \"/\".").arg(folder);
    }
    return QString();
}

void PageAdvancedFilter::onInputChanged()
{
    const QString why = inputError();
    // As rich text always, so that a mask such as "<b>" shows as it is.
    error->setText(QStringLiteral("<p>%1</p>").arg(why.toHtmlEscaped()));
    error->setVisible(!why.isEmpty());
    Q_EMIT masksChanged();
    Q_EMIT excludedFoldersChanged();
    Q_EMIT completeChanged();
}

bool PageAdvancedFilter::isComplete() const
{
    return inputError().isEmpty();
}

int PageAdvancedFilter::nextId() const
{
    const int type = field(QLatin1String(cloudTypeField)).toInt();
    const TWB::Defines::Rebranding rebranding;
    auto on = [&rebranding](const char* key) { return rebranding.value(QLatin1String(key)).toBool(); };
    const bool s3 = (type == 2 || type == 20) && (on("showSSE") || on("showSIA") || on("S3Accelerate"));
    const bool azure = type == 3 && Application::isStandalon();
    return on("AllowCompression") || on("AllowEncryption") || s3 || azure ? compressionPage : retentionPage;
}

QString PageAdvancedFilter::summary()
{
    const QString row = QStringLiteral("<tr><td>%1</td><td>%2</td></tr>");
    QString rows;
    const int type = field(QLatin1String(FieldFilterType)).toInt();
    if (type != BackupFile::NoFilter) {
        QStringList list = masks();
        for (QString& mask : list)
            mask = mask.toHtmlEscaped();
        const QString caseRule
            = field(QLatin1String(FieldFilterCaseSensitive)).toBool() ? tr("case-sensitive") : tr("in any case");
        rows += row.arg(type == BackupFile::IncludeMasks ? tr("Back up only:") : tr("Skip files:"),
            QStringLiteral("%1 (%2)").arg(list.join(QStringLiteral(", ")), caseRule));
    }
    QStringList folders = excludedFolders();
    if (!folders.isEmpty()) {
        for (QString& folder : folders)
            folder = folder.toHtmlEscaped();
        rows += row.arg(tr("Skip folders:"), folders.join(QStringLiteral(", ")));
    }
    if (field(QLatin1String(FieldExcludeHidden)).toBool())
        rows += row.arg(QString(), tr("Skip hidden files and folders"));
    if (field(QLatin1String(FieldSizeLimitEnable)).toBool()) {
        const QStringList units = {tr("KB"), tr("MB"), tr("GB")};
        rows += row.arg(tr("Skip files larger than:"),
            QStringLiteral("%1 %2")
                .arg(field(QLatin1String(FieldSizeLimitValue)).toInt())
                .arg(units.value(field(QLatin1String(FieldSizeLimitUnit)).toInt())));
    }
    if (field(QLatin1String(FieldModifiedBeforeEnable)).toBool()) {
        rows += row.arg(tr("Skip files modified before:"),
            QLocale::system().toString(field(QLatin1String(FieldModifiedBeforeValue)).toDate(), QLocale::LongFormat));
    }
    return rows;
}

bool PageAdvancedFilter::initPlan(TWB::Info::Plan::Base* plan)
{
    auto* file = dynamic_cast<BackupFile*>(plan);
    if (!file)
        return false;
    file->setFilterType(BackupFile::FilterType(field(QLatin1String(FieldFilterType)).toInt()));
    file->setFilter(field(QLatin1String(FieldFilterMasks)).toStringList());
    file->setFilterCaseInsensitive(!field(QLatin1String(FieldFilterCaseSensitive)).toBool());
    file->setExcludeFolderList(field(QLatin1String(FieldExcludeFolders)).toStringList());
    file->setExcludeSystemAndHidden(field(QLatin1String(FieldExcludeHidden)).toBool());
    unsigned long long limit = 0;
    if (field(QLatin1String(FieldSizeLimitEnable)).toBool()) {
        limit = static_cast<unsigned long long>(field(QLatin1String(FieldSizeLimitValue)).toInt())
            * unitBytes(field(QLatin1String(FieldSizeLimitUnit)).toInt());
    }
    file->setExcludeLargerThan(limit);
    // Midnight at the start of the day the user picked, on this machine's clock.
    file->setExcludeModifiedBefore(field(QLatin1String(FieldModifiedBeforeEnable)).toBool()
            ? QDateTime(field(QLatin1String(FieldModifiedBeforeValue)).toDate(), QTime(0, 0))
            : QDateTime());
    return true;
}

bool PageAdvancedFilter::fromPlan(TWB::Info::Plan::Base* plan)
{
    auto* file = dynamic_cast<BackupFile*>(plan);
    if (!file)
        return false;
    const int type = file->filterType();
    setField(QLatin1String(FieldFilterType),
        type >= BackupFile::NoFilter && type <= BackupFile::ExcludeMasks ? type : int(BackupFile::NoFilter));
    setField(QLatin1String(FieldFilterMasks), file->filter());
    setField(QLatin1String(FieldFilterCaseSensitive), !file->filterCaseInsensitive());
    setField(QLatin1String(FieldExcludeFolders), file->excludeFolderList());
    setField(QLatin1String(FieldExcludeHidden), file->excludeSystemAndHidden());

    const unsigned long long bytes = file->excludeLargerThan();
    int unit = defaultSizeUnit;
    int value = defaultSizeValue;
    if (bytes > 0) {
        // The largest unit that says the limit exactly; a limit of odd bytes is rounded up to KB.
        unit = 2;
        while (unit > 0 && bytes % unitBytes(unit) != 0)
            --unit;
        const double amount = std::ceil(double(bytes) / double(unitBytes(unit)));
        value = int(qBound(1.0, amount, 999999.0));
    }
    setField(QLatin1String(FieldSizeLimitEnable), bytes > 0);
    setField(QLatin1String(FieldSizeLimitValue), value);
    setField(QLatin1String(FieldSizeLimitUnit), unit);

    const QDateTime before = file->excludeModifiedBefore();
    setField(QLatin1String(FieldModifiedBeforeEnable), before.isValid());
    setField(QLatin1String(FieldModifiedBeforeValue),
        before.isValid() ? before.toLocalTime().date() : QDate::currentDate().addYears(-1));
    onInputChanged();
    return true;
}

} // namespace TWB::GUI
