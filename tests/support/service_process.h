#pragma once

#include <QProcess>
#include <QString>

namespace TWB::Test {

/// The real twbd, run in the foreground on a test's own socket and data folder.
class ServiceProcess final
{
public:
    ServiceProcess(const QString& socketPath, const QString& dataDir);
    ~ServiceProcess();
    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;

    /// Starts twbd and waits until its socket answers.
    bool start(int timeoutMs = 10000);
    /// SIGTERM, then waits for the exit. True when it exited by itself with code 0.
    bool terminate(int timeoutMs = 10000);
    /// SIGKILL, as a crash would end it.
    void kill();
    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    qint64 pid() const { return m_process.processId(); }
    /// Everything the service printed so far.
    QString output();

    static QString program();
    /// Everything twbd wrote into its log files in `folder`, the oldest day first.
    static QString logText(const QString& folder);
    /// Whether something answers on a local socket path.
    static bool answers(const QString& socketPath);

private:
    QString m_socket;
    QString m_dataDir;
    QProcess m_process;
    QString m_output;
};

} // namespace TWB::Test
