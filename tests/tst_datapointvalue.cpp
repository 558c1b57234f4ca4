// Integer readings of any QVariant the UPS agent may send: rounded() keeps the low 32 bits
// of integers; truncated() saturates and takes floating-point values at float precision.
#include <QtTest>

#include <limits>

#include "datapointvalue.h"

constexpr int kIntMax = std::numeric_limits<int>::max();
constexpr int kIntMin = std::numeric_limits<int>::min();

class TestDataPointValue : public QObject
{
    Q_OBJECT

private slots:
    void readings_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<int>("rounded");
        QTest::addColumn<int>("truncated");

        QTest::newRow("missing") << QVariant() << 0 << 0;
        QTest::newRow("64-bit") << QVariant(Q_INT64_C(0x100000005)) << 5 << kIntMax;
        QTest::newRow("half") << QVariant(12.5) << 13 << 12;
        QTest::newRow("negative double") << QVariant(-12.6) << -13 << -12;
        QTest::newRow("NaN") << QVariant(std::numeric_limits<double>::quiet_NaN()) << 0 << 0;
        QTest::newRow("beyond 64 bits negative") << QVariant(-1.0e19) << 0 << kIntMin;
        QTest::newRow("just inside the 64-bit limit")
            << QVariant(8.0e18) << static_cast<int>(Q_INT64_C(8000000000000000000)) << kIntMax;
        QTest::newRow("below float precision") << QVariant(16777217.0) << 16777217 << 16777216;
        QTest::newRow("largest float below 2^31") << QVariant(2147483520.0f) << 2147483520 << 2147483520;
        QTest::newRow("float 2^31") << QVariant(2147483648.0f) << kIntMin << kIntMax;
        QTest::newRow("float -2^31") << QVariant(-2147483648.0f) << kIntMin << kIntMin;
        QTest::newRow("decimal text") << QVariant(QStringLiteral("12.5")) << 0 << 0;
    }

    void readings()
    {
        QFETCH(QVariant, value);
        QTEST(DataPointValue::rounded(value), "rounded");
        // The map overload reads a missing id as a missing value.
        QTEST(DataPointValue::rounded({{7, value}}, 7), "rounded");
        QCOMPARE(DataPointValue::rounded({{7, value}}, 8), 0);
        QTEST(DataPointValue::truncated(value), "truncated");
        // Floating-point values go through truncatedFloat() at float precision.
        if (value.userType() == QMetaType::Double || value.userType() == QMetaType::Float)
            QTEST(DataPointValue::truncatedFloat(value.toFloat()), "truncated");
    }
};

QTEST_APPLESS_MAIN(TestDataPointValue)
#include "tst_datapointvalue.moc"
