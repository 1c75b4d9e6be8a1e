#pragma once

#include <QDateTime>
#include <QString>
#include <QTemporaryDir>

namespace TWB::Test {

/// A private world for one test program: its own data folder, socket, configuration and
/// rebranding file, set in the environment before the channel is first used.
/// Make it in initTestCase(), before anything touches the singletons.
class TestEnvironment final
{
public:
    TestEnvironment();

    QString root() const { return m_dir.path(); }
    QString socketPath() const;
    QString dataDir() const;
    QString configFile() const;
    QString rebrandingFile() const;

    /// Shortens the channel's waits so that reconnection tests take milliseconds.
    static void speedUpChannel();
    /// Where tests put the pictures of their widgets.
    static QString outputDir();
    /// Replaces a file's content, making its folder, and sets its modification time when one is given;
    /// a failure fails the running test.
    static void writeFile(const QString& path, const QByteArray& text, const QDateTime& modified = {});

private:
    QTemporaryDir m_dir;
};

} // namespace TWB::Test
