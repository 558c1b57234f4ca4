// Loading the plug-in the way a host does, and the host contract's defaults.
#include <QLibrary>
#include <QPluginLoader>
#include <QtTest>

#include "collectthread.h"
#include "collectview.h"
#include "orvekclient.h"

namespace {
QString pluginPath()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/libOrvekClient.so");
}
} // namespace

class TestPlugin : public QObject
{
    Q_OBJECT

private slots:
    void metadata();
    void rootInstanceIsReusedAndRemade();
    void factoryAndRelease();
    void stringConnectionsBySpelledSignatures();
    void viewControlRequest();
    void utfToChinaRepairsLatin1();
};

void TestPlugin::metadata()
{
    QPluginLoader loader(pluginPath());
    const QJsonObject meta = loader.metaData();
    QCOMPARE(meta.value("IID").toString(), QStringLiteral("com.wenk.Qt.ProInterface"));
    QCOMPARE(meta.value("className").toString(), QStringLiteral("OrvekClient"));
    QCOMPARE(meta.value("debug").toBool(), false);
    QVERIFY(meta.value("MetaData").toObject().isEmpty());
    QVERIFY(meta.value("version").toInt() >= 0x050900);
}

void TestPlugin::rootInstanceIsReusedAndRemade()
{
    QLibrary library(pluginPath());
    QVERIFY2(library.load(), qPrintable(library.errorString()));
    using InstanceFn = QObject *(*)();
    auto instance = reinterpret_cast<InstanceFn>(library.resolve("qt_plugin_instance"));
    QVERIFY(instance);

    QObject *root = instance();
    QVERIFY(root);
    QCOMPARE(instance(), root);
    QVERIFY(qobject_cast<OrvekClient *>(root));
    QVERIFY(!root->parent());

    QPointer<QObject> watch(root);
    delete root;
    QVERIFY(watch.isNull());
    QObject *again = instance();
    QVERIFY(again);
    QVERIFY(qobject_cast<CollectThread *>(again));
    QCOMPARE(instance(), again);
}

void TestPlugin::factoryAndRelease()
{
    QPluginLoader loader(pluginPath());
    auto *root = qobject_cast<CollectThread *>(loader.instance());
    QVERIFY2(root, qPrintable(loader.errorString()));

    CollectThread *a = nullptr;
    QVERIFY(QMetaObject::invokeMethod(root, "create", Q_RETURN_ARG(CollectThread *, a), Q_ARG(void *, nullptr)));
    CollectThread *b = root->create(reinterpret_cast<void *>(0x1234));
    QVERIFY(a && b && a != b && a != root);
    QVERIFY(!a->parent());

    // Through the base class the release is the empty default.
    QPointer<CollectThread> watchA(a);
    root->release(a);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!watchA.isNull());
    QVERIFY(!root->released);

    // Through the derived type the client is deleted later.
    auto *orvek = qobject_cast<OrvekClient *>(root);
    orvek->release(qobject_cast<OrvekClient *>(a));
    QVERIFY(root->released);
    QVERIFY(!watchA.isNull());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(watchA.isNull());
    delete b;
}

void TestPlugin::stringConnectionsBySpelledSignatures()
{
    OrvekClient client;
    CollectView view;
    QObject sink;
    QVERIFY(QObject::connect(&client, SIGNAL(postDEvent(int,QMap<QString,QVariant>)), &view,
                             SIGNAL(postDEvent(int,QMap<QString,QVariant>))));
    QVERIFY(QObject::connect(&view, SIGNAL(postDEvent(int,QMap<QString,QVariant>)), &client,
                             SIGNAL(postDEvent(int,QMap<QString,QVariant>))));
    QVERIFY(client.metaObject()->indexOfSlot("changeLogData(QMap<int,QVariant>)") >= 0);
    QVERIFY(view.metaObject()->indexOfSlot("flushData(QMap<int,QVariant>)") >= 0);
    QVERIFY(client.metaObject()->indexOfSlot("control(int,QString)") >= 0);
    QVERIFY(client.metaObject()->indexOfSlot("flushUpsInfoSLot(QString,QVariant)") >= 0);
    QVERIFY(QMetaType::type("QMap<int,QVariant>") != QMetaType::UnknownType);
    QVERIFY(QMetaType::type("DataPointMap") != QMetaType::UnknownType);

    // A queued call carries a data point map across threads.
    QThread other;
    OrvekClient receiver;
    receiver.moveToThread(&other);
    other.start();
    QMap<int, QVariant> data{{9, 230}};
    QStringList row;
    QVERIFY(QMetaObject::invokeMethod(&receiver, "changeLogData", Qt::BlockingQueuedConnection,
                                      Q_RETURN_ARG(QStringList, row), Q_ARG(DataPointMap, data)));
    QCOMPARE(row.value(0), QStringLiteral("230"));
    other.quit();
    other.wait();
}

void TestPlugin::viewControlRequest()
{
    CollectView view;
    view.setName(QStringLiteral("ups-7"));
    QSignalSpy spy(&view, &CollectView::postDEvent);
    view.control(5, QStringLiteral("1"));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toInt(), 5);
    const auto map = spy.at(0).at(1).value<QMap<QString, QVariant>>();
    QCOMPARE(map, (QMap<QString, QVariant>{{"controlId", 5}, {"controlValue", "1"}, {"name", "ups-7"}}));
}

void TestPlugin::utfToChinaRepairsLatin1()
{
    OrvekClient client;
    const QString original = QStringLiteral("Serverraum Süd 机房");
    const QString misread = QString::fromLatin1(original.toUtf8());
    QCOMPARE(client.utfToChina(misread), original);
}

QTEST_MAIN(TestPlugin)
#include "tst_core_plugin.moc"
