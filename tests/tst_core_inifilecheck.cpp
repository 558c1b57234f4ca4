// Which device files may be handed to QSettings: a value with '@' or '\' could
// reach its QDataStream decoding of "@Variant(...)", which trusts the sizes
// inside and brings the reader down.
#include <QTemporaryDir>
#include <QtTest>

#include "inifilecheck.h"

class TestIniFileCheck : public QObject
{
    Q_OBJECT

private slots:
    void unsafeLine_data();
    void unsafeLine();
    void missingFileIsSafe();
};

void TestIniFileCheck::unsafeLine_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("line");

    const QByteArray device = "[ups1]\nipAddr=127.0.0.1\nport=1502\n";
    QTest::newRow("sound") << device + "interval=5\neventChooseList\\3=1\n" << 0; // backslash in a key
    QTest::newRow("ipv6 address") << QByteArray("[ups1]\nipAddr=::1\nport=502\n") << 0;
    QTest::newRow("variant") << device + "interval=@Variant(\\0\\0\\0\\=12=\\0)\n" << 4;
    QTest::newRow("date time") << device + "retries=@DateTime(\\0\\0\\0\\x10\\0)\n" << 4;
    QTest::newRow("quoted") << QByteArray("[ups1]\nipAddr=\"@Variant(\\0)\"\n") << 2;
    QTest::newRow("hex escape") << device + "port=\\x40Variant(\\0)\n" << 4;
    QTest::newRow("octal escape") << device + "port=\\100Variant(\\0)\n" << 4;
    QTest::newRow("continued value") << device + "plugin=a\\\n@Variant(\\0)\n" << 4;
    QTest::newRow("carriage returns") << QByteArray("[ups1]\r\nport=502\r\nretries=1\r@Variant(\\0)\r\n") << 4; // a lone CR ends a line
    QTest::newRow("crlf line numbers") << QByteArray("[ups1]\r\nport=502\r\nretries=@Variant(\\0)\r\n") << 3;
}

void TestIniFileCheck::unsafeLine()
{
    QFETCH(QByteArray, content);
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("dev.ini")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    QTEST(IniFileCheck::unsafeLine(file.fileName()), "line");
}

void TestIniFileCheck::missingFileIsSafe()
{
    QTemporaryDir dir;
    QCOMPARE(IniFileCheck::unsafeLine(dir.filePath(QStringLiteral("absent.ini"))), 0);
}

QTEST_GUILESS_MAIN(TestIniFileCheck)
#include "tst_core_inifilecheck.moc"
