#pragma once

#include <QIcon>
#include <QString>

/// The host's icons by name. Every name the host and its plug-ins use has a real icon: drawn
/// ones shipped with the host (":/oxicons/") or the style's standard icons.
class oxIconManager {
public:
    /// The icon of name; variant picks a variant of it ("" for the normal one, "disabled" for
    /// a greyed one). An unknown name gives a null icon and one warning per name.
    static QIcon getIcon(const QString& name, const QString& variant);
    /// The icon at a path below the icon folder ("scenegraph/FolderOpen.svg").
    static QIcon get(const QString& path);
    /// True when name is known.
    static bool hasIcon(const QString& name);
    /// Every known name and path, for tests and tools.
    static QStringList names();
};
