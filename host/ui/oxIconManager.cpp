#include "oxIconManager.h"

#include "oxLog.h"

#include <QApplication>
#include <QSet>
#include <QStyle>

namespace {

struct IconEntry {
    const char* name;
    const char* resource;         // a drawn icon, or null
    QStyle::StandardPixmap style; // used when resource is null
};

// Names with their icons. Paths (with a folder and extension) are the names that get() takes.
const IconEntry kIcons[] = {
    {"CreateImage", ":/oxicons/CreateImage.svg", QStyle::SP_CustomBase},
    {"StartRendering", ":/oxicons/StartRendering.svg", QStyle::SP_CustomBase},
    {"FileOpen", nullptr, QStyle::SP_DialogOpenButton},
    {"FileSave", nullptr, QStyle::SP_DialogSaveButton},
    {"Delete", nullptr, QStyle::SP_TrashIcon},
    {"Remove", nullptr, QStyle::SP_DialogDiscardButton},
    {"CreateNew", nullptr, QStyle::SP_FileDialogNewFolder},
    {"Save", nullptr, QStyle::SP_DialogSaveButton},
    {"scenegraph/FolderClosed.svg", ":/oxicons/scenegraph/FolderClosed.svg", QStyle::SP_CustomBase},
    {"scenegraph/FolderOpen.svg", ":/oxicons/scenegraph/FolderOpen.svg", QStyle::SP_CustomBase},
};

const IconEntry* find(const QString& name)
{
    for (const IconEntry& entry : kIcons) {
        if (name == QLatin1String(entry.name))
            return &entry;
    }
    return nullptr;
}

QIcon load(const QString& name)
{
    const IconEntry* entry = find(name);
    if (!entry) {
        static QSet<QString> reported;
        if (!reported.contains(name)) {
            reported.insert(name);
            oxLog::warning("oxIconManager: there is no icon named '%s'.", qPrintable(name));
        }
        return QIcon();
    }
    if (entry->resource)
        return QIcon(QString::fromLatin1(entry->resource));
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return QIcon();
    return QApplication::style()->standardIcon(entry->style);
}

} // namespace

QIcon oxIconManager::getIcon(const QString& name, const QString& variant)
{
    QIcon icon = load(name);
    if (variant == QLatin1String("disabled") && !icon.isNull()) {
        const QPixmap pixmap = icon.pixmap(64, QIcon::Disabled);
        return QIcon(pixmap);
    }
    return icon;
}

QIcon oxIconManager::get(const QString& path) { return load(path); }

bool oxIconManager::hasIcon(const QString& name) { return find(name) != nullptr; }

QStringList oxIconManager::names()
{
    QStringList names;
    for (const IconEntry& entry : kIcons)
        names << QString::fromLatin1(entry.name);
    return names;
}
