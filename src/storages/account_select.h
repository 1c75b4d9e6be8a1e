#pragma once

#include "platform/cloud/cloud_type.h"
#include "twbconsole_export.h"

#include <QFrame>
#include <QList>
#include <QMap>
#include <QMenu>
#include <QScrollArea>

class QVBoxLayout;

namespace TWB::GUI::Settings::Account {

/// The chooser of a new account's back-end: a column of icons and names, one per back-end offered.
class TWBCONSOLE_EXPORT Select : public QScrollArea
{
    Q_OBJECT
    Q_DISABLE_COPY(Select)
public:
    class Item;

    explicit Select(QWidget* parent = nullptr);
    ~Select() override;

    void addItem(TWL::Cloud::Type type, const QString& text);
    QList<Item*> items() const { return m_items; }

Q_SIGNALS:
    void accountSelected(int type);

private:
    QVBoxLayout* column; // owned by the inner widget
    QList<Item*> m_items; // owned as children
};

/// One back-end of the chooser. It lights up under the pointer and fires on release.
class TWBCONSOLE_EXPORT Select::Item : public QFrame
{
    Q_OBJECT
    Q_DISABLE_COPY(Item)
public:
    Item(int type, const QString& text, QWidget* parent = nullptr);
    int type() const { return m_type; }
    QString text() const { return m_text; }

Q_SIGNALS:
    void changed(int type);

protected:
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void setHover(bool on);
    const int m_type;
    const QString m_text;
};

/// The chooser of the standalone edition: every back-end that can be created here.
class TWBCONSOLE_EXPORT SelectStandalon : public Select
{
    Q_OBJECT
    Q_DISABLE_COPY(SelectStandalon)
public:
    class Menu;

    explicit SelectStandalon(QWidget* parent = nullptr);

    /// The label of each back-end that can be created; types without one are left out.
    static QMap<TWL::Cloud::Type, QString> StorageName();
    /// The order in which the chooser offers the back-ends.
    static const QList<TWL::Cloud::Type>& StorageType();
    /// The label of a type, empty for a type that cannot be created.
    static QString storageName(TWL::Cloud::Type type);
};

/// The same back-ends as a menu, for add buttons. Each action carries its type as data.
class TWBCONSOLE_EXPORT SelectStandalon::Menu : public QMenu
{
    Q_OBJECT
    Q_DISABLE_COPY(Menu)
public:
    explicit Menu(QWidget* parent = nullptr);
};

/// The chooser of the managed edition: only a local folder, and only where the product allows it.
class TWBCONSOLE_EXPORT SelectFbs : public Select
{
    Q_OBJECT
    Q_DISABLE_COPY(SelectFbs)
public:
    explicit SelectFbs(QWidget* parent = nullptr);
    static QString storageName(TWL::Cloud::Type type);
};

/// The label of a type in the running edition.
TWBCONSOLE_EXPORT QString storageName(TWL::Cloud::Type type);

} // namespace TWB::GUI::Settings::Account
