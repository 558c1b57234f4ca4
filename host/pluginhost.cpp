#include "pluginhost.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>
#include <QtEndian>

#include "collectthread.h"
#include "hostlogging.h"

const char PluginHost::kInterfaceId[] = "com.wenk.Qt.ProInterface";

namespace {

const char kMetaIid[] = "IID";
const char kMetaClassName[] = "className";

// ELF header fields that locate the section table (32-bit and 64-bit layout).
constexpr int kElfClassOffset = 4;
constexpr int kElfDataOffset = 5;
constexpr char kElfClass64 = 2;
constexpr char kElfBigEndian = 2;
constexpr int kElfHeaderSize32 = 52;
constexpr int kElfHeaderSize64 = 64;

quint64 elfField(const QByteArray &header, int offset, int size, bool bigEndian)
{
    const auto *p = reinterpret_cast<const uchar *>(header.constData() + offset);
    switch (size) {
    case 2:
        return bigEndian ? qFromBigEndian<quint16>(p) : qFromLittleEndian<quint16>(p);
    case 4:
        return bigEndian ? qFromBigEndian<quint32>(p) : qFromLittleEndian<quint32>(p);
    default:
        return bigEndian ? qFromBigEndian<quint64>(p) : qFromLittleEndian<quint64>(p);
    }
}

// Why a library file without plug-in metadata is unusable; empty for a sound
// shared object that simply is no plug-in (such as the contract library).
// The loader reads the section table to find the metadata: a truncated copy
// has its table (at the end of the file) cut off. The file is only read, never
// loaded: mapping a truncated library can crash the process.
QString damage(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    const QByteArray header = file.read(kElfHeaderSize64);
    if (!header.startsWith("\x7f" "ELF") || header.size() <= kElfDataOffset)
        return PluginHost::tr("it is not a shared library");
    const bool is64 = header.at(kElfClassOffset) == kElfClass64;
    const bool bigEndian = header.at(kElfDataOffset) == kElfBigEndian;
    if (header.size() < (is64 ? kElfHeaderSize64 : kElfHeaderSize32))
        return PluginHost::tr("it is truncated");
    const quint64 tableOffset = is64 ? elfField(header, 0x28, 8, bigEndian) : elfField(header, 0x20, 4, bigEndian);
    const quint64 entrySize = elfField(header, is64 ? 0x3a : 0x2e, 2, bigEndian);
    const quint64 entries = elfField(header, is64 ? 0x3c : 0x30, 2, bigEndian);
    if (tableOffset + entrySize * entries > quint64(file.size()))
        return PluginHost::tr("it is damaged or truncated (its section table lies beyond the end of the file)");
    return QString();
}

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
        if (QLibrary::isLibrary(path))
            loadFile(path);
    }
    return m_plugins.size();
}

void PluginHost::loadFile(const QString &path)
{
    QPluginLoader loader(path);
    const QJsonObject meta = loader.metaData();
    if (meta.isEmpty()) {
        // An ordinary library passes silently; a broken one is named.
        const QString reason = damage(path);
        if (!reason.isEmpty())
            addProblem(tr("%1 is skipped: %2").arg(QDir::toNativeSeparators(path), reason));
        return;
    }
    const QString iid = meta.value(QLatin1String(kMetaIid)).toString();
    if (iid != QLatin1String(kInterfaceId)) {
        addProblem(tr("%1 is skipped: it is a Qt plug-in with the interface id \"%2\", not a device plug-in (%3)")
                       .arg(QDir::toNativeSeparators(path), iid, QLatin1String(kInterfaceId)));
        return;
    }
    const QString className = meta.value(QLatin1String(kMetaClassName)).toString();
    const QString canonical = QFileInfo(path).canonicalFilePath();
    for (const Plugin &plugin : qAsConst(m_plugins)) {
        if (plugin.className != className)
            continue;
        // The same file again (a second look at the folder, or a link to it)
        // is nothing to tell; another copy of the plug-in is.
        if (QFileInfo(plugin.fileName).canonicalFilePath() != canonical) {
            addProblem(tr("%1 is skipped: the plug-in %2 is already loaded from %3")
                           .arg(QDir::toNativeSeparators(path), className,
                                QDir::toNativeSeparators(plugin.fileName)));
        }
        return;
    }
    auto *kept = new QPluginLoader(path);
    auto *root = qobject_cast<CollectThread *>(kept->instance());
    if (!root) {
        addProblem(tr("%1 is skipped: it cannot be loaded as a device plug-in (%2)")
                       .arg(QDir::toNativeSeparators(path), kept->errorString()));
        delete kept;
        return;
    }
    qCDebug(lcHost) << "device plug-in" << className << path;
    m_plugins.append(Plugin{className, path, kept, root});
}

void PluginHost::addProblem(const QString &text)
{
    if (m_problems.contains(text))
        return; // the same folder looked at again
    qCDebug(lcHost) << text;
    m_problems << text;
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
