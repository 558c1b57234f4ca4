#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include <QColor>
#include <QDateTime>
#include <QElapsedTimer>
#include <QHash>
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
// only shows them, and asks for a device's view when it is first selected.
// A device's row is refreshed when its data or state changes, every row
// once a second for the age of the data.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    static constexpr int MaxEventRows = 500;
    static constexpr int RefreshPeriodMs = 1000;

    explicit MainWindow(DeviceHost *host, QWidget *parent = nullptr);
    ~MainWindow() override;

    // Colour of a device in the list: communicating green (purple with stale
    // data), lost red, not yet
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
    void refreshDevice(const QString &name);

signals:
    void screenshotDone(bool saved, QString file);

protected:
    void closeEvent(QCloseEvent *event) override;

private slots:
    void syncDevices();
    void addEvent(QDateTime time, QString device, int type, QString text);
    void addNotice(const HostNotice &notice);
    void onUserLevelChanged(int index);
    void onCurrentDeviceChanged(QTreeWidgetItem *current, QTreeWidgetItem *previous);
    void checkScreenshot();

private:
    QTreeWidgetItem *deviceItem(const QString &name) const { return m_items.value(name); }
    DeviceSession *sessionOf(const QTreeWidgetItem *item) const;
    void updateRow(QTreeWidgetItem *item, DeviceSession *session, const QDateTime &now);
    void updateCounts();
    void fitDeviceColumns();
    void detachView(const QString &name);
    void detachViews();
    void addEventRow(const QDateTime &time, const QString &device, const QString &text, const QColor &colour);
    bool allDevicesRead() const;

    Ui::MainWindow *ui;
    DeviceHost *m_host;
    QHash<QString, QTreeWidgetItem *> m_items;
    QMap<QString, QPointer<QWidget>> m_views;
    int m_communicating = 0;
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
