// The table-driven value formatter: the options no view or log test reaches
// (phase rules, fixed decimals, the console's units and missing values) and
// points read as text. The log and form tests cover the rest.
#include <QtTest>

#include "upsformat.h"

using Points = QMap<int, QVariant>;
using Options = UpsFormat::Options;
Q_DECLARE_METATYPE(Options)

class TestFormat : public QObject
{
    Q_OBJECT

private slots:
    void text_data()
    {
        QTest::addColumn<Points>("data");
        QTest::addColumn<int>("id");
        QTest::addColumn<Options>("options");
        QTest::addColumn<QString>("text");

        Options notOne, oneDecimal, console, kiloWatt;
        notOne.phases = UpsFormat::Phases::ByCountNotOne;
        oneDecimal.decimals = 1;
        console.withUnit = true;
        console.missing = QStringLiteral("-");
        kiloWatt = notOne;
        kiloWatt.withUnit = true;
        kiloWatt.unit = "kW";

        const Points one{{8, 1}, {9, 230}, {10, 231}, {11, 229}};
        Points two = one;
        two[8] = 2;
        QTest::newRow("two phases read as one") << two << 9 << Options() << "230";
        QTest::newRow("two phases, not-one rule") << two << 9 << notOne << "230/231/229";
        QTest::newRow("one phase, not-one rule") << one << 9 << notOne << "230";
        QTest::newRow("caller's decimals") << one << 9 << oneDecimal << "230.0";
        QTest::newRow("console, missing S") << Points{{26, 3}, {27, 230}, {29, 229}} << 27 << console << "230/-/229 V";
        QTest::newRow("console, absent") << Points() << 39 << console << "- %";
        QTest::newRow("console, degrees") << Points{{6, 25}} << 6 << console << QString::fromUtf8("25 \u00B0C");
        QTest::newRow("console, no unit, no blank") << Points{{7, 4}} << 7 << console << "4";
        QTest::newRow("console, number as text") << Points{{3, QString("80")}} << 3 << console << "80 %";
        QTest::newRow("caller's unit") << Points{{26, 3}, {33, 3}, {35, 4}, {37, 5}} << 33 << kiloWatt << "3/4/5 kW";
        QTest::newRow("identity bytes") << Points{{4000, QByteArray("OR-3000")}} << 4000 << Options() << "OR-3000";
        QTest::newRow("id without an entry") << Points{{70, 65535}} << 70 << console << "65535";
    }

    void text()
    {
        QFETCH(Points, data);
        QFETCH(int, id);
        QFETCH(Options, options);
        QTEST(UpsFormat::text(data, id, options), "text");
    }
};

QTEST_GUILESS_MAIN(TestFormat)
#include "tst_core_format.moc"
