#include "oxFileIO.h"

#include "oxFile.h"
#include "oxMessage.h"

namespace {
bool loadingWhileScript = false;
} // namespace

std::string oxFileIO::toUtf8std(const QString& text) { return text.toUtf8().toStdString(); }

QString oxFileIO::getLongWindowsPath(const QString& path)
{
    return QString::fromStdString(getLongWindowsPath(toUtf8std(path)));
}

std::string oxFileIO::getLongWindowsPath(const std::string& path)
{
    return oxFile::expandFilename(path);
}

oxMessage& oxFileIO::getProject()
{
    static oxMessage project;
    return project;
}

void oxFileIO::clearProject() { getProject().clear(); }

bool oxFileIO::isLoadingProjectWhileRunningScript() { return loadingWhileScript; }

void oxFileIO::setLoadingProjectWhileRunningScript(bool loading) { loadingWhileScript = loading; }
