#include "app/storage_browse_view.h"

#include "platform/communication/connection_manager.h"
#include "plans/date_time_delegate.h"
#include "plans/size_delegate.h"
#include "plans/true_false_delegate.h"
#include "restore_wizard/storage_backup_full_model.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

namespace TWB::Host {

using TWB::Common::Communication::ConnectionManager;
using TWB::GUI::StorageBackupFullModel;

namespace {

// Columns of the full storage tree.
const int idColumn = 1;
const int typeColumn = 2;
const int pathColumn = 3;
const int sizeColumn = 4;
const int originalSizeColumn = 5;
const int dateColumn = 6;
const int encryptedColumn = 7;
const int compressedColumn = 8;
const int firstInnerColumn = 9; // "isFull" onwards: the engine's own details, of no use for choosing
const int columns = 14;

} // namespace

StorageBrowseView::StorageBrowseView(const QUuid& storageId, const QString& name, QWidget* parent)
    : QDialog(parent)
    , m_storageId(storageId)
    , m_model(new StorageBackupFullModel(this))
    , m_tree(new QTreeView(this))
    , m_status(new QLabel(this))
    , m_refresh(new QPushButton(tr("Refresh"), this))
    , m_restore(new QPushButton(tr("Restore..."), this))
{
    setWindowTitle(tr("Browse %1").arg(name));
    setObjectName(QStringLiteral("storage-browse"));
    resize(1040, 560);

    m_tree->setObjectName(QStringLiteral("storage-browse-tree"));
    m_tree->setUniformRowHeights(true);
    m_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tree->setModel(m_model);
    for (int column : {idColumn, typeColumn, pathColumn})
        m_tree->setColumnHidden(column, true);
    for (int column = firstInnerColumn; column < columns; ++column)
        m_tree->setColumnHidden(column, true);
    m_tree->setItemDelegateForColumn(sizeColumn, new TWB::GUI::SizeDelegate(m_tree));
    m_tree->setItemDelegateForColumn(originalSizeColumn, new TWB::GUI::SizeDelegate(m_tree));
    m_tree->setItemDelegateForColumn(dateColumn, new TWB::GUI::DateTimeDelegate(m_tree));
    m_tree->setItemDelegateForColumn(encryptedColumn, new TWB::GUI::TrueFalseDelegate(m_tree));
    m_tree->setItemDelegateForColumn(compressedColumn, new TWB::GUI::TrueFalseDelegate(m_tree));
    // Widths from the texts the columns show, not from the rows: a folder may hold a hundred thousand.
    const QFontMetrics metrics(m_tree->font());
    const QString date = TWB::GUI::DateTimeDelegate::toText(QStringLiteral("20261228235959"), locale());
    const QList<QPair<int, QString>> samples
        = {{sizeColumn, QStringLiteral("999.9 MB")}, {originalSizeColumn, QStringLiteral("999.9 MB")},
            {dateColumn, date}, {encryptedColumn, tr("yes")}, {compressedColumn, tr("yes")}};
    for (const auto& sample : samples) {
        const QString header = m_model->headerData(sample.first, Qt::Horizontal).toString();
        m_tree->header()->resizeSection(sample.first,
            qMax(metrics.horizontalAdvance(header), metrics.horizontalAdvance(sample.second)) + metrics.height());
    }
    // Names sit deep in the tree: they take whatever the other columns leave.
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);

    m_status->setObjectName(QStringLiteral("storage-browse-status"));
    m_status->setWordWrap(true);
    m_restore->setEnabled(false);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->addButton(m_refresh, QDialogButtonBox::ActionRole);
    buttons->addButton(m_restore, QDialogButtonBox::AcceptRole);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tree);
    layout->addWidget(m_status);
    layout->addWidget(buttons);

    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_refresh, &QPushButton::clicked, this, &StorageBrowseView::refresh);
    connect(m_restore, &QPushButton::clicked, this, [this] {
        const QStringList items = selectedItems();
        if (!items.isEmpty())
            Q_EMIT restoreRequested(m_storageId, items);
    });
    // A closed folder is listed anew when opened again, so that a browse shows what the storage holds now.
    connect(m_tree, &QTreeView::collapsed, m_model, &StorageBackupFullModel::onCollapse);
    connect(m_tree->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        [this] { m_restore->setEnabled(!selectedItems().isEmpty()); });
    connect(m_model, &StorageBackupFullModel::updated, this, [this] {
        ++m_waiting;
        m_error.clear();
        updateStatus();
    });
    auto answered = [this] {
        m_waiting = qMax(0, m_waiting - 1);
        updateStatus();
    };
    connect(m_model, &StorageBackupFullModel::complite, this, answered);
    connect(m_model, &StorageBackupFullModel::error, this, [this, answered](const QString& text) {
        m_error = text;
        answered();
    });
    connect(m_model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex& parent) {
        if (!m_account.isValid() && !parent.isValid())
            findAccount();
    });
    if (auto connection = ConnectionManager::instance()) {
        connect(connection, &ConnectionManager::localManagmentConnected, this, &StorageBrowseView::updateStatus);
        connect(connection, &ConnectionManager::localManagmentDisconnected, this, [this] {
            m_waiting = 0;
            updateStatus();
        });
    }
    m_model->init();
    findAccount();
    updateStatus();
}

StorageBrowseView::~StorageBrowseView() = default;

void StorageBrowseView::findAccount()
{
    for (int row = 0; row < m_model->rowCount(); ++row) {
        if (QUuid(m_model->index(row, idColumn).data().toString()) != m_storageId)
            continue;
        m_account = m_model->index(row, 0);
        m_tree->setRootIndex(m_account);
        if (m_model->canFetchMore(m_account))
            m_model->fetchMore(m_account);
        return;
    }
}

void StorageBrowseView::refresh()
{
    const QModelIndex current = m_tree->currentIndex();
    // The current folder, or the whole account when a file or nothing is chosen.
    const QModelIndex folder = current.isValid() && m_model->hasChildren(current.siblingAtColumn(0))
            && m_tree->isExpanded(current.siblingAtColumn(0))
        ? current.siblingAtColumn(0)
        : QModelIndex(m_account);
    if (folder.isValid())
        m_model->onUpdate(folder);
    if (folder != QModelIndex(m_account))
        m_tree->expand(folder);
}

QStringList StorageBrowseView::selectedItems() const
{
    QStringList items;
    const QModelIndexList rows = m_tree->selectionModel()->selectedRows(pathColumn);
    for (const QModelIndex& index : rows) {
        const QString path = index.data().toString();
        if (!path.isEmpty() && !items.contains(path))
            items.append(path);
    }
    return items;
}

void StorageBrowseView::updateStatus()
{
    auto connection = ConnectionManager::instance();
    QString text;
    if (!connection || !connection->isLocalManagmentConnected())
        text = tr("The backup service is not running. The list fills in again when it is back.");
    else if (!m_account.isValid())
        text = tr("This storage account is no longer listed.");
    else if (m_waiting > 0)
        text = tr("Listing...");
    else if (!m_error.isEmpty())
        text = tr("The storage could not be listed: %1").arg(m_error);
    else
        text = tr("Select files, folders or versions to restore.");
    m_status->setText(text);
}

} // namespace TWB::Host
