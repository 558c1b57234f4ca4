#ifndef PLUGINHOST_H
#define PLUGINHOST_H

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

class CollectThread;
class QPluginLoader;

// Finds the device plug-ins of a folder: libraries whose metadata declares
// the device interface id. Each one's root instance is a CollectThread that
// only serves as the factory of device clients. Plug-ins are never unloaded:
// clients and views made by them may live until the process ends.
class PluginHost : public QObject
{
    Q_OBJECT
public:
    static const char kInterfaceId[];

    explicit PluginHost(QObject *parent = nullptr);
    ~PluginHost() override;

    // The host executable's own folder, where the plug-in is built.
    static QString defaultFolder();

    // Loads every device plug-in of dir not loaded yet (by class name);
    // returns how many plug-ins are available afterwards.
    int loadFolder(const QString &dir);

    QStringList classNames() const;
    // The factory of the plug-in with that class name; an empty name picks
    // the first plug-in found (files in name order). Null when none fits.
    CollectThread *factory(const QString &className = QString()) const;
    // Why library files were passed over, one sentence each naming the
    // file: damaged or no library, another interface, another copy of a
    // loaded plug-in, no device factory. Ordinary libraries are not named.
    QStringList problems() const { return m_problems; }

private:
    void loadFile(const QString &path);
    void addProblem(const QString &text);

    struct Plugin
    {
        QString className;
        QString fileName;
        QPluginLoader *loader = nullptr;
        QPointer<CollectThread> root;
    };

    QList<Plugin> m_plugins;
    QStringList m_problems;
};

#endif // PLUGINHOST_H
