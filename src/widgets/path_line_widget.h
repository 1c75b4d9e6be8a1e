#pragma once

#include "twbconsole_export.h"

#include <QFileIconProvider>
#include <QList>
#include <QMimeDatabase>
#include <QWidget>

class QHBoxLayout;
class QToolButton;

namespace TWB::GUI {

/// A path shown as a row of its elements, each with a folder or file icon by its name, in the look of a read-only line
/// edit.
class TWBCONSOLE_EXPORT PathLineWidget : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(PathLineWidget)
public:
    explicit PathLineWidget(QWidget* parent = nullptr);
    ~PathLineWidget() override;

    /// Shows the elements of `path`, split at "/", empty parts left out.
    void setPath(const QString& path);
    /// Appends one element: an arrow, then the element's name with `path` (the path up to it) as tool tip.
    void addItems(const QString& name, const QString& path);
    /// Removes the elements from the one at `from` on.
    void removeItems(int from);
    /// Removes the last element.
    void deleteItem();

    int itemCount() const { return items.size(); }
    /// The tool button of an element's name.
    QToolButton* item(int index) const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    struct Item
    {
        QToolButton* arrow; // owned as a child
        QToolButton* name; // owned as a child
    };

    QHBoxLayout* layout; // owned by the widget
    QList<Item> items;
    QFileIconProvider iconProvider;
    QMimeDatabase mimeTypes;
};

} // namespace TWB::GUI
