#ifndef COLLECTVIEW_H
#define COLLECTVIEW_H

#include <QMap>
#include <QMetaType>
#include <QString>
#include <QVariant>
#include <QWidget>

#include "collectthread.h"

// Base class of every device view a plug-in hands to the host. The host feeds
// it data points (flushData + refreshData); control requests leave through
// postDEvent with the control id as event type.
class CollectView : public QWidget
{
    Q_OBJECT
public:
    explicit CollectView(QWidget *parent = nullptr)
        : QWidget(parent)
    {
        CollectThread::registerContractTypes();
    }
    ~CollectView() override = default;

    QMap<int, QVariant> dataMap;
    QMap<QString, QVariant> upsInfo;
    QString name;
    int language = 0;
    int userLevel = 0;
    QString userName;

signals:
    void postDEvent(int type, QMap<QString, QVariant> map);

public slots:
    virtual void setName(QString n) { name = n; }
    virtual void setLanguage(int l) { language = l; }
    virtual void refreshData() {}
    virtual void refreshLayout() {}
    virtual void flushData(QMap<int, QVariant> d) { dataMap = d; }
    virtual void flushUpsInfo(QString key, QVariant d) { upsInfo[key] = d; }
    virtual void setUserInfo(QString user, int level)
    {
        userName = user;
        userLevel = level;
    }
    // Asks the host for a control command; the event type is the control id.
    int control(int id, QString value)
    {
        QMap<QString, QVariant> map;
        map.insert(QStringLiteral("name"), name);
        map.insert(QStringLiteral("controlId"), id);
        map.insert(QStringLiteral("controlValue"), value);
        emit postDEvent(id, map);
        return 0; // the result carries no meaning; no caller reads it
    }
};

#endif // COLLECTVIEW_H
