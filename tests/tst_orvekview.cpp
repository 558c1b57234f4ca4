// The alternative device view: its layout built once and repaired, the data
// table following the map, and the control buttons' requests.

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "orvekview.h"
#include "viewsampledata.h"

class TestOrvekView : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        view.reset(new OrvekView);
        view->setName(QStringLiteral("UPS-West"));
        view->flushData(ViewSampleData::hostileData()); // before the layout: stored, nothing shown
        QVERIFY(view->findChildren<QTableWidget *>().isEmpty());
        view->refreshLayout();
    }

    void layoutAndTable()
    {
        // The layout is built once; a part that went missing is made again.
        const int objects = view->findChildren<QObject *>().size();
        QCOMPARE(view->findChild<QLabel *>("nameLabel")->text(), QStringLiteral("UPS-West"));
        view->refreshLayout();
        QCOMPARE(view->findChildren<QObject *>().size(), objects);
        delete view->findChild<QTableWidget *>("realDataTable");
        view->refreshLayout();
        QCOMPARE(view->findChildren<QObject *>().size(), objects);

        // The table lists the map in ascending ids; numbers in six significant
        // digits, everything else 0.
        auto *table = view->findChild<QTableWidget *>("realDataTable");
        QVERIFY(table);
        view->flushData(ViewSampleData::deviceData(true));
        QTableWidgetItem *first = table->item(0, 1);
        view->flushData(
            {{9, 231}, {-5, 1}, {66, 65535}, {67, 1234567}, {4000, QByteArray("Model\0\0", 7)}, {4014, QVariant()}});
        QStringList rows;
        for (int row = 0; row < table->rowCount(); ++row)
            rows << table->item(row, 0)->text() + QLatin1Char('=') + table->item(row, 1)->text();
        QCOMPARE(rows, (QStringList{"-5=1", "9=231", "66=65535", "67=1.23457e+06", "4000=0", "4014=0"}));
        QCOMPARE(table->item(0, 1), first); // items are reused
        view->flushData({});
        QCOMPARE(table->rowCount(), 0);
    }

    void buttonRequests_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("id"); // 0: the button sends nothing
        QTest::addColumn<QString>("value");
        QTest::newRow("buzzer off") << "buzzer_off" << 1014 << "0";
        QTest::newRow("buzzer on") << "buzzer_on" << 1014 << "1";
        QTest::newRow("startup") << "power_on" << 1008 << "1";
        QTest::newRow("shutdown") << "power_off" << 1007 << "1";
        QTest::newRow("time set") << "timeSet" << 1011 << "2024-03-09 14:05";
        QTest::newRow("shutdown to bypass is inert") << "turn_bypass" << 0 << "";
    }

    void buttonRequests()
    {
        QFETCH(QString, button);
        QFETCH(int, id);
        QFETCH(QString, value);
        auto *timeEdit = view->findChild<QDateTimeEdit *>("timeEdit");
        timeEdit->setDisplayFormat(QStringLiteral("yyyy-MM-dd hh:mm"));
        timeEdit->setDateTime(QDateTime(QDate(2024, 3, 9), QTime(14, 5, 0)));
        QSignalSpy spy(view.get(), &CollectView::postDEvent);
        view->findChild<QPushButton *>(button)->click();
        const EventMap request{{"name", "UPS-West"}, {"controlId", id}, {"controlValue", value}};
        const QList<QVariantList> sent = id ? QList<QVariantList>{{id, request}} : QList<QVariantList>();
        const auto text = [](const QList<QVariantList> &signal) { QString t; QDebug(&t) << signal; return t; };
        QCOMPARE(text(spy), text(sent)); // as text, so that a mismatch shows both
    }

private:
    std::unique_ptr<OrvekView> view;
};

QTEST_MAIN(TestOrvekView)
#include "tst_orvekview.moc"
