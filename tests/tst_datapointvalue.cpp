#include <QtTest>

#include <cmath>
#include <limits>

#include "datapointvalue.h"

namespace {

constexpr int kIntMax = std::numeric_limits<int>::max();
constexpr int kIntMin = std::numeric_limits<int>::min();

} // namespace

// Integer readings of data point values as the UPS agent may send them:
// numbers of every QVariant type, texts, and values no register can hold.
class TestDataPointValue : public QObject
{
    Q_OBJECT

private slots:
    void rounded_data();
    void rounded();
    void roundedReadsMapEntries();
    void truncated_data();
    void truncated();
    void truncatedFloat_data();
    void truncatedFloat();
};

void TestDataPointValue::rounded_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("expected");

    QTest::newRow("missing") << QVariant() << 0;
    QTest::newRow("register") << QVariant(230) << 230;
    QTest::newRow("negative int") << QVariant(-1) << -1;
    QTest::newRow("unsigned wraps") << QVariant(4294967295u) << -1;
    QTest::newRow("64-bit keeps low half") << QVariant(Q_INT64_C(0x100000005)) << 5;
    QTest::newRow("double rounds down") << QVariant(12.4) << 12;
    QTest::newRow("double half rounds up") << QVariant(12.5) << 13;
    QTest::newRow("negative double") << QVariant(-12.6) << -13;
    QTest::newRow("float") << QVariant(2.6f) << 3;
    QTest::newRow("double wraps to 32 bits") << QVariant(4294967296.0 + 7.0) << 7;
    QTest::newRow("NaN") << QVariant(std::nan("")) << 0;
    QTest::newRow("infinity") << QVariant(std::numeric_limits<double>::infinity()) << 0;
    QTest::newRow("float infinity") << QVariant(std::numeric_limits<float>::infinity()) << 0;
    QTest::newRow("beyond 64 bits") << QVariant(1.0e19) << 0;
    QTest::newRow("beyond 64 bits negative") << QVariant(-1.0e19) << 0;
    QTest::newRow("just inside the limit") << QVariant(8.0e18) << static_cast<int>(Q_INT64_C(8000000000000000000));
    QTest::newRow("numeric text") << QVariant(QStringLiteral("42")) << 42;
    QTest::newRow("decimal text") << QVariant(QStringLiteral("12.5")) << 0;
    QTest::newRow("text") << QVariant(QStringLiteral("abc")) << 0;
    QTest::newRow("bytes") << QVariant(QByteArray("17")) << 17;
    QTest::newRow("bool") << QVariant(true) << 1;
    QTest::newRow("list") << QVariant(QVariantList{1, 2}) << 0;
}

void TestDataPointValue::rounded()
{
    QFETCH(QVariant, value);
    QFETCH(int, expected);
    QCOMPARE(DataPointValue::rounded(value), expected);
}

void TestDataPointValue::roundedReadsMapEntries()
{
    const QMap<int, QVariant> map{{3, 87}, {4, 541.6}, {5, QStringLiteral("x")}};
    QCOMPARE(DataPointValue::rounded(map, 3), 87);
    QCOMPARE(DataPointValue::rounded(map, 4), 542);
    QCOMPARE(DataPointValue::rounded(map, 5), 0);
    QCOMPARE(DataPointValue::rounded(map, 6), 0);
    QCOMPARE(DataPointValue::rounded(map, -1), 0);
}

void TestDataPointValue::truncated_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("expected");

    QTest::newRow("missing") << QVariant() << 0;
    QTest::newRow("register") << QVariant(230) << 230;
    QTest::newRow("negative int") << QVariant(-5) << -5;
    QTest::newRow("double toward zero") << QVariant(12.9) << 12;
    QTest::newRow("negative double toward zero") << QVariant(-12.9) << -12;
    QTest::newRow("float precision") << QVariant(16777217.0) << 16777216;
    QTest::newRow("large double saturates") << QVariant(1.0e10) << kIntMax;
    QTest::newRow("small double saturates") << QVariant(-1.0e10) << kIntMin;
    QTest::newRow("infinity saturates") << QVariant(std::numeric_limits<double>::infinity()) << kIntMax;
    QTest::newRow("NaN") << QVariant(std::nan("")) << 0;
    QTest::newRow("64-bit saturates") << QVariant(Q_INT64_C(1000000000000)) << kIntMax;
    QTest::newRow("negative 64-bit saturates") << QVariant(Q_INT64_C(-1000000000000)) << kIntMin;
    QTest::newRow("unsigned saturates") << QVariant(4294967295u) << kIntMax;
    QTest::newRow("numeric text") << QVariant(QStringLiteral("42")) << 42;
    QTest::newRow("text") << QVariant(QStringLiteral("abc")) << 0;
    QTest::newRow("bool") << QVariant(true) << 1;
}

void TestDataPointValue::truncated()
{
    QFETCH(QVariant, value);
    QFETCH(int, expected);
    QCOMPARE(DataPointValue::truncated(value), expected);
}

void TestDataPointValue::truncatedFloat_data()
{
    QTest::addColumn<float>("value");
    QTest::addColumn<int>("expected");

    QTest::newRow("zero") << 0.0f << 0;
    QTest::newRow("fraction toward zero") << 2.75f << 2;
    QTest::newRow("negative fraction toward zero") << -0.5f << 0;
    QTest::newRow("largest float below 2^31") << 2147483520.0f << 2147483520;
    QTest::newRow("2^31 saturates") << 2147483648.0f << kIntMax;
    QTest::newRow("-2^31 is exact") << -2147483648.0f << kIntMin;
    QTest::newRow("below -2^31 saturates") << -1.0e12f << kIntMin;
    QTest::newRow("infinity") << std::numeric_limits<float>::infinity() << kIntMax;
    QTest::newRow("NaN") << std::numeric_limits<float>::quiet_NaN() << 0;
}

void TestDataPointValue::truncatedFloat()
{
    QFETCH(float, value);
    QFETCH(int, expected);
    QCOMPARE(DataPointValue::truncatedFloat(value), expected);
}

QTEST_APPLESS_MAIN(TestDataPointValue)

#include "tst_datapointvalue.moc"
