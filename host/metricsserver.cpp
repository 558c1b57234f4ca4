#include "metricsserver.h"

#include <QDateTime>

#include <cerrno>
#include <chrono>
#include <cstring>

#include <httplib.h>

#include "devicehost.h"
#include "devicesession.h"
#include "hostlogging.h"
#include "metricsexposition.h"

namespace {

// A scrape is one small answer: two worker threads are plenty.
constexpr int kWorkerThreads = 2;
constexpr int kStartWaitMs = 5000;
constexpr int kStartPollMs = 5;
const char kPath[] = "/metrics";

} // namespace

MetricsServer::MetricsServer(DeviceHost *host, QObject *parent)
    : QObject(parent)
    , m_host(host)
    , m_counters(host)
{
    m_timer.setInterval(RefreshMs);
    connect(&m_timer, &QTimer::timeout, this, &MetricsServer::refresh);
}

MetricsServer::~MetricsServer()
{
    stop();
}

bool MetricsServer::listen(const QString &address, quint16 port)
{
    stop();
    refresh();
    m_http.reset(new httplib::Server);
    m_http->new_task_queue = [] { return new httplib::ThreadPool(kWorkerThreads); };
    m_http->Get(kPath, [this](const httplib::Request &, httplib::Response &response) {
        const QByteArray text = exposition();
        response.set_content(text.constData(), size_t(text.size()), MetricsExposition::ContentType);
    });

    const std::string host = address.toStdString();
    errno = 0;
    const int bound = port == 0 ? m_http->bind_to_any_port(host) : (m_http->bind_to_port(host, port) ? port : -1);
    if (bound <= 0) {
        m_error = errno != 0 ? QString::fromLocal8Bit(std::strerror(errno)) : tr("the address cannot be bound");
        m_http.reset();
        return false;
    }
    m_port = quint16(bound);
    httplib::Server *http = m_http.get();
    m_thread = std::thread([http] { http->listen_after_bind(); });
    // stop() only ends a server that has begun to accept.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kStartWaitMs);
    while (!http->is_running() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(kStartPollMs));
    m_timer.start();
    qCDebug(lcHost) << "serving metrics at" << address << m_port;
    return true;
}

void MetricsServer::stop()
{
    m_timer.stop();
    if (!m_http)
        return;
    m_http->stop();
    if (m_thread.joinable())
        m_thread.join();
    m_http.reset();
    m_port = 0;
}

void MetricsServer::refresh()
{
    if (m_host->isShuttingDown())
        return;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    QList<MetricsDevice> devices;
    for (DeviceSession *session : m_host->sessions())
        devices << MetricsExposition::sample(*session, m_counters.counters(session->name()), now);
    const QByteArray text = MetricsExposition::text(devices);
    std::lock_guard<std::mutex> lock(m_mutex);
    m_text = text;
}

QByteArray MetricsServer::exposition() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_text;
}
