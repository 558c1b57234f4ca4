#include "quitonsignal.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

int QuitOnSignal::s_fds[2] = {-1, -1};

QuitOnSignal::QuitOnSignal(QObject *parent)
    : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, s_fds) != 0)
        return;
    m_notifier = new QSocketNotifier(s_fds[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &QuitOnSignal::onActivated);
    struct sigaction action = {};
    action.sa_handler = &QuitOnSignal::handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    if (::sigaction(SIGINT, &action, nullptr) != 0 || ::sigaction(SIGTERM, &action, nullptr) != 0) {
        delete m_notifier;
        m_notifier = nullptr;
        ::close(s_fds[0]);
        ::close(s_fds[1]);
        s_fds[0] = s_fds[1] = -1;
    }
}

QuitOnSignal::~QuitOnSignal()
{
    if (!m_notifier)
        return;
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
    ::close(s_fds[0]);
    ::close(s_fds[1]);
    s_fds[0] = s_fds[1] = -1;
}

void QuitOnSignal::handler(int signalNumber)
{
    Q_UNUSED(signalNumber)
    const char byte = 1;
    const ssize_t written = ::write(s_fds[0], &byte, 1);
    Q_UNUSED(written)
}

void QuitOnSignal::onActivated()
{
    char byte;
    const ssize_t got = ::read(s_fds[1], &byte, 1);
    Q_UNUSED(got)
    emit signalled();
}
