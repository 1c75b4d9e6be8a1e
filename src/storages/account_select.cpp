#include "storages/account_select.h"

#include "frame/application.h"
#include "platform/rebranding/rebranding.h"
#include "storages/account_factory.h"
#include "storages/storage_connections_model.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QVBoxLayout>

namespace TWB::GUI::Settings::Account {

namespace {

bool allowFileSystem()
{
    return TWB::Defines::Rebranding().value(QStringLiteral("AllowFileSystemAccount")).toBool();
}

QString notYetText()
{
    return QObject::tr("This console cannot add such an account yet.");
}

} // namespace

Select::Item::Item(int type, const QString& text, QWidget* parent)
    : QFrame(parent)
    , m_type(type)
    , m_text(text)
{
    setAutoFillBackground(true);
    setCursor(Qt::PointingHandCursor);
    auto layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 6, 10, 6);
    auto icon = new QLabel(this);
    icon->setPixmap(StorageConnectionsModel::storageIcon(TWL::Cloud::Type(type), IconManager::Large)
                        .pixmap(IconManager::iconSize(IconManager::Large)));
    auto label = new QLabel(text, this);
    layout->addWidget(icon);
    layout->addWidget(label, 1);
}

void Select::Item::setHover(bool on)
{
    setBackgroundRole(on ? QPalette::Highlight : QPalette::Window);
    setForegroundRole(on ? QPalette::HighlightedText : QPalette::WindowText);
}

void Select::Item::enterEvent(QEvent* event)
{
    setHover(isEnabled());
    QFrame::enterEvent(event);
}

void Select::Item::leaveEvent(QEvent* event)
{
    setHover(false);
    QFrame::leaveEvent(event);
}

void Select::Item::mouseReleaseEvent(QMouseEvent* event)
{
    QFrame::mouseReleaseEvent(event);
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()))
        Q_EMIT changed(m_type);
}

Select::Select(QWidget* parent)
    : QScrollArea(parent)
{
    setMinimumWidth(300);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    auto inner = new QWidget(this);
    column = new QVBoxLayout(inner);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addStretch(1);
    setWidget(inner);
}

Select::~Select() = default;

void Select::addItem(TWL::Cloud::Type type, const QString& text)
{
    auto item = new Item(type, text, widget());
    auto separator = new QFrame(widget());
    separator->setFrameShape(QFrame::HLine);
    separator->setStyleSheet(QStringLiteral("margin: 10px; color: lightgray; font-family: Georgia;"));
    const int at = column->count() - 1; // before the closing stretch
    column->insertWidget(at, item);
    column->insertWidget(at + 1, separator);
    m_items.append(item);
    connect(item, &Item::changed, this, &Select::accountSelected);
}

SelectStandalon::Menu::Menu(QWidget* parent)
    : QMenu(parent)
{
    const auto names = StorageName();
    for (TWL::Cloud::Type type : StorageType()) {
        QString label = names.value(type);
        label.replace(QLatin1Char('&'), QLatin1String("&&"));
        QAction* action = addAction(StorageConnectionsModel::storageIcon(type, IconManager::Small), label);
        action->setData(int(type));
        // Back-ends without a form are listed, so that users see what the product knows, but cannot be chosen.
        if (!AccountFactory::canAdd(type)) {
            action->setEnabled(false);
            action->setToolTip(notYetText());
        }
    }
    setToolTipsVisible(true);
}

SelectStandalon::SelectStandalon(QWidget* parent)
    : Select(parent)
{
    for (TWL::Cloud::Type type : StorageType()) {
        addItem(type, storageName(type));
        if (!AccountFactory::canAdd(type)) {
            items().last()->setEnabled(false);
            items().last()->setToolTip(notYetText());
        }
    }
}

QMap<TWL::Cloud::Type, QString> SelectStandalon::StorageName()
{
    using namespace TWL::Cloud;
    return {
        {FileSystem, tr("File System")},
        {AmazonS3, tr("Amazon S3 & Glacier")},
        {AzureBlob, tr("Azure")},
        {OracleCloud, tr("Oracle Cloud")},
        {Rackspace, tr("Rackspace")},
        {Openstack, tr("OpenStack")},
        {GoogleStorage, tr("Google Cloud")},
        {SoftLayer, tr("SoftLayer")},
        {HPCloud, tr("HP Cloud")},
        {S3Compatible, tr("S3 Compatible")},
        {Scality, tr("Scality")},
        {DreamObjects, tr("DreamObjects")},
        {Cloudian, tr("Cloudian")},
        {ThinkOn, tr("ThinkOn")},
        {CenturyLink, tr("CenturyLink")},
        {AmazonS3Chinese, tr("Amazon S3 (China)")},
        {Minio, tr("Minio")},
        {Verizon, tr("Verizon")},
        {Wasabi, tr("Wasabi")},
        {AlibabaCloud, tr("Alibaba Cloud")},
        {BackBlaze, tr("Backblaze B2")},
        {Sftp, tr("SFTP")},
    };
}

const QList<TWL::Cloud::Type>& SelectStandalon::StorageType()
{
    using namespace TWL::Cloud;
    static const QList<Type> order = {AmazonS3, AzureBlob, FileSystem, GoogleStorage, Openstack, Rackspace,
        AmazonS3Chinese, BackBlaze, CenturyLink, OracleCloud, Scality, SoftLayer, S3Compatible, Cloudian, DreamObjects,
        HPCloud, ThinkOn, Verizon, Minio, Wasabi, AlibabaCloud, Sftp};
    return order;
}

QString SelectStandalon::storageName(TWL::Cloud::Type type)
{
    return StorageName().value(type);
}

SelectFbs::SelectFbs(QWidget* parent)
    : Select(parent)
{
    if (allowFileSystem())
        addItem(TWL::Cloud::FileSystem, storageName(TWL::Cloud::FileSystem));
}

QString SelectFbs::storageName(TWL::Cloud::Type type)
{
    if (type == TWL::Cloud::FileSystem)
        return tr("File System");
    return TWB::Defines::Rebranding().value(QStringLiteral("ProductName")).toString();
}

QString storageName(TWL::Cloud::Type type)
{
    return Application::isStandalon() ? SelectStandalon::storageName(type) : SelectFbs::storageName(type);
}

} // namespace TWB::GUI::Settings::Account
