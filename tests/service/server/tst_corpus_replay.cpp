#include <QDir>
#include <QFile>
#include <QtTest>

#include <cstdint>

// The fuzz target this test is linked with: it aborts on any input that breaks what it checks.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

/// Replays a fuzzer's kept corpus through the same checks, so that every ordinary build still meets
/// the inputs the fuzzer found worth keeping.
class TestCorpusReplay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keptInputsPassTheFuzzChecks_data()
    {
        QTest::addColumn<QString>("file");
        const QDir corpus(QStringLiteral(FUZZ_CORPUS));
        const QStringList names = corpus.entryList(QDir::Files, QDir::Name);
        QVERIFY2(names.size() >= 5, qPrintable(corpus.path()));
        for (const QString& name : names)
            QTest::newRow(qPrintable(name)) << corpus.filePath(name);
    }

    void keptInputsPassTheFuzzChecks()
    {
        QFETCH(QString, file);
        QFile input(file);
        QVERIFY(input.open(QIODevice::ReadOnly));
        const QByteArray bytes = input.readAll();
        QCOMPARE(LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.constData()), size_t(bytes.size())), 0);
    }
};

QTEST_GUILESS_MAIN(TestCorpusReplay)

#include "tst_corpus_replay.moc"
