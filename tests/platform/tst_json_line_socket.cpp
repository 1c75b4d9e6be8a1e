#include "platform/communication/json_line_socket.h"

#include <QJsonArray>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using TWB::Common::Communication::JsonLineSocket;

class TestJsonLineSocket : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<QLocalServer> m_server;
    std::unique_ptr<QLocalSocket> m_writer; // client end: the test writes raw bytes here
    QLocalSocket* m_readerSocket = nullptr; // server end, owned by the server
    std::unique_ptr<JsonLineSocket> m_reader;

    void writeRaw(const QByteArray& bytes)
    {
        m_writer->write(bytes);
        QVERIFY(m_writer->waitForBytesWritten(2000) || m_writer->bytesToWrite() == 0);
    }

private Q_SLOTS:
    void init()
    {
        m_server = std::make_unique<QLocalServer>();
        const QString path = m_dir.path() + QStringLiteral("/lines.sock");
        QLocalServer::removeServer(path);
        QVERIFY(m_server->listen(path));
        m_writer = std::make_unique<QLocalSocket>();
        m_writer->connectToServer(path);
        QVERIFY(m_writer->waitForConnected(2000));
        QVERIFY(m_server->waitForNewConnection(2000));
        m_readerSocket = m_server->nextPendingConnection();
        QVERIFY(m_readerSocket);
        m_reader = std::make_unique<JsonLineSocket>(m_readerSocket);
    }

    void cleanup()
    {
        m_reader.reset();
        m_writer.reset();
        m_server.reset();
    }

    void linesSplitAcrossWritesAndJoinedInOneArriveWhole()
    {
        QSignalSpy messages(m_reader.get(), &JsonLineSocket::messageReceived);
        QSignalSpy errors(m_reader.get(), &JsonLineSocket::protocolError);
        writeRaw("{\"n\":1,\"text\":\"first half");
        QTest::qWait(50); // give the reader a chance to see the incomplete line on its own
        QCOMPARE(messages.count(), 0);
        writeRaw(" and second\"}\n{\"n\":2}\n\n{\"n\":3}\n{\"n\":");
        QTRY_COMPARE(messages.count(), 3);
        writeRaw("4}\n");
        QTRY_COMPARE(messages.count(), 4);
        for (int i = 0; i < 4; ++i)
            QCOMPARE(messages.at(i).at(0).toJsonObject().value(QStringLiteral("n")).toInt(), i + 1);
        QCOMPARE(messages.at(0).at(0).toJsonObject().value(QStringLiteral("text")).toString(),
            QStringLiteral("first half and second"));
        QCOMPARE(errors.count(), 0);
    }

    void sentMessagesAreCompactLines()
    {
        // No line reader on the far end: the test reads the raw bytes to see the framing itself.
        m_reader.reset();
        JsonLineSocket writer(m_writer.get());
        QJsonObject message {{QStringLiteral("type"), QStringLiteral("request")},
            {QStringLiteral("list"), QJsonArray {1, 2, 3}}, {QStringLiteral("text"), QStringLiteral("a\nb")}};
        QVERIFY(writer.send(message));
        QVERIFY(m_writer->waitForBytesWritten(2000) || m_writer->bytesToWrite() == 0);
        QByteArray raw;
        QTRY_VERIFY((raw += m_readerSocket->readAll()).endsWith('\n'));
        QCOMPARE(raw.count('\n'), 1);
        QVERIFY(!raw.contains(": "));
        QCOMPARE(QJsonDocument::fromJson(raw).object(), message);
    }

    void brokenLineIsAProtocolErrorAndClosesTheSocket_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("json string") << QByteArray("\"text\"\n");
        QTest::newRow("truncated object") << QByteArray("{\"a\":\n");
        QTest::newRow("invalid utf-8 in a string") << QByteArray("{\"a\":\"\xff\xfe\"}\n");
    }

    void brokenLineIsAProtocolErrorAndClosesTheSocket()
    {
        QFETCH(QByteArray, bytes);
        QSignalSpy messages(m_reader.get(), &JsonLineSocket::messageReceived);
        QSignalSpy errors(m_reader.get(), &JsonLineSocket::protocolError);
        writeRaw(QByteArray("{\"ok\":true}\n") + bytes + QByteArray("{\"after\":true}\n"));
        QTRY_COMPARE(errors.count(), 1);
        // The good line before the broken one is delivered; nothing after it.
        QCOMPARE(messages.count(), 1);
        QCOMPARE(m_readerSocket->state(), QLocalSocket::UnconnectedState);
        QVERIFY(!m_reader->send(QJsonObject {{QStringLiteral("x"), 1}}));
    }

    void overlongLineIsRefusedBeforeItEnds()
    {
        m_reader->setMaxLineSize(1024);
        QSignalSpy errors(m_reader.get(), &JsonLineSocket::protocolError);
        writeRaw(QByteArray("{\"blob\":\"") + QByteArray(4096, 'x'));
        QTRY_COMPARE(errors.count(), 1);
        QVERIFY(errors.at(0).at(0).toString().contains(QStringLiteral("limit")));
    }

    void lineAtTheLimitIsAccepted()
    {
        const QByteArray line = QByteArray("{\"blob\":\"") + QByteArray(1000, 'y') + QByteArray("\"}");
        m_reader->setMaxLineSize(line.size());
        QSignalSpy messages(m_reader.get(), &JsonLineSocket::messageReceived);
        QSignalSpy errors(m_reader.get(), &JsonLineSocket::protocolError);
        writeRaw(line + '\n');
        QTRY_COMPARE(messages.count(), 1);
        QCOMPARE(errors.count(), 0);
    }
};

QTEST_GUILESS_MAIN(TestJsonLineSocket)
#include "tst_json_line_socket.moc"
