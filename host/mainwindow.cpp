#include "mainwindow.h"
#include "ui_mainwindow.h"

#include <QCloseEvent>
#include <QLabel>
#include <QPainter>
#include <QPixmap>

#include "collectview.h"
#include "devicehost.h"
#include "hostlogging.h"
#include "logwriter.h"
#include "upscontract.h"

namespace {

enum DeviceColumn { ColName, ColState, ColModel, ColLoad, ColAddress, ColLastData };
enum EventColumn { ColTime, ColDevice, ColText };

constexpr int kNameRole = Qt::UserRole;
constexpr int kColourRole = Qt::UserRole + 1;
constexpr int kCommunicatingRole = Qt::UserRole + 2;
constexpr int kDotSize = 12;
constexpr int kScreenshotPollMs = 250;
constexpr int kDevicePaneWidth = 620;
constexpr int kEventPaneHeight = 170;

const QColor kCommunicating(0x2e, 0xa0, 0x43);
const QColor kLost(0xd3, 0x2f, 0x2f);
const QColor kUndecided(0x9e, 0x9e, 0x9e);
const QColor kAlarm(0xf5, 0x8c, 0x00);
const QColor kNotice(0xb2, 0x5e, 0x00);
const QColor kStale(0x8e, 0x24, 0xaa);

QIcon dotIcon(const QColor &colour)
{
    QPixmap pixmap(kDotSize, kDotSize);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colour.darker(130));
    painter.setBrush(colour);
    painter.drawEllipse(QRectF(0.5, 0.5, kDotSize - 1.0, kDotSize - 1.0));
    return QIcon(pixmap);
}

} // namespace

MainWindow::MainWindow(DeviceHost *host, QWidget *parent)
    : QMainWindow(parent)
    , ui(new Ui::MainWindow)
    , m_host(host)
    , m_devicesLabel(new QLabel(this))
    , m_communicatingLabel(new QLabel(this))
    , m_lastEventLabel(new QLabel(this))
    , m_problemLabel(new QLabel(this))
{
    ui->setupUi(this);
    statusBar()->addWidget(m_devicesLabel);
    statusBar()->addWidget(m_communicatingLabel);
    statusBar()->addWidget(m_lastEventLabel, 1);
    statusBar()->addPermanentWidget(m_problemLabel);
    m_problemLabel->setObjectName(QStringLiteral("problemLabel"));
    m_problemLabel->setStyleSheet(QStringLiteral("color: %1;").arg(kLost.name()));
    m_problemLabel->setVisible(false);
    ui->topSplitter->setStretchFactor(0, 0);
    ui->topSplitter->setStretchFactor(1, 1);
    ui->topSplitter->setSizes({kDevicePaneWidth, width() - kDevicePaneWidth});
    ui->mainSplitter->setStretchFactor(0, 1);
    ui->mainSplitter->setStretchFactor(1, 0);
    ui->mainSplitter->setSizes({height() - kEventPaneHeight, kEventPaneHeight});
    // Device columns are fitted to the rows in sight once a second (fitDeviceColumns):
    // fitting them on every changed cell measures every row's text each time.
    ui->deviceTree->header()->setSectionResizeMode(QHeaderView::Interactive);
    ui->deviceTree->header()->setResizeContentsPrecision(0);
    ui->deviceTree->header()->setStretchLastSection(true);
    ui->eventTable->header()->setResizeContentsPrecision(0);
    ui->eventTable->header()->setSectionResizeMode(ColTime, QHeaderView::ResizeToContents);
    ui->eventTable->header()->setSectionResizeMode(ColDevice, QHeaderView::ResizeToContents);
    ui->eventTable->header()->setStretchLastSection(true);
    m_lastEventLabel->setText(tr("No events yet"));

    ui->userLevelCombo->setCurrentIndex(qBound(0, host->userLevel(), ui->userLevelCombo->count() - 1));
    connect(ui->userLevelCombo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &MainWindow::onUserLevelChanged);
    connect(ui->deviceTree, &QTreeWidget::currentItemChanged, this, &MainWindow::onCurrentDeviceChanged);
    connect(ui->actionQuit, &QAction::triggered, this, &QWidget::close);
    connect(m_host, &DeviceHost::sessionsChanged, this, &MainWindow::syncDevices);
    connect(m_host, &DeviceHost::eventLogged, this, &MainWindow::addEvent);
    connect(m_host, &DeviceHost::noticeRaised, this, &MainWindow::addNotice);
    connect(m_host, &DeviceHost::dataLogged, this, &MainWindow::refreshDevice);
    connect(m_host, &DeviceHost::deviceEvent, this, [this](const QString &name, int type) {
        if (type == UpsEvent::Restored || type == UpsEvent::Lost || type == UpsEvent::State
            || type == DeviceHost::DataStale || type == DeviceHost::DataCurrent)
            refreshDevice(name);
    });
    connect(&m_refreshTimer, &QTimer::timeout, this, &MainWindow::refreshDevices);
    connect(&m_screenshotTimer, &QTimer::timeout, this, &MainWindow::checkScreenshot);

    // What the host had to say before the window opened (dev.ini, plug-ins).
    for (const HostNotice &notice : m_host->notices())
        addNotice(notice);
    syncDevices();
    m_refreshTimer.start(RefreshPeriodMs);
}

MainWindow::~MainWindow()
{
    detachViews();
    delete ui;
}

void MainWindow::detachViews()
{
    for (const QString &name : m_views.keys())
        detachView(name);
}

void MainWindow::detachView(const QString &name)
{
    // The views are the clients' to delete: hand them back before the stack
    // (their parent here) goes.
    QPointer<QWidget> view = m_views.take(name);
    if (view) {
        ui->viewStack->removeWidget(view);
        view->setParent(nullptr);
    }
}

DeviceSession *MainWindow::sessionOf(const QTreeWidgetItem *item) const
{
    return item ? m_host->session(item->data(ColName, kNameRole).toString()) : nullptr;
}

void MainWindow::syncDevices()
{
    const QList<DeviceSession *> sessions = m_host->sessions();
    // Devices that went away: drop their rows and give their views back.
    for (auto it = m_items.begin(); it != m_items.end();) {
        if (m_host->session(it.key())) {
            ++it;
            continue;
        }
        detachView(it.key());
        if (it.value()->data(ColName, kCommunicatingRole).toBool())
            --m_communicating;
        delete it.value();
        it = m_items.erase(it);
    }
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (DeviceSession *session : sessions) {
        if (m_items.contains(session->name()))
            continue;
        auto *item = new QTreeWidgetItem(ui->deviceTree);
        item->setText(ColName, session->name());
        item->setData(ColName, kNameRole, session->name());
        m_items.insert(session->name(), item);
        updateRow(item, session, now);
    }
    if (!ui->deviceTree->currentItem() && ui->deviceTree->topLevelItemCount() > 0)
        ui->deviceTree->setCurrentItem(ui->deviceTree->topLevelItem(0));
    updateCounts();
    fitDeviceColumns();
}

void MainWindow::refreshDevices()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (auto it = m_items.constBegin(); it != m_items.constEnd(); ++it) {
        if (DeviceSession *session = m_host->session(it.key()))
            updateRow(it.value(), session, now);
    }
    updateCounts();
    fitDeviceColumns();
}

void MainWindow::fitDeviceColumns()
{
    for (int c = ColName; c < ColLastData; ++c) // the last column takes the rest
        ui->deviceTree->resizeColumnToContents(c); // measures the rows in sight only
}

void MainWindow::refreshDevice(const QString &name)
{
    QTreeWidgetItem *item = deviceItem(name);
    DeviceSession *session = m_host->session(name);
    if (!item || !session)
        return;
    updateRow(item, session, QDateTime::currentDateTimeUtc());
    updateCounts();
}

void MainWindow::updateRow(QTreeWidgetItem *item, DeviceSession *session, const QDateTime &now)
{
    const DeviceStatus status = session->status();
    const bool communicating = status.state == DeviceStatus::State::Communicating;
    if (item->data(ColName, kCommunicatingRole).toBool() != communicating) {
        m_communicating += communicating ? 1 : -1;
        item->setData(ColName, kCommunicatingRole, communicating);
    }
    const QColor colour = stateColour(status);
    if (item->data(ColName, kColourRole).value<QColor>() != colour) {
        item->setIcon(ColName, dotIcon(colour));
        item->setData(ColName, kColourRole, colour);
    }
    item->setText(ColState, stateText(status));
    item->setText(ColModel, status.model);
    item->setText(ColLoad, status.load >= 0 ? tr("%1 %").arg(status.load) : QString());
    item->setText(ColAddress, status.portInfo);
    item->setText(ColLastData, DeviceSession::dataAgeText(session->lastDataTime(), now));
    const QStringList alarms = session->activeAlarms();
    item->setToolTip(ColName, alarms.isEmpty() ? status.portInfo
                                               : tr("Active alarms:\n%1").arg(alarms.join(QLatin1Char('\n'))));
}

void MainWindow::updateCounts()
{
    m_devicesLabel->setText(tr("Devices: %1").arg(m_items.size()));
    m_communicatingLabel->setText(tr("Communicating: %1").arg(m_communicating));
}

QColor MainWindow::stateColour(const DeviceStatus &status)
{
    switch (status.state) {
    case DeviceStatus::State::Lost:
        return kLost;
    case DeviceStatus::State::Communicating:
        if (status.stale)
            return kStale;
        return status.alarmActive ? kAlarm : kCommunicating;
    case DeviceStatus::State::Unknown:
        break;
    }
    return kUndecided;
}

QString MainWindow::stateText(const DeviceStatus &status)
{
    switch (status.state) {
    case DeviceStatus::State::Lost:
        return tr("Communication lost");
    case DeviceStatus::State::Communicating:
        if (status.stale)
            return tr("Data stale");
        return status.alarmActive ? tr("Alarm") : tr("Communicating");
    case DeviceStatus::State::Unknown:
        break;
    }
    return tr("Connecting");
}

QColor MainWindow::deviceColour(const QString &name) const
{
    const QTreeWidgetItem *item = deviceItem(name);
    return item ? item->data(ColName, kColourRole).value<QColor>() : QColor();
}

void MainWindow::selectDevice(const QString &name)
{
    if (QTreeWidgetItem *item = deviceItem(name))
        ui->deviceTree->setCurrentItem(item);
}

void MainWindow::onCurrentDeviceChanged(QTreeWidgetItem *current, QTreeWidgetItem *previous)
{
    if (DeviceSession *session = sessionOf(previous))
        session->hideView();
    DeviceSession *session = sessionOf(current);
    QWidget *view = session ? session->showView() : nullptr;
    if (view && !m_views.contains(session->name())) {
        ui->viewStack->addWidget(view);
        m_views.insert(session->name(), view);
    }
    ui->viewStack->setCurrentWidget(view ? view : ui->emptyPage);
}

void MainWindow::addEvent(QDateTime time, QString device, int type, QString text)
{
    addEventRow(time, device, text, type == UpsEvent::Lost ? kLost : type == DeviceHost::DataStale ? kStale : QColor());
    m_lastEventLabel->setText(tr("Last event: %1 %2 - %3").arg(time.toString(QStringLiteral("hh:mm:ss")), device, text));
}

void MainWindow::addNotice(const HostNotice &notice)
{
    addEventRow(notice.time, notice.device.isEmpty() ? tr("Host") : notice.device, notice.text, kNotice);
    // A log that cannot be written stays in sight until it works again.
    const QString failure = m_host->logs().failure();
    m_problemLabel->setText(failure);
    m_problemLabel->setToolTip(failure);
    m_problemLabel->setVisible(!failure.isEmpty());
}

void MainWindow::addEventRow(const QDateTime &time, const QString &device, const QString &text,
                             const QColor &colour)
{
    auto *item = new QTreeWidgetItem;
    item->setText(ColTime, LogWriter::timeText(time));
    item->setText(ColDevice, device);
    item->setText(ColText, text);
    item->setToolTip(ColText, text);
    if (colour.isValid()) {
        for (int c = ColTime; c <= ColText; ++c)
            item->setForeground(c, colour);
    }
    ui->eventTable->insertTopLevelItem(0, item); // newest first
    while (ui->eventTable->topLevelItemCount() > MaxEventRows)
        delete ui->eventTable->takeTopLevelItem(ui->eventTable->topLevelItemCount() - 1);
}

void MainWindow::onUserLevelChanged(int index)
{
    if (index < 0)
        return;
    // The combo box lists the levels in order: its index is the level.
    m_host->setUserInfo(DeviceHost::roleName(index), index);
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (m_host->isShuttingDown()) {
        event->ignore(); // already waiting for the clients
        return;
    }
    const int running = m_host->sessions().size();
    if (running > 0) {
        m_refreshTimer.stop();
        centralWidget()->setEnabled(false);
        m_host->shutdown([this](const QStringList &stillRunning) {
            statusBar()->showMessage(
                tr("Stopping %1: a device in a connection attempt can take up to %2 s to stop...")
                    .arg(stillRunning.join(QStringLiteral(", ")))
                    .arg(DeviceHost::StopBoundSeconds));
        });
        statusBar()->clearMessage();
    }
    event->accept();
}

void MainWindow::saveScreenshotWhenReady(const QString &file, int timeoutMs)
{
    m_screenshotFile = file;
    m_screenshotTimeoutMs = timeoutMs;
    m_screenshotClock.start();
    m_screenshotTimer.start(kScreenshotPollMs);
}

bool MainWindow::allDevicesRead() const
{
    if (m_host->isStartingDevices())
        return false;
    for (DeviceSession *session : m_host->sessions()) {
        if (!session->hasFullPicture() && session->status().state != DeviceStatus::State::Lost)
            return false;
    }
    return true;
}

void MainWindow::checkScreenshot()
{
    const bool timedOut = m_screenshotClock.elapsed() > m_screenshotTimeoutMs;
    if (!allDevicesRead() && !timedOut)
        return;
    m_screenshotTimer.stop();
    if (timedOut)
        qCWarning(lcHost) << "not every device was read in time; taking the picture anyway";
    refreshDevices();
    const bool saved = grab().save(m_screenshotFile);
    emit screenshotDone(saved, m_screenshotFile);
}
