#include "oxPlatform.h"

#include "oxController.h"

#include <QGuiApplication>
#include <QScreen>

#include <cmath>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

double screenScale(bool horizontal)
{
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return 1.0;
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen)
        return 1.0;
    const double dpi = horizontal ? screen->logicalDotsPerInchX() : screen->logicalDotsPerInchY();
    return dpi > 0 ? dpi / 96.0 : 1.0;
}

int scaled(int size, bool horizontal)
{
    return static_cast<int>(std::lround(size * screenScale(horizontal)));
}

} // namespace

QString oxPlatform::getVersion() { return QStringLiteral(OX_VERSION); }

QString oxPlatform::getAppVersionName() { return QStringLiteral("Oxlin ") + getVersion(); }

int oxPlatform::getSmallIconSizeX() { return scaled(16, true); }
int oxPlatform::getSmallIconSizeY() { return scaled(16, false); }
int oxPlatform::getMediumIconSizeX() { return scaled(24, true); }
int oxPlatform::getMediumIconSizeY() { return scaled(24, false); }

double oxPlatform::getDpiScaleX() { return screenScale(true); }
double oxPlatform::getDpiScaleY() { return screenScale(false); }

void oxPlatform::prepareHeadless(bool keepPlatform)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", keepPlatform ? 0 : 1);
    ensureRuntimeDir();
    oxController::setNoGUI(true);
}

void oxPlatform::ensureRuntimeDir()
{
    if (const char* dir = std::getenv("XDG_RUNTIME_DIR"); dir && *dir)
        return;
    const std::string dir = "/tmp/oxlin-runtime-" + std::to_string(::getuid());
    ::mkdir(dir.c_str(), 0700);
    ::chmod(dir.c_str(), 0700);
    ::setenv("XDG_RUNTIME_DIR", dir.c_str(), 1);
}
