#include "service/server/unix_signal_watcher.h"

#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace TWB::Service {

namespace {
int pipeFds[2] = {-1, -1};

void onSignal(int number)
{
    const unsigned char byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = ::write(pipeFds[1], &byte, 1);
}
} // namespace

UnixSignalWatcher::UnixSignalWatcher(QObject* parent)
    : QObject(parent)
{
    if (pipeFds[0] < 0) {
        if (::pipe2(pipeFds, O_CLOEXEC | O_NONBLOCK) != 0)
            return;
    }
    m_notifier = new QSocketNotifier(pipeFds[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &UnixSignalWatcher::onReadable);

    struct sigaction action
    { };
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int number : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(number, &action, nullptr);
}

UnixSignalWatcher::~UnixSignalWatcher()
{
    for (int number : {SIGTERM, SIGINT, SIGHUP})
        std::signal(number, SIG_DFL);
}

void UnixSignalWatcher::onReadable()
{
    unsigned char byte = 0;
    while (::read(pipeFds[0], &byte, 1) == 1)
        Q_EMIT terminationRequested(byte);
}

} // namespace TWB::Service
