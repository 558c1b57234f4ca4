#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include <QColor>
#include <QDateTime>
#include <QElapsedTimer>
#include <QMainWindow>
#include <QMap>
#include <QPointer>
#include <QTimer>

#include "devicesession.h"

class DeviceHost;
struct HostNotice;
class QLabel;
class QTreeWidgetItem;

namespace Ui {
class MainWindow;
}

// The host's window: the device list with a state colour and the age of the
// last data on the left, the selected device's own view on the right, the
// event log with the host's notices below and a status bar that keeps a log
// writing problem in sight. The views belong to their clients; the window
// only shows them.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    static constexpr int MaxEventRows = 500;
    static constexpr int RefreshPeriodMs = 1000;

    explicit MainWindow(DeviceHost *host, QWidget *parent = nullptr);
    ~MainWindow() override;

    // Colour of a device in the list: communicating green, lost red, not yet
    // decided grey, communicating with an active alarm orange.
    static QColor stateColour(const DeviceStatus &status);
    static QString stateText(const DeviceStatus &status);
    // The colour the list shows for a device (invalid when not listed).
    QColor deviceColour(const QString &name) const;

    void selectDevice(const QString &name);
    // Saves a picture of the window once every device has had a whole
    // polling rotation (or is lost), or when timeoutMs has passed.
    void saveScreenshotWhenReady(const QString &file, int timeoutMs);

public slots:
    void refreshDevices();

signals:
    void screenshotDone(bool saved, QString file);

protected:
    void closeEvent(QCloseEvent *event) override;

private slots:
    void syncDevices();
    void addEvent(QDateTime time, QString device, int type, QString text);
    void addNotice(const HostNotice &notice);
    void onUserLevelChanged(int index);
    void onCurrentDeviceChanged(QTreeWidgetItem *current);
    void checkScreenshot();

private:
    QTreeWidgetItem *deviceItem(const QString &name) const;
    void detachViews();
    void addEventRow(const QDateTime &time, const QString &device, const QString &text, const QColor &colour);
    bool allDevicesRead() const;

    Ui::MainWindow *ui;
    DeviceHost *m_host;
    QMap<QString, QPointer<QWidget>> m_views;
    QLabel *m_devicesLabel;
    QLabel *m_communicatingLabel;
    QLabel *m_lastEventLabel;
    QLabel *m_problemLabel;
    QTimer m_refreshTimer;
    QTimer m_screenshotTimer;
    QElapsedTimer m_screenshotClock;
    QString m_screenshotFile;
    int m_screenshotTimeoutMs = 0;
};

#endif // MAINWINDOW_H
