#include "support/test_environment.h"
#include "widgets/check_box.h"
#include "widgets/clouds_image_widget_standalone.h"
#include "widgets/edit_list_widget.h"
#include "widgets/elided_label.h"
#include "widgets/email_validator.h"
#include "widgets/icon_manager.h"
#include "widgets/image_manager.h"
#include "widgets/label_button.h"
#include "widgets/path_line_widget.h"
#include "widgets/prefix_validator.h"
#include "widgets/process_dialog.h"
#include "widgets/progress_wheel.h"
#include "widgets/radio_button.h"
#include "widgets/text_edit_input_limit.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QFileIconProvider>
#include <QFormLayout>
#include <QLineEdit>
#include <QMetaEnum>
#include <QListView>
#include <QSignalSpy>
#include <QStringListModel>
#include <QSvgRenderer>
#include <QSvgWidget>
#include <QToolButton>
#include <QVBoxLayout>
#include <QAccessible>
#include <QtTest>

using namespace TWB::GUI;
using TWB::Test::TestEnvironment;

namespace {

/// Serves the add and remove clicks, as the storage list does.
class RecordingList final : public EditListWidget
{
public:
    using EditListWidget::EditListWidget;

    int adds = 0;
    int removes = 0;
    QList<QModelIndex> currents;

    void onSetCurrentItem(const QModelIndex& index) override
    {
        currents.append(index);
        EditListWidget::onSetCurrentItem(index);
    }

protected:
    void onAddClicked() override { ++adds; }
    void onRemoveClicked() override { ++removes; }
};

/// Counts the line edits that get polished, as each one does when first asked for its size.
class PolishCounter : public QObject
{
public:
    int lineEdits = 0;
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Polish && qobject_cast<QLineEdit*>(watched))
            ++lineEdits;
        return false;
    }
};

/// Whether anything solid was drawn: a missing or broken resource renders fully transparent.
bool hasInk(const QImage& image)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) == 255)
                return true;
        }
    }
    return false;
}

QList<int> enumValues(const char* name)
{
    const QMetaObject& meta = IconManager::staticMetaObject;
    const QMetaEnum type = meta.enumerator(meta.indexOfEnumerator(name));
    QList<int> values;
    for (int i = 0; i < type.keyCount(); ++i)
        values.append(type.value(i));
    return values;
}

} // namespace

/// The small widgets, and the icons and images they and the views draw.
class TestSmallWidgets : public QObject
{
    Q_OBJECT

private:
    static void savePicture(QWidget& widget, const QString& name)
    {
        widget.ensurePolished();
        if (auto layout = widget.layout())
            layout->activate();
        const QString path = TestEnvironment::outputDir() + QStringLiteral("/widget_") + name + QStringLiteral(".png");
        QVERIFY(widget.grab().save(path));
    }

    template <typename Button> void labelClickTogglesButton()
    {
        QWidget window;
        auto layout = new QVBoxLayout(&window);
        auto button = new Button(QStringLiteral("Back up hidden files"));
        layout->addWidget(button);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QLabel* label = button->label();
        QCOMPARE(label->text(), QStringLiteral("Back up hidden files"));
        QVERIFY(label->geometry().left() > 0);
        // A button group or a screen reader sees the button's own text, which is the label's.
        QAbstractButton* plain = button;
        QCOMPARE(plain->text(), QStringLiteral("Back up hidden files"));
        QCOMPARE(QAccessible::queryAccessibleInterface(button)->text(QAccessible::Name),
            QStringLiteral("Back up hidden files"));
        // Set through the base class, the text moves into the label and is drawn once.
        plain->setText(QStringLiteral("Skip caches"));
        QCOMPARE(button->label()->text(), QStringLiteral("Skip caches"));
        QCOMPARE(QAccessible::queryAccessibleInterface(button)->text(QAccessible::Name), QStringLiteral("Skip caches"));
        // Only the label draws the text: with it hidden, the button looks the same whatever its text.
        label->hide();
        const QImage withText = button->grab().toImage();
        plain->setText(QString());
        QCOMPARE(button->grab().toImage(), withText);
        plain->setText(QStringLiteral("Back up hidden files"));
        label->show();

        QSignalSpy clicked(button, &QAbstractButton::clicked);
        QTest::mouseClick(label, Qt::LeftButton, Qt::NoModifier, label->rect().center());
        QCOMPARE(clicked.count(), 1);
        QVERIFY(button->isChecked());

        // Pressed on the text, let go beside it: nothing.
        QTest::mousePress(label, Qt::LeftButton, Qt::NoModifier, label->rect().center());
        QTest::mouseRelease(label, Qt::LeftButton, Qt::NoModifier, QPoint(label->width() + 30, label->height() / 2));
        QCOMPARE(clicked.count(), 1);
        QVERIFY(button->isChecked());

        // The right button does not click.
        QTest::mouseClick(label, Qt::RightButton, Qt::NoModifier, label->rect().center());
        QCOMPARE(clicked.count(), 1);

        button->setEnabled(false);
        const bool before = button->isChecked();
        QTest::mouseClick(label, Qt::LeftButton, Qt::NoModifier, label->rect().center());
        QCOMPARE(clicked.count(), 1);
        QCOMPARE(button->isChecked(), before);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QLocale::setDefault(QLocale::c());
    }

    void checkBoxTextClickToggles() { labelClickTogglesButton<CheckBox>(); }

    void radioButtonTextClickChecks() { labelClickTogglesButton<RadioButton>(); }

    void checkBoxIndicatorStillToggles()
    {
        CheckBox box(QStringLiteral("Use SSL"));
        box.resize(box.sizeHint());
        box.show();
        QVERIFY(QTest::qWaitForWindowExposed(&box));
        QStyleOptionButton option;
        option.initFrom(&box);
        const QRect indicator = box.style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, &box);
        QTest::mouseClick(&box, Qt::LeftButton, Qt::NoModifier, indicator.center());
        QVERIFY(box.isChecked());
        // The whole text fits: the box is as wide as its indicator and its label together.
        QVERIFY(box.sizeHint().width() >= box.label()->sizeHint().width() + indicator.width());
        savePicture(box, QStringLiteral("check_box"));
    }

    void pasteIsCutToTheLimit()
    {
        TextEditInputLimit edit(10);
        QSignalSpy counts(&edit, &TextEditInputLimit::numberOfCharactersChanged);
        QApplication::clipboard()->setText(QStringLiteral("0123456789ABCDEFGHIJ"));
        edit.paste();
        QCOMPARE(edit.toPlainText(), QStringLiteral("0123456789"));
        QVERIFY(!counts.isEmpty());
        QCOMPARE(counts.last().at(0).toInt(), 10);
        // One report for one paste, with the length that stands.
        QCOMPARE(counts.count(), 1);
    }

    void oneCharacterTooManyIsTakenBackWhereTyped()
    {
        TextEditInputLimit edit(5);
        edit.show();
        QVERIFY(QTest::qWaitForWindowExposed(&edit));
        QTest::keyClicks(&edit, QStringLiteral("abcde"));
        QCOMPARE(edit.toPlainText(), QStringLiteral("abcde"));
        QTextCursor cursor = edit.textCursor();
        cursor.setPosition(2);
        edit.setTextCursor(cursor);
        QSignalSpy counts(&edit, &TextEditInputLimit::numberOfCharactersChanged);
        QTest::keyClicks(&edit, QStringLiteral("X"));
        QCOMPARE(edit.toPlainText(), QStringLiteral("abcde"));
        QCOMPARE(edit.textCursor().position(), 2);
        QCOMPARE(counts.count(), 1);
        QCOMPARE(counts.last().at(0).toInt(), 5);

        edit.setInputLimit(7);
        QCOMPARE(edit.inputLimit(), 7);
        QTest::keyClicks(&edit, QStringLiteral("XYZ"));
        QCOMPARE(edit.toPlainText(), QStringLiteral("abXYcde"));
        edit.resize(240, 80);
        savePicture(edit, QStringLiteral("text_edit_input_limit"));
    }

    void editListServesItsButtonsAndSelection()
    {
        QStringListModel model({QStringLiteral("Local folder"), QStringLiteral("Office S3"),
            QStringLiteral("Backups on a very long bucket name")});
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        RecordingList list(false);
        list.setModel(&model, 0);
        QVERIFY(dynamic_cast<EditListWidget::Delegate*>(list.view()->itemDelegate()));
        QToolButton* add = list.addItemButton();
        QToolButton* remove = list.removeItemButton();
        QVERIFY(add && remove);
        QVERIFY(add->isEnabled());
        QVERIFY(!remove->isEnabled());

        QToolButton* edit = list.addButton(QIcon(), QStringLiteral("Edit Account"));
        list.resize(210, 200);
        list.show();
        QVERIFY(QTest::qWaitForWindowExposed(&list));
        // Buttons line up to the left in the order they were added.
        QVERIFY(add->x() < remove->x());
        QVERIFY(remove->x() < edit->x());
        QVERIFY(edit->geometry().right() < list.width() / 2 + edit->width());

        list.view()->setCurrentIndex(model.index(1, 0));
        QVERIFY(remove->isEnabled());
        QCOMPARE(list.currents.last(), model.index(1, 0));
        list.view()->clearSelection();
        QVERIFY(!list.currents.last().isValid());
        QVERIFY(!remove->isEnabled());

        QTest::mouseClick(add, Qt::LeftButton);
        QCOMPARE(list.adds, 1);
        list.view()->setCurrentIndex(model.index(0, 0));
        QTest::mouseClick(remove, Qt::LeftButton);
        QCOMPARE(list.removes, 1);
        savePicture(list, QStringLiteral("edit_list"));

        EditListWidget readOnly(true);
        QVERIFY(readOnly.isReadOnly());
        QVERIFY(readOnly.findChildren<QToolButton*>().isEmpty());
        readOnly.setModel(&model, 0);
        readOnly.resize(210, 140);
        savePicture(readOnly, QStringLiteral("edit_list_read_only"));
    }

    void centralLayoutIsSetOnce()
    {
        ProcessDialog dialog;
        dialog.setWindowTitle(QStringLiteral("Advanced settings"));
        auto first = new QFormLayout;
        first->addRow(QStringLiteral("Endpoint:"), new QLineEdit(QStringLiteral("https://s3.example.com")));
        first->addRow(QStringLiteral("Region:"), new QLineEdit(QStringLiteral("eu-west-1")));
        dialog.setCentralLayout(first);

        auto second = new QVBoxLayout;
        auto stray = new QLabel(QStringLiteral("never shown"));
        second->addWidget(stray);
        dialog.setCentralLayout(second);
        QCOMPARE(dialog.centralLayout(), first);
        QVERIFY(!second->parent());
        QVERIFY(!stray->parentWidget());
        delete second;
        delete stray;

        auto buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
        dialog.addDialogButtons(buttons);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        ProgressWheel* wheel = dialog.progressWheel();
        // The wheel at the left, the buttons at the right, 15 pixels from the edges.
        QVERIFY(wheel->geometry().right() < buttons->geometry().left());
        QCOMPARE(wheel->x(), 15);
        QCOMPARE(dialog.width() - buttons->geometry().right() - 1, 15);
        QCOMPARE(dialog.height() - buttons->geometry().bottom() - 1, 15);

        dialog.showWaitProcess(true);
        QVERIFY(!dialog.isEnabled());
        QVERIFY(wheel->isAnimated());
        QCOMPARE(dialog.cursor().shape(), Qt::WaitCursor);
        savePicture(dialog, QStringLiteral("process_dialog_waiting"));
        dialog.showWaitProcess(false);
        QVERIFY(dialog.isEnabled());
        QVERIFY(!wheel->isAnimated());
        QCOMPARE(dialog.cursor().shape(), Qt::ArrowCursor);
        savePicture(dialog, QStringLiteral("process_dialog"));
    }

    void wheelKeepsItsSizeWhenStopped()
    {
        ProgressWheel wheel(ProgressWheel::Dialog);
        wheel.startAnimate();
        wheel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wheel));
        auto label = wheel.findChild<QLabel*>();
        QVERIFY(label && label->isVisible());
        QTRY_VERIFY(!label->pixmap(Qt::ReturnByValue).isNull());
        QCOMPARE(label->pixmap(Qt::ReturnByValue).size() / label->pixmap(Qt::ReturnByValue).devicePixelRatio(),
            QSize(16, 16));
        savePicture(wheel, QStringLiteral("progress_wheel"));
        wheel.stopAnimate();
        QVERIFY(!wheel.isAnimated());
        QVERIFY(!label->isVisible());
        QCOMPARE(wheel.size(), QSize(16, 16));
    }

    void elidedLabelShortensItsText_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("startsWithEllipsis");
        QTest::addColumn<bool>("endsWithEllipsis");
        QTest::newRow("right") << int(Qt::ElideRight) << false << true;
        QTest::newRow("left") << int(Qt::ElideLeft) << true << false;
        QTest::newRow("none") << int(Qt::ElideNone) << false << false;
    }

    void elidedLabelShortensItsText()
    {
        QFETCH(int, mode);
        QFETCH(bool, startsWithEllipsis);
        QFETCH(bool, endsWithEllipsis);
        const QString text = QStringLiteral("/home/alice/Documents/Projects/2024/annual report final.odt");
        ElidedLabel label(text);
        label.setElideMode(Qt::TextElideMode(mode));
        label.resize(120, label.sizeHint().height());
        const QString shown = label.elidedText();
        const QChar ellipsis(0x2026);
        QCOMPARE(shown.startsWith(ellipsis), startsWithEllipsis);
        QCOMPARE(shown.endsWith(ellipsis), endsWithEllipsis);
        if (mode == Qt::ElideNone) {
            QCOMPARE(shown, text);
        } else {
            QVERIFY(label.fontMetrics().horizontalAdvance(shown) <= label.contentsRect().width());
            QVERIFY(label.minimumSizeHint().width() < 60);
            // Wide enough again, the whole text comes back; a new text is elided anew.
            label.resize(2000, label.height());
            QCOMPARE(label.elidedText(), text);
            label.setText(QStringLiteral("short"));
            QCOMPARE(label.elidedText(), QStringLiteral("short"));
            label.setText(text);
            label.resize(120, label.height());
        }
        savePicture(label, QStringLiteral("elided_label_") + QString::fromLatin1(QTest::currentDataTag()));
    }

    void labelButtonTakesHoverColourAndClicks()
    {
        const QColor normal(0, 102, 204);
        const QColor hover(255, 102, 0);
        LabelButton button(normal, hover);
        button.setText(QStringLiteral("Advanced settings"));
        QVERIFY(button.hasMouseTracking());
        QCOMPARE(button.palette().color(QPalette::WindowText), normal);
        QEvent enter(QEvent::Enter);
        QApplication::sendEvent(&button, &enter);
        QCOMPARE(button.palette().color(QPalette::WindowText), hover);
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(&button, &leave);
        QCOMPARE(button.palette().color(QPalette::WindowText), normal);
        QSignalSpy clicked(&button, &LabelButton::clicked);
        QTest::mouseClick(&button, Qt::LeftButton);
        QCOMPARE(clicked.count(), 1);
        savePicture(button, QStringLiteral("label_button"));
    }

    void pathLineShowsOneButtonPerElement()
    {
        PathLineWidget line;
        line.setPath(QStringLiteral("/home/alice//Documents/"));
        QCOMPARE(line.itemCount(), 3);
        QCOMPARE(line.item(0)->text(), QStringLiteral("home"));
        QCOMPARE(line.item(2)->text(), QStringLiteral("Documents"));
        QCOMPARE(line.item(0)->toolTip(), QStringLiteral("/home"));
        QCOMPARE(line.item(1)->toolTip(), QStringLiteral("/home/alice"));
        QCOMPARE(line.item(2)->toolTip(), QStringLiteral("/home/alice/Documents"));
        QCOMPARE(line.findChildren<QToolButton*>().size(), 6);
        line.resize(420, line.sizeHint().height());
        savePicture(line, QStringLiteral("path_line"));

        // Icons by the name's type, the disk left alone: this path is on no disk here.
        QFileIconProvider icons;
        line.setPath(QStringLiteral("/remote/alice/report.pdf"));
        QCOMPARE(line.item(1)->icon().pixmap(16).toImage(), icons.icon(QFileIconProvider::Folder).pixmap(16).toImage());
        QCOMPARE(line.item(2)->icon().pixmap(16).toImage(), icons.icon(QFileIconProvider::File).pixmap(16).toImage());

        // As tall as a line edit, without building one each time a layout asks.
        PathLineWidget empty;
        const int editHeight = QLineEdit().sizeHint().height();
        PolishCounter polished;
        qApp->installEventFilter(&polished);
        QCOMPARE(empty.sizeHint().height(), editHeight);
        QVERIFY(line.sizeHint().height() >= editHeight);
        qApp->removeEventFilter(&polished);
        QCOMPARE(polished.lineEdits, 0);

        // A new path replaces the old one whole.
        line.setPath(QStringLiteral("var/backups"));
        QCOMPARE(line.itemCount(), 2);
        QCOMPARE(line.item(1)->toolTip(), QStringLiteral("var/backups"));
        line.deleteItem();
        QCOMPARE(line.itemCount(), 1);
        QTRY_COMPARE(line.findChildren<QToolButton*>().size(), 2);
        line.removeItems(0);
        QCOMPARE(line.itemCount(), 0);
        QVERIFY(!line.item(0));
    }

    void prefixValidatorRefusesPathCharacters_data()
    {
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("empty") << QString() << true;
        QTest::newRow("plain name") << QStringLiteral("office-pc") << true;
        QTest::newRow("backslash") << QStringLiteral("a\\b") << true;
        QTest::newRow("slash") << QStringLiteral("a/b") << false;
        QTest::newRow("colon") << QStringLiteral("c:") << false;
    }

    void prefixValidatorRefusesPathCharacters()
    {
        QFETCH(QString, prefix);
        QFETCH(bool, accepted);
        PrefixValidator validator;
        QSignalSpy errors(&validator, &PrefixValidator::error);
        int pos = prefix.size();
        QCOMPARE(validator.validate(prefix, pos), accepted ? QValidator::Acceptable : QValidator::Invalid);
        QCOMPARE(errors.count(), accepted ? 0 : 1);
    }

    void emailValidatorStates_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<int>("state");
        const int ok = QValidator::Acceptable;
        const int partial = QValidator::Intermediate;
        const int bad = QValidator::Invalid;
        QTest::newRow("plain") << QStringLiteral("alice@example.com") << ok;
        QTest::newRow("sub-domain and plus") << QStringLiteral("alice+backup@mail.example.co.uk") << ok;
        QTest::newRow("empty") << QString() << partial;
        QTest::newRow("local part only") << QStringLiteral("alice") << partial;
        QTest::newRow("no top-level domain") << QStringLiteral("alice@example") << partial;
        QTest::newRow("one-letter top level") << QStringLiteral("alice@example.c") << partial;
        QTest::newRow("blanks around") << QStringLiteral(" alice@example.com ") << partial;
        QTest::newRow("blank inside") << QStringLiteral("alice smith@example.com") << bad;
        QTest::newRow("two at signs") << QStringLiteral("alice@@example.com") << bad;
        QTest::newRow("double dot") << QStringLiteral("alice..b@example.com") << bad;
        QTest::newRow("dot before at") << QStringLiteral("alice.@example.com") << bad;
        QTest::newRow("underscore in domain") << QStringLiteral("alice@ex_ample.com") << bad;
        QTest::newRow("hyphen ends label") << QStringLiteral("alice@example-.com") << bad;
        QTest::newRow("hyphen ends last label") << QStringLiteral("alice@example.com-") << partial;
    }

    void emailValidatorStates()
    {
        QFETCH(QString, address);
        QFETCH(int, state);
        EmailValidator validator;
        int pos = address.size();
        QCOMPARE(int(validator.validate(address, pos)), state);
    }

    void emailFixupTrimsBlanks()
    {
        EmailValidator validator;
        QString address = QStringLiteral("  alice@example.com\t");
        validator.fixup(address);
        QCOMPARE(address, QStringLiteral("alice@example.com"));
        int pos = 0;
        QCOMPARE(validator.validate(address, pos), QValidator::Acceptable);
    }

    void cloudsPanelShowsItsCaptionAndLogos()
    {
        CloudsImageWidgetStandalone panel;
        QCOMPARE(panel.caption(), QStringLiteral("Built for cloud storage:"));
        const auto logos = panel.findChildren<QSvgWidget*>();
        QCOMPARE(logos.size(), 3);
        for (QSvgWidget* logo : logos)
            QVERIFY(logo->renderer()->isValid());
        panel.resize(400, 240);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        // The logos sit in a row, inside the panel.
        QCOMPARE(logos.at(0)->y(), logos.at(2)->y());
        QVERIFY(logos.at(2)->geometry().right() < panel.width());
        QVERIFY(logos.at(0)->geometry().bottom() < panel.height());
        savePicture(panel, QStringLiteral("clouds_standalone"));

        CloudsImageWidget plain;
        plain.resize(300, 300);
        const QImage picture = plain.grab().toImage();
        // The sky is painted, not left to the window colour.
        QVERIFY(picture.pixelColor(2, 2).blue() > picture.pixelColor(2, 2).red());
        savePicture(plain, QStringLiteral("clouds"));
    }

    void everyNumberedIconHasBothDensities_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("edge");
        for (const int type : enumValues("Type")) {
            const QByteArray name = QMetaEnum::fromType<IconManager::Type>().valueToKey(type);
            QTest::newRow(name + " small") << type << int(IconManager::Small) << 16;
            QTest::newRow(name + " large") << type << int(IconManager::Large) << 32;
        }
    }

    void everyNumberedIconHasBothDensities()
    {
        QFETCH(int, type);
        QFETCH(int, size);
        QFETCH(int, edge);
        const QIcon icon = IconManager::icon(type, size);
        QVERIFY(!icon.isNull());
        const QList<QSize> sizes = icon.availableSizes();
        QVERIFY(sizes.contains(QSize(edge, edge)));
        QVERIFY(sizes.contains(QSize(2 * edge, 2 * edge)));
        // The pixmap for each density is drawn at that size, not scaled from the other.
        for (const int pixels : {edge, 2 * edge}) {
            const QImage image = icon.pixmap(QSize(pixels, pixels)).toImage();
            QCOMPARE(image.size(), QSize(pixels, pixels));
            QVERIFY2(hasInk(image), "the icon is empty");
        }
    }

    void everyStorageHasAnIcon()
    {
        const QList<int> storages = enumValues("Storage");
        QCOMPARE(storages.size(), 23);
        for (const int storage : storages) {
            const QIcon icon = IconManager::storage(storage, IconManager::Large);
            QVERIFY2(!icon.isNull(), qPrintable(QString::number(storage)));
            QVERIFY(hasInk(icon.pixmap(32, 32).toImage()));
        }
        for (const int unknown : {-1, 10, 11, 23, 26})
            QVERIFY(IconManager::storage(unknown, IconManager::Small).isNull());
    }

    void imagesRenderAtTheirLogicalSize_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QSize>("size");
        QTest::newRow("logo") << int(ImageManager::Logo) << QSize(64, 64);
        QTest::newRow("clouds") << int(ImageManager::CloudsBackground) << QSize(400, 240);
        QTest::newRow("wizard background") << int(ImageManager::WizardBackground) << QSize(170, 620);
    }

    void imagesRenderAtTheirLogicalSize()
    {
        QFETCH(int, type);
        QFETCH(QSize, size);
        QCOMPARE(ImageManager::imageSize(type), size);
        QVERIFY(ImageManager::image(7).isNull());
        const QPixmap single = ImageManager::image(type, 1.0);
        QCOMPARE(single.size(), size);
        QCOMPARE(single.devicePixelRatio(), 1.0);
        const QPixmap twice = ImageManager::image(type, 2.0);
        QCOMPARE(twice.size(), size * 2);
        QCOMPARE(twice.devicePixelRatio(), 2.0);
        QVERIFY(hasInk(twice.toImage()));
        QCOMPARE(ImageManager::image(type).size() / ImageManager::image(type).devicePixelRatio(), size);
    }
};

QTEST_MAIN(TestSmallWidgets)
#include "tst_small_widgets.moc"
