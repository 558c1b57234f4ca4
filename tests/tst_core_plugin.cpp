// Loading the plug-in the way a host does, and the host contract's defaults.
#include <QLibrary>
#include <QPluginLoader>
#include <QtTest>

#include "collectthread.h"
#include "collectview.h"
#include "orvekclient.h"
#include "testconfig.h"

class TestPlugin : public QObject
{
    Q_OBJECT

private slots:
    void loaderFactoryAndRelease()
    {
        QPluginLoader loader(pluginPath);
        const QJsonObject meta = loader.metaData();
        QCOMPARE(meta.value("IID").toString(), QStringLiteral("com.wenk.Qt.ProInterface"));
        QCOMPARE(meta.value("className").toString(), QStringLiteral("OrvekClient"));
        QVERIFY(meta.value("MetaData").toObject().isEmpty());
        auto *root = qobject_cast<CollectThread *>(loader.instance());
        QVERIFY2(root, qPrintable(loader.errorString()));

        CollectThread *a = nullptr;
        QVERIFY(QMetaObject::invokeMethod(root, "create", Q_RETURN_ARG(CollectThread *, a), Q_ARG(void *, nullptr)));
        std::unique_ptr<CollectThread> b(root->create(reinterpret_cast<void *>(0x1234)));
        QVERIFY(a && b && a != b.get() && a != root);

        // Through the base class the release is the empty default.
        QPointer<CollectThread> watchA(a);
        root->release(a);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!watchA.isNull());
        QVERIFY(!root->released);

        // Through the derived type the client is deleted later.
        qobject_cast<OrvekClient *>(root)->release(qobject_cast<OrvekClient *>(a));
        QVERIFY(root->released);
        QVERIFY(!watchA.isNull());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(watchA.isNull());
    }

    void rootInstanceIsReusedAndRemade()
    {
        QLibrary library(pluginPath);
        QVERIFY2(library.load(), qPrintable(library.errorString()));
        using InstanceFn = QObject *(*)();
        auto instance = reinterpret_cast<InstanceFn>(library.resolve("qt_plugin_instance"));
        QVERIFY(instance);

        QObject *root = instance();
        QVERIFY(qobject_cast<OrvekClient *>(root));
        QCOMPARE(instance(), root);
        QVERIFY(!root->parent());

        delete root; // the next call makes a new one
        QObject *again = instance();
        QVERIFY(qobject_cast<OrvekClient *>(again));
        QCOMPARE(instance(), again);
    }

    void hostContractBySpelledSignatures()
    {
        // Hosts connect and call by these exact signatures.
        OrvekClient client;
        CollectView view;
        QVERIFY(QObject::connect(&client, SIGNAL(postDEvent(int,QMap<QString,QVariant>)), &view,
                                 SIGNAL(postDEvent(int,QMap<QString,QVariant>))));
        QVERIFY(client.metaObject()->indexOfSlot("changeLogData(QMap<int,QVariant>)") >= 0);
        QVERIFY(view.metaObject()->indexOfSlot("flushData(QMap<int,QVariant>)") >= 0);
        QVERIFY(client.metaObject()->indexOfSlot("control(int,QString)") >= 0);
        QVERIFY(client.metaObject()->indexOfSlot("flushUpsInfoSLot(QString,QVariant)") >= 0);
        // Queued signals carry data point maps across threads under these names.
        QVERIFY(QMetaType::type("QMap<int,QVariant>") != QMetaType::UnknownType);
        QVERIFY(QMetaType::type("DataPointMap") != QMetaType::UnknownType);

        // The view's default control() turns a request into an event of that type.
        view.setName(QStringLiteral("ups-7"));
        QSignalSpy spy(&view, &CollectView::postDEvent);
        view.control(5, QStringLiteral("1"));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0).at(0).toInt(), 5);
        QCOMPARE(spy.at(0).at(1).value<EventMap>(),
                 (EventMap{{"controlId", 5}, {"controlValue", "1"}, {"name", "ups-7"}}));

        // UTF-8 text that was read as Latin-1 comes back whole.
        const QString original = QStringLiteral("Serverraum Süd 机房");
        QCOMPARE(client.utfToChina(QString::fromLatin1(original.toUtf8())), original);
    }

private:
    const QString pluginPath = builtBinaryDir() + QStringLiteral("/libOrvekClient.so");
};

QTEST_MAIN(TestPlugin)
#include "tst_core_plugin.moc"

