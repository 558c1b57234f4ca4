#ifndef ORVEKVIEW_H
#define ORVEKVIEW_H

#include <QMap>
#include <QString>
#include <QVariant>

#include "collectview.h"

class QGridLayout;
class QTabWidget;
class QWidget;

// A plain device view: the device name, a table of every data point and a
// control page with buzzer, startup/shutdown and clock buttons. Its widgets
// are found by object name, so refreshLayout can be called at any time and
// only builds what is missing.
class OrvekView : public CollectView
{
    Q_OBJECT

public:
    explicit OrvekView(CollectView *parent = nullptr);
    ~OrvekView() override;

    QMap<QString, QVariant> getUpsInfo();

public slots:
    void setName(QString name) override;
    void refreshLayout() override;
    void refreshData() override;
    void flushData(QMap<int, QVariant> d) override;
    void pushButtonSlot();

private:
    QGridLayout *ensureGrid();
    QTabWidget *ensureTabs(QGridLayout *grid);
    void ensureDataTable(QTabWidget *tabs);
    void ensureControlPage(QTabWidget *tabs);
};

#endif // ORVEKVIEW_H
