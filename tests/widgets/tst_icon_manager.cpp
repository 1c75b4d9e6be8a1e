#include "widgets/icon_manager.h"
#include "widgets/image_manager.h"

#include <QIcon>
#include <QImage>
#include <QMetaEnum>
#include <QtTest>

using namespace TWB::GUI;

namespace {

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

class TestIconManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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

QTEST_MAIN(TestIconManager)
#include "tst_icon_manager.moc"
