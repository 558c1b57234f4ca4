#include <QtTest>

#include <cmath>
#include <limits>

#include "datapointvalue.h"

namespace {

constexpr int kIntMax = std::numeric_limits<int>::max();
constexpr int kIntMin = std::numeric_limits<int>::min();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

} // namespace

// Integer readings of data point values as the UPS agent may send them:
// numbers of every QVariant type, texts, and values no register can hold.
class TestDataPointValue : public QObject
{
    Q_OBJECT

private slots:
    void rounded_data();
    void rounded();
    void truncated_data();
    void truncated();
};

void TestDataPointValue::rounded_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("expected");

    QTest::newRow("missing") << QVariant() << 0;
    QTest::newRow("unsigned wraps") << QVariant(4294967295u) << -1;
    QTest::newRow("64-bit keeps low half") << QVariant(Q_INT64_C(0x100000005)) << 5;
    QTest::newRow("double half rounds up") << QVariant(12.5) << 13;
    QTest::newRow("negative double") << QVariant(-12.6) << -13;
    QTest::newRow("float") << QVariant(2.6f) << 3;
    QTest::newRow("double wraps to 32 bits") << QVariant(4294967296.0 + 7.0) << 7;
    QTest::newRow("NaN") << QVariant(kNaN) << 0;
    QTest::newRow("infinity") << QVariant(kInfinity) << 0;
    QTest::newRow("beyond 64 bits negative") << QVariant(-1.0e19) << 0;
    QTest::newRow("just inside the limit") << QVariant(8.0e18) << static_cast<int>(Q_INT64_C(8000000000000000000));
    QTest::newRow("numeric bytes") << QVariant(QByteArray("17")) << 17;
    QTest::newRow("decimal text") << QVariant(QStringLiteral("12.5")) << 0;
    QTest::newRow("list") << QVariant(QVariantList{1, 2}) << 0;
}

void TestDataPointValue::rounded()
{
    QFETCH(QVariant, value);
    QTEST(DataPointValue::rounded(value), "expected");
    // The map overload reads a missing id as a missing value.
    QTEST(DataPointValue::rounded({{7, value}}, 7), "expected");
    QCOMPARE(DataPointValue::rounded({{7, value}}, 8), 0);
}

void TestDataPointValue::truncated_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("expected");

    QTest::newRow("missing") << QVariant() << 0;
    QTest::newRow("negative double toward zero") << QVariant(-12.9) << -12;
    QTest::newRow("float fraction toward zero") << QVariant(-0.5f) << 0;
    QTest::newRow("taken at float precision") << QVariant(16777217.0) << 16777216;
    QTest::newRow("largest float below 2^31") << QVariant(2147483520.0f) << 2147483520;
    QTest::newRow("2^31 saturates") << QVariant(2147483648.0f) << kIntMax;
    QTest::newRow("-2^31 is exact") << QVariant(-2147483648.0f) << kIntMin;
    QTest::newRow("small double saturates") << QVariant(-1.0e10) << kIntMin;
    QTest::newRow("infinity saturates") << QVariant(kInfinity) << kIntMax;
    QTest::newRow("NaN") << QVariant(kNaN) << 0;
    QTest::newRow("64-bit saturates") << QVariant(Q_INT64_C(1000000000000)) << kIntMax;
    QTest::newRow("negative 64-bit saturates") << QVariant(Q_INT64_C(-1000000000000)) << kIntMin;
    QTest::newRow("unsigned saturates") << QVariant(4294967295u) << kIntMax;
    QTest::newRow("numeric text") << QVariant(QStringLiteral("42")) << 42;
    QTest::newRow("text") << QVariant(QStringLiteral("abc")) << 0;
}

void TestDataPointValue::truncated()
{
    QFETCH(QVariant, value);
    QTEST(DataPointValue::truncated(value), "expected");
    // Floating-point values go through truncatedFloat() at float precision.
    if (value.userType() == QMetaType::Double || value.userType() == QMetaType::Float)
        QTEST(DataPointValue::truncatedFloat(value.toFloat()), "expected");
}

QTEST_APPLESS_MAIN(TestDataPointValue)
#include "tst_datapointvalue.moc"
