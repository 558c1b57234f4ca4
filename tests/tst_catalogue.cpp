// Every model text a class translates at run time must be marked in that class's context,
// or lupdate never offers it to a translator. A recording translator sees every lookup the
// views and the dictionary make while they show single- and three-phase data.
#include <QTranslator>
#include <QtTest>

#include "orvekfont.h"
#include "rateinfoform.h"
#include "rtdataform.h"
#include "rteventform.h"
#include "rtsinglegraphform.h"
#include "upscatalogue.h"

class RecordingTranslator : public QTranslator
{
public:
    QString translate(const char *context, const char *source, const char *, int) const override
    {
        if (source && UpsCatalogue::isModelText(source))
            lookups.insert(qMakePair(QByteArray(context), QByteArray(source)));
        return QString();
    }
    bool isEmpty() const override { return false; }
    mutable QSet<QPair<QByteArray, QByteArray>> lookups;
};

class TestCatalogue : public QObject
{
    Q_OBJECT

private slots:
    void modelTextsAreMarkedWhereTranslated()
    {
        RecordingTranslator recorder;
        QVERIFY(QCoreApplication::installTranslator(&recorder));
        for (int phases : {1, 3}) {
            QMap<int, QVariant> data{{8, phases}, {26, phases}, {43, phases}, {0, 2}, {24, 3}};
            for (int alarm = 0; alarm < 54; ++alarm)
                data.insert(2000 + alarm, 1);
            OrvekFont::instance()->changeLogData(data);
            RTDataForm table;
            table.InitRTData();
            table.RefreshRTDataInfo(data);
            RateInfoForm rated;
            rated.RefreshRateInfo(data);
            RTEventForm events;
            events.RefreshRTEventInfo(data);
            RTSingleGraphForm graph;
            graph.RefreshRtSingleChartInfo(data);
        }
        QCoreApplication::removeTranslator(&recorder);

        QSet<QByteArray> contexts;
        for (const auto &lookup : qAsConst(recorder.lookups)) {
            contexts.insert(lookup.first);
            QVERIFY2(UpsCatalogue::isMarked(lookup.first.constData(), lookup.second.constData()),
                     lookup.first + " translates a text it does not mark: " + lookup.second);
        }
        // Each class that shows model texts was seen looking them up.
        for (const char *context : {"OrvekFont", "RTDataForm", "RateInfoForm", "RTEventForm", "RTSingleGraphForm"})
            QVERIFY2(contexts.contains(context), context);
    }
};

QTEST_MAIN(TestCatalogue)
#include "tst_catalogue.moc"
