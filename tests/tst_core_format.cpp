// The table-driven value formatter: scale, decimals, units, R/S/T layout,
// code texts and the options that keep each caller's conventions.
#include <QtTest>

#include "upsformat.h"

using Points = QMap<int, QVariant>;

namespace {

enum class Style {
    Table, Console, LogThree, RepeatR, CommaBeforeT, Unscaled, AsStored, NotOne, OneDecimal, FallbackOne, OtherUnit
};

UpsFormat::Options options(Style style)
{
    UpsFormat::Options o;
    switch (style) {
    case Style::Table:
        break;
    case Style::Console:
        o.withUnit = true;
        o.missing = QStringLiteral("-");
        break;
    case Style::LogThree:
        o.phases = UpsFormat::Phases::Three;
        break;
    case Style::RepeatR:
        o.phases = UpsFormat::Phases::Three;
        o.firstPhaseForAll = true;
        break;
    case Style::CommaBeforeT:
        o.phases = UpsFormat::Phases::Three;
        o.separators = "/,";
        break;
    case Style::Unscaled:
        o.scaled = false;
        break;
    case Style::AsStored:
        o.reinterpretSign = false;
        break;
    case Style::NotOne:
        o.phases = UpsFormat::Phases::ByCountNotOne;
        break;
    case Style::OneDecimal:
        o.decimals = 1;
        break;
    case Style::FallbackOne:
        o.codeFallback = 1;
        break;
    case Style::OtherUnit:
        o.phases = UpsFormat::Phases::ByCountNotOne;
        o.withUnit = true;
        o.unit = "kW";
        break;
    }
    return o;
}

} // namespace

Q_DECLARE_METATYPE(Style)

class TestFormat : public QObject
{
    Q_OBJECT

private slots:
    void text_data();
    void text();
};

void TestFormat::text_data()
{
    QTest::addColumn<Points>("data");
    QTest::addColumn<int>("id");
    QTest::addColumn<Style>("style");
    QTest::addColumn<QString>("text");

    const Points in{{8, 1}, {9, 230}, {10, 231}, {11, 229}, {15, 500}, {16, 400}};
    Points inThree = in;
    inThree[8] = 3;
    Points inTwo = in;
    inTwo[8] = 2;
    QTest::newRow("voltage, one phase") << in << 9 << Style::Table << "230";
    QTest::newRow("voltage, three phases") << inThree << 9 << Style::Table << "230/231/229";
    QTest::newRow("two phases read as one") << inTwo << 9 << Style::Table << "230";
    QTest::newRow("two phases, not-one rule") << inTwo << 9 << Style::NotOne << "230/231/229";
    QTest::newRow("one phase, not-one rule") << in << 9 << Style::NotOne << "230";
    QTest::newRow("voltage with a decimal") << in << 9 << Style::OneDecimal << "230.0";
    QTest::newRow("frequency in tenths") << in << 15 << Style::Table << "50.0";
    QTest::newRow("phase R for all three") << in << 15 << Style::RepeatR << "50.0/50.0/50.0";
    QTest::newRow("no phases: layout ignored") << Points{{42, 501}} << 42 << Style::LogThree << "50.1";

    const Points out{{26, 3}, {27, 220}, {28, 221}, {29, 222}, {30, 41}, {31, 42}, {32, 43},
                     {33, 3100}, {34, 1}, {35, 3200}, {36, 1}, {37, 3300}, {39, 30}, {40, 31}, {41, 32}};
    QTest::newRow("comma before T") << out << 27 << Style::CommaBeforeT << "220/221,222";
    QTest::newRow("current in tenths") << out << 30 << Style::Table << "4.1/4.2/4.3";
    QTest::newRow("current unscaled") << Points{{30, 52}} << 30 << Style::Unscaled << "52.0";
    QTest::newRow("power skips the high halves") << out << 33 << Style::Table << "3100/3200/3300";
    QTest::newRow("load by its own phase count") << out << 39 << Style::Table << "30/31/32";

    QTest::newRow("signed current") << Points{{5, 65516}} << 5 << Style::Table << "-2.0";
    QTest::newRow("signed current as stored") << Points{{5, 65516}} << 5 << Style::AsStored << "6551.6";
    QTest::newRow("absent reads 0") << Points{} << 4 << Style::Table << "0.0";
    QTest::newRow("junk reads 0") << Points{{9, QByteArray("junk")}} << 9 << Style::Table << "0";
    QTest::newRow("number as text") << Points{{3, QString("80")}} << 3 << Style::Console << "80 %";

    QTest::newRow("console, three phases") << Points{{26, 3}, {27, 230}, {29, 229}} << 27 << Style::Console
                                           << "230/-/229 V";
    QTest::newRow("console, absent") << Points{} << 39 << Style::Console << "- %";
    QTest::newRow("console, unit") << Points{{6, 25}} << 6 << Style::Console << QString::fromUtf8("25 \u00B0C");
    QTest::newRow("unit of the caller") << Points{{26, 3}, {33, 3}, {35, 4}, {37, 5}} << 33 << Style::OtherUnit
                                        << "3/4/5 kW";
    QTest::newRow("no unit, no blank") << Points{{7, 4}} << 7 << Style::Console << "4";

    QTest::newRow("output source") << Points{{24, 3}} << 24 << Style::Table << "Utility supply";
    QTest::newRow("output source last") << Points{{24, 7}} << 24 << Style::Table << "Reducer supply";
    QTest::newRow("output source 0") << Points{{24, 0}} << 24 << Style::Table << "Other supply";
    QTest::newRow("output source 8") << Points{{24, 8}} << 24 << Style::Table << "Other supply";
    QTest::newRow("output source 8, other fallback") << Points{{24, 8}} << 24 << Style::FallbackOne << "None supply";
    QTest::newRow("battery status 4") << Points{{0, 4}} << 0 << Style::Table << "Depleted";
    QTest::newRow("battery status absent") << Points{} << 0 << Style::Console << "Unknown";

    QTest::newRow("identity text") << Points{{4000, QByteArray("OR-3000")}} << 4000 << Style::Table << "OR-3000";
    QTest::newRow("agent address") << Points{{4014, QString("127.0.0.1")}} << 4014 << Style::Console << "127.0.0.1";
    QTest::newRow("id without an entry") << Points{{70, 65535}} << 70 << Style::Console << "65535";
}

void TestFormat::text()
{
    QFETCH(Points, data);
    QFETCH(int, id);
    QFETCH(Style, style);
    QFETCH(QString, text);
    QCOMPARE(UpsFormat::text(data, id, options(style)), text);
}

QTEST_GUILESS_MAIN(TestFormat)
#include "tst_core_format.moc"
