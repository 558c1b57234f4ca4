// The event time stamp with its cached UTC offset against QDateTime's own
// local time, walked across daylight saving transitions in zones that have
// them (whole hours, and Lord Howe's half hour) and backwards in time.
#include <QtTest>

#include "stampclock.h"
#include "upscontract.h"

class TestStampClock : public QObject
{
    Q_OBJECT

private slots:
    void cleanupTestCase() { restoreZone(); }

    void matchesLocalTime_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QDateTime>("from"); // UTC
        QTest::addColumn<int>("stepMs");     // negative: backwards
        QTest::addColumn<int>("steps");

        const auto utc = [](const char *text) { return QDateTime::fromString(QLatin1String(text), Qt::ISODate); };
        QTest::newRow("Berlin, spring forward") << QByteArray("Europe/Berlin") << utc("2026-03-29T00:50:00Z") << 7001 << 1200;
        QTest::newRow("Berlin, fall back") << QByteArray("Europe/Berlin") << utc("2026-10-25T00:50:00Z") << 7001 << 1200;
        QTest::newRow("New York, backwards") << QByteArray("America/New_York") << utc("2026-03-08T08:30:00Z") << -5003 << 1000;
        QTest::newRow("Lord Howe, half hour") << QByteArray("Australia/Lord_Howe") << utc("2026-04-04T14:40:00Z") << 3001 << 1200;
        QTest::newRow("UTC, sub-second steps") << QByteArray("UTC") << utc("2026-11-24T11:59:58Z") << 250 << 40;
        QTest::newRow("before 1970") << QByteArray("Europe/Berlin") << utc("1969-12-31T22:59:58Z") << 333 << 40;
    }

    void matchesLocalTime()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QDateTime, from);
        QFETCH(int, stepMs);
        QFETCH(int, steps);
        setZone(zone);

        StampClock clock;
        qint64 ms = from.toMSecsSinceEpoch();
        for (int i = 0; i < steps; ++i, ms += stepMs) {
            const QString expected =
                QDateTime::fromMSecsSinceEpoch(ms, Qt::LocalTime).toString(QLatin1String(UpsKey::TimeFormat));
            QCOMPARE(clock.textAt(ms), expected);
        }
    }

    void nowIsLocalTime()
    {
        restoreZone();
        StampClock clock;
        const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
        const QDateTime stamp = QDateTime::fromString(clock.now(), QLatin1String(UpsKey::TimeFormat));
        QVERIFY(stamp.isValid());
        QVERIFY(stamp >= before && stamp <= QDateTime::currentDateTime());
    }

private:
    void setZone(const QByteArray &zone)
    {
        qputenv("TZ", zone);
        tzset();
    }
    void restoreZone()
    {
        if (m_savedZone.isNull())
            qunsetenv("TZ");
        else
            qputenv("TZ", m_savedZone);
        tzset();
    }

    const QByteArray m_savedZone = qgetenv("TZ");
};

QTEST_GUILESS_MAIN(TestStampClock)
#include "tst_core_stampclock.moc"
