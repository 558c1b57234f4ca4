// The chart page container and its single- and three-phase pages: gauge set-up, what a refresh
// shows on the current page only (bad values included), initialisation and gauge proportions.

#include <QtTest>
#include <QtWidgets>

#include <limits>
#include <memory>

#include "chartform.h"
#include "datachart.h"
#include "gaugedialkeeper.h"
#include "trendchart.h"
#include "viewsampledata.h"

using DataPoints = QMap<int, QVariant>;

namespace {

// Per page: gauge values, readouts and legends with "Current value:" dropped,
// and for "curves" the newest sample of each trend curve ("nan" when empty).
const QString pageNames[] = {
    QStringLiteral("widget_load widget_outload widget_temp widget_input_freq widget_out_freq widget_by_freq | curves | "
                   "value_input value_output value_batt value_bypass"),
    QStringLiteral("widget_capacity widget_temp widget_outload widget_out_freq widget_by_freq | value_in_vol_r "
                   "value_in_vol_s value_in_vol_t value_in_freq_r value_in_freq_s value_in_freq_t value_by_vol_r "
                   "value_by_vol_s value_by_vol_t | curves | value_out_vol_r value_out_vol_s value_out_vol_t "
                   "value_out_load_r value_out_load_s value_out_load_t"),
};

} // namespace

class TestGraphForms : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        form.reset(new ChartForm);
        QCOMPARE(form->getCurrentIndex(), 1); // the three-phase page
        // A trend chart sizes its sample buffers from the plot box of its last paint.
        form->resize(900, 700);
        for (int index : {0, 1}) {
            form->setCurrentIndex(index);
            form->grab();
        }
    }

    void singlePageGauges_data()
    {
        QTest::addColumn<QString>("gauge");
        QTest::addColumn<QString>("label"); // the caption under it
        // Caption, range, band colours (0 green, 1 yellow, 2 red) and their upper limits.
        QTest::addColumn<QString>("expected");
        // The capacity gauge sits under the remaining-time caption.
        QTest::newRow("capacity") << "widget_load" << "label_load"
                                  << "Remaining battery time(Min) 0..100 % (2, 1, 0) (30, 60, 100)";
        QTest::newRow("load") << "widget_outload" << "label_outload"
                              << "Output load(%) 0..160 % (0, 1, 2) (100, 120, 160)";
        QTest::newRow("temperature") << "widget_temp" << "label_temp"
                                     << "Battery temperature(C) 0..100 C (0, 2) (100, 120)";
        const QString frequency = QStringLiteral(" frequency(Hz) 0..100 Hz (2, 0, 2) (40, 60, 100)");
        QTest::newRow("input") << "widget_input_freq" << "label_input" << "Input" + frequency;
        QTest::newRow("output") << "widget_out_freq" << "label_output" << "Output" + frequency;
        QTest::newRow("bypass") << "widget_by_freq" << "label_bypass" << "Bypass" + frequency;
    }

    void singlePageGauges()
    {
        QFETCH(QString, gauge);
        QFETCH(QString, label);
        const DataChart *dial = page(0)->findChild<DataChart *>(gauge);
        QVERIFY(dial);
        QString text;
        QDebug(&text).noquote().nospace() << page(0)->findChild<QLabel *>(label)->text() << ' ' << dial->getMinValue()
                                          << ".." << dial->getMaxValue() << ' ' << dial->getUnitText() << ' '
                                          << dial->getColorIndexes() << ' ' << dial->getRadioValues();
        QTEST(text, "expected");
    }

    void refresh_data()
    {
        QTest::addColumn<int>("current"); // the page shown and fed
        QTest::addColumn<DataPoints>("points");
        QTest::addColumn<QString>("expected");

        // The single-phase temperature gauge has no data point: always "--".
        QTest::newRow("single, utility mode")
            << 0 << DataPoints{{3, 85}, {39, 45}, {15, 500}, {25, 499}, {42, 501}, {9, 229}, {27, 230}, {4, 2715},
                               {44, 231}}
            << "85 45 -- 50 49.9 50.1 | 229 230 271.5 231 | (229) (230) (271.5) (231)";
        // Read as unsigned 32 bits, -1 is out of every range and a huge sample.
        QTest::newRow("single, limits and negatives")
            << 0 << DataPoints{{3, 100}, {39, 161}, {15, 1000}, {25, -1}, {42, 400}, {9, -1}, {4, -1}}
            << "100 -- -- 100 -- 40 | 4.29497e+09 0 4.29497e+08 0 | (4294967295) (0) (4.29497e+08) (0)";
        QTest::newRow("single, wrong types")
            << 0
            << DataPoints{{9, QStringLiteral("abc")}, {27, QStringLiteral("230")}, {44, 1e300},
                          {4, std::numeric_limits<double>::quiet_NaN()}, {3, QVariantList{1}}, {39, 44.6}}
            << "0 45 -- 0 0 0 | 0 230 0 0 | (0) (230) (0) (0)";
        // The load gauge shows the highest phase.
        DataPoints three = ViewSampleData::deviceData(true);
        three[41] = 130, three[42] = 499;
        QTest::newRow("three, unbalanced load")
            << 1 << three
            << "100 25 130 50 49.9 | 230 231 229 50.0 50.0 49.9 229 230 228 | 230 230 231 35 36 130 | "
               "(230) (230) (231) (35) (36) (130)";
        QTest::newRow("three, out of range and negative")
            << 1 << DataPoints{{3, -1}, {6, 65535}, {39, 161}, {25, 1001}, {42, -20}, {9, -1}, {15, -5}, {27, -7}}
            << "-- -- -- -- -- | -1 0 0 -0.5 0.0 0.0 0 0 0 | -7 0 0 161 0 0 | (-7) (0) (0) (161) (0) (0)";
    }

    void refresh()
    {
        QFETCH(int, current);
        QFETCH(DataPoints, points);
        // The other page holds data of its own, which nothing below may touch.
        form->setCurrentIndex(1 - current);
        form->refreshFormInfo({{27, 229}, {39, 50}});
        const QString other = shown(1 - current);
        form->setCurrentIndex(current);
        form->refreshFormInfo(points);
        QTEST(shown(current), "expected");
        // Each curve got exactly one sample (a curve's first sample is doubled).
        const TrendChart *chart = page(current)->findChild<TrendChart *>();
        for (int k = 0; k < chart->curveCount(); ++k)
            QCOMPARE(chart->curveMap().value(k).size(), 2);

        // Initialisation: true keeps everything, false clears; 0 lies inside every
        // range, so even the temperature gauge shows 0 until the next refresh.
        const QString before = shown(current);
        form->initFormInfo(true);
        QCOMPARE(shown(current), before);
        form->initFormInfo(false);
        const QString cleared = current
            ? QStringLiteral("0 0 0 0 0 | 0 0 0 0.0 0.0 0.0 0 0 0 | nan nan nan nan nan nan | (0) (0) (0) (0) (0) (0)")
            : QStringLiteral("0 0 0 0 0 0 | nan nan nan nan | (0) (0) (0) (0)");
        QCOMPARE(shown(current), cleared);
        QCOMPARE(shown(1 - current), other);
    }

    void gaugesKeepProportions()
    {
        // A dial's radius is min(width / 2, height): a wider page gives wider
        // dials, and each height follows, a little over half the width up to 200.
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        for (int index : {0, 1}) {
            form->setCurrentIndex(index);
            const QList<DataChart *> gauges = page(index)->findChildren<DataChart *>();
            QCOMPARE(gauges.size(), index ? 5 : 6);
            int narrowWidth = 0;
            for (int width : {700, 1400}) {
                form->resize(width, 700);
                QTRY_VERIFY(gauges.first()->width() > narrowWidth);
                narrowWidth = gauges.first()->width();
                for (DataChart *gauge : gauges)
                    QTRY_COMPARE(gauge->height(), GaugeDialKeeper::dialHeight(gauge->width()));
            }
            QVERIFY(gauges.first()->height() > gauges.first()->width() / 2); // the arc gets the full width
        }
    }

private:
    QString shown(int index) const
    {
        QStringList out;
        for (const QString &name : pageNames[index].split(QLatin1Char(' '))) {
            if (auto *gauge = page(index)->findChild<DataChart *>(name)) {
                out << gauge->valueText();
            } else if (auto *label = page(index)->findChild<QLabel *>(name)) {
                out << label->text().remove(QStringLiteral("Current value:"));
            } else if (name == QLatin1String("curves")) {
                const TrendChart *chart = page(index)->findChild<TrendChart *>();
                for (int k = 0; k < chart->curveCount(); ++k)
                    out << QString::number(chart->bufferData(k).value(0, std::numeric_limits<double>::quiet_NaN()));
            } else {
                out << name; // a separator
            }
        }
        return out.join(QLatin1Char(' '));
    }

    QWidget *page(int index) const { return form->findChild<QWidget *>(index ? "page_three" : "page_single"); }

    std::unique_ptr<ChartForm> form;
};

QTEST_MAIN(TestGraphForms)
#include "tst_graphforms.moc"
