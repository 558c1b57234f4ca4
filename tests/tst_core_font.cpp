// The description dictionary: event texts, column titles and data-log rows.
#include <QtTest>

#include "orvekfont.h"

using Points = QMap<int, QVariant>;

class TestFont : public QObject
{
    Q_OBJECT

private slots:
    void eventTexts_data()
    {
        QTest::addColumn<int>("id");
        QTest::addColumn<QString>("text");
        // Texts whose wording, emptiness or pairing is the log's own.
        QTest::newRow("20") << 20 << "Communications between the agent and the UPS fault";
        QTest::newRow("25 empty") << 25 << "";
        QTest::newRow("28, not the alarm page's") << 28 << "Battery switch open";
        QTest::newRow("54") << 54 << "Communications between agent and UPS normal";
        QTest::newRow("74 pairs with 20") << 74 << "UPS is not awaiting the return of input power";
        QTest::newRow("77") << 77 << "No a test is in progress";
        QTest::newRow("80 untranslated") << 80 << "Battery Discharge end";
        QTest::newRow("90 doubled") << 90 << "Temperature and humidity module 1 temperature is normal";
        QTest::newRow("94 module 2 wording") << 94 << "Temperature and humidity module 2 temperature normal";
    }

    void eventTexts()
    {
        QFETCH(int, id);
        const QStringList texts = OrvekFont::instance()->getEventLogDesc();
        QCOMPARE(texts.size(), 108);
        QTEST(texts.at(id), "text");
    }

    void logRow_data()
    {
        QTest::addColumn<Points>("data");
        QTest::addColumn<QString>("row"); // the 15 columns joined with '|'

        QTest::newRow("single phase")
            << Points{{8, 1}, {9, 230}, {15, 500}, {44, 229}, {42, 501}, {27, 231}, {30, 52}, {33, 980}, {39, 35},
                      {25, 499}, {24, 3}, {3, 100}, {4, 546}, {5, 15}, {6, 25}, {0, 2}, {10, 999}, {28, 999}}
            << "230|50.0|229|50.1|231|52.0|980|35|49.9|Utility supply|100|54.6|1.5|25|Normal";
        // The input's phase count lays out output and bypass too (26 and 43 are
        // not read); frequency repeats phase R; the output current stays unscaled.
        QTest::newRow("three phase")
            << Points{{8, 3}, {9, 230}, {10, 231}, {11, 229}, {15, 500}, {16, 400}, {44, 228}, {45, 229}, {46, 230},
                      {42, 500}, {27, 220}, {28, 221}, {29, 222}, {30, 41}, {31, 42}, {32, 43}, {33, 3100}, {34, 1},
                      {35, 3200}, {37, 3300}, {39, 30}, {40, 31}, {41, 32}, {25, 500}, {24, 7}, {3, 80}, {4, 2160},
                      {6, 27}, {0, 4}, {26, 1}, {43, 1}}
            << "230/231/229|50.0/50.0/50.0|228/229/230|50.0|220/221,222|41.0/42.0/43.0|3100/3200/3300|30/31/32|50.0|"
               "Reducer supply|80|216.0|0.0|27|Depleted";
        // A -2.0 A battery current stored as 65516 is logged as stored.
        QTest::newRow("codes outside lists, unsigned current") << Points{{5, 65516}, {24, 9}, {0, 0}}
            << "0|0.0|0|0.0|0|0.0|0|0|0.0|Other supply|0|0.0|6551.6|0|Unknown";
        QTest::newRow("odd variant types") << Points{{9, QByteArray("junk")}, {24, QString("3")}, {0, QVariant()}}
            << "0|0.0|0|0.0|0|0.0|0|0|0.0|Utility supply|0|0.0|0.0|0|Unknown";
    }

    void logRow()
    {
        QFETCH(Points, data);
        QTEST(OrvekFont::instance()->changeLogData(data).join(QLatin1Char('|')), "row");
    }

    void dataLogColumns()
    {
        QCOMPARE(OrvekFont::instance()->getDataLogDesc().join(QLatin1Char('|')),
                 QStringLiteral("Input voltage(V)|Input frequency(Hz)|Bypass voltage(V)|Bypass frequency(Hz)|"
                                "Output voltage(V)|Output current(A)|Output power(W)|Output load(%)|"
                                "Output frequency(Hz)|Output mode|Remaining battery capacity(%)|Battery voltage(V)|"
                                "Battery current(A)|Battery temperature(C)|Battery state"));
    }
};

QTEST_GUILESS_MAIN(TestFont)
#include "tst_core_font.moc"
