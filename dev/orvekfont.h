#ifndef ORVEKFONT_H
#define ORVEKFONT_H

#include <QList>
#include <QMap>
#include <QAtomicPointer>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include "upscatalogue.h"
#include "upspoints.h"

// The plug-in's dictionary of display texts: data-log column titles, event
// texts by event id, battery status and output source names, rated-value
// titles. It also formats one data point map as a data-log row. The texts
// and formats come from the UPS tables (dev/ups), translated in this class's
// context. Built once, in the language installed at that moment, and never
// changed afterwards.
class OrvekFont : public QObject
{
    Q_OBJECT
public:
    static OrvekFont *instance();

    QStringList getDataLogDesc();
    QStringList getEventLogDesc();
    QStringList changeLogData(QMap<int, QVariant> data);

    QList<QString> dataLogTexts;
    QList<QString> ratedTexts;
    QVector<QString> batteryStatusTexts;
    QVector<QString> outputSourceTexts;
    QList<QString> eventLogTexts;

private:
    explicit OrvekFont(QObject *parent = nullptr);
    static QVector<QString> codeTexts(UpsPoints::CodeList list);
    static QString title(UpsCatalogue::List list, int id);

    // Published with release order once built, so the unlocked first test in
    // instance() never sees a half-made dictionary.
    static QAtomicPointer<OrvekFont> m_instance;
};

#endif // ORVEKFONT_H
