#include "pluginhost.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>

#include "collectthread.h"
#include "hostlogging.h"

const char PluginHost::kInterfaceId[] = "com.wenk.Qt.ProInterface";

namespace {
const char kMetaIid[] = "IID";
const char kMetaClassName[] = "className";
} // namespace

PluginHost::PluginHost(QObject *parent)
    : QObject(parent)
{
}

PluginHost::~PluginHost()
{
    // The loaders go, the libraries stay loaded (no unload()).
    for (const Plugin &plugin : qAsConst(m_plugins))
        delete plugin.loader;
}

QString PluginHost::defaultFolder()
{
    return QCoreApplication::applicationDirPath();
}

int PluginHost::loadFolder(const QString &dir)
{
    const QDir folder(dir);
    const QStringList files = folder.entryList(QDir::Files | QDir::Readable, QDir::Name);
    for (const QString &file : files) {
        const QString path = folder.absoluteFilePath(file);
        if (!QLibrary::isLibrary(path))
            continue;
        auto *loader = new QPluginLoader(path);
        const QJsonObject meta = loader->metaData();
        if (meta.value(QLatin1String(kMetaIid)).toString() != QLatin1String(kInterfaceId)) {
            delete loader; // not a device plug-in (or no plug-in at all)
            continue;
        }
        const QString className = meta.value(QLatin1String(kMetaClassName)).toString();
        if (classNames().contains(className)) {
            delete loader; // the same plug-in again (another copy or a link)
            continue;
        }
        QObject *instance = loader->instance();
        auto *root = qobject_cast<CollectThread *>(instance);
        if (!root) {
            m_problems << tr("%1: no device factory (%2)").arg(path, loader->errorString());
            qCWarning(lcHost) << "plug-in without a CollectThread root" << path << loader->errorString();
            delete loader;
            continue;
        }
        qCDebug(lcHost) << "device plug-in" << className << path;
        m_plugins.append(Plugin{className, path, loader, root});
    }
    return m_plugins.size();
}

QStringList PluginHost::classNames() const
{
    QStringList names;
    for (const Plugin &plugin : m_plugins)
        names << plugin.className;
    return names;
}

CollectThread *PluginHost::factory(const QString &className) const
{
    for (const Plugin &plugin : m_plugins) {
        if (className.isEmpty() || plugin.className == className) {
            // The root may have been destroyed; the loader makes a new one.
            if (plugin.root)
                return plugin.root;
            return qobject_cast<CollectThread *>(plugin.loader->instance());
        }
    }
    return nullptr;
}
