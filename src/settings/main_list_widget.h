#pragma once

#include "twbconsole_export.h"

#include <QStringList>
#include <QWidget>

class QRadioButton;

namespace TWB::GUI::Settings {

class ListWidget;

/// A list of entries under a radio button that switches the list on: one of the exclusive choices of
/// a filter page. Entries come by drop or by `addItem`, and leave through the context menu's "Remove".
class TWBCONSOLE_EXPORT MainListWidget final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(MainListWidget)
public:
    MainListWidget(const QString& title, QWidget* parent = nullptr);

    QRadioButton* radioButton() const { return radio; }
    void clear();
    void addItem(const QString& text);
    void addItems(const QStringList& texts);
    int count() const;
    bool isActivated() const;
    QStringList items() const;

public Q_SLOTS:
    void setActive(bool active);

private:
    void onRemove();

    QRadioButton* radio; // owned by parent-child
    ListWidget* list; // owned by parent-child
};

} // namespace TWB::GUI::Settings
