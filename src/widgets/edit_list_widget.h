#pragma once

#include "twbconsole_export.h"

#include <QFrame>
#include <QStyledItemDelegate>

class QAbstractItemModel;
class QHBoxLayout;
class QIcon;
class QItemSelection;
class QListView;
class QToolButton;

namespace TWB::GUI {

/// A narrow framed list with a row of tool buttons under it: add and remove, unless read-only, and any
/// further buttons a caller adds. Subclasses serve the add and remove clicks and the current row.
class TWBCONSOLE_EXPORT EditListWidget : public QFrame
{
    Q_OBJECT
    Q_DISABLE_COPY(EditListWidget)
public:
    /// Draws the rows of the list: a little taller than plain rows, with a faint rule between them.
    class TWBCONSOLE_EXPORT Delegate : public QStyledItemDelegate
    {
        // Without Q_OBJECT: moc does not take nested classes, and the delegate adds no signals.
        Q_DISABLE_COPY(Delegate)
    public:
        explicit Delegate(QObject* parent = nullptr);

        void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
        QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    };

    explicit EditListWidget(bool readOnly, QWidget* parent = nullptr);
    ~EditListWidget() override;

    /// A new button in the row under the list, after the buttons already there. The caller connects it.
    QToolButton* addButton(const QIcon& icon, const QString& text);

    virtual void setModel(QAbstractItemModel* model, int column);

    QListView* view() const { return list; }
    bool isReadOnly() const { return readOnly; }
    /// The add and remove buttons; null in a read-only list.
    QToolButton* addItemButton() const { return add; }
    QToolButton* removeItemButton() const { return remove; }

public Q_SLOTS:
    /// Follows the selection; an invalid index when nothing is selected. Enables the remove button
    /// for a valid index.
    virtual void onSetCurrentItem(const QModelIndex& index);

protected Q_SLOTS:
    virtual void onAddClicked();
    virtual void onRemoveClicked();

private:
    void onSelectionChanged();

    const bool readOnly;
    QListView* list; // owned as a child
    QHBoxLayout* buttonLayout; // owned by the widget's layout
    QToolButton* add = nullptr; // owned as a child
    QToolButton* remove = nullptr; // owned as a child
};

} // namespace TWB::GUI
