// The host stands below the plug-in: no host file may include a plug-in header.

#include "oxTestSupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>

TEST(LayeringTest, HostNeverIncludesPluginHeaders)
{
    const QString source = QStringLiteral(OX_TEST_SOURCE_DIR);
    QSet<QString> pluginHeaders;
    for (const char* folder : {"plugin", "settings", "output", "script", "window", "preferences"}) {
        QDirIterator it(source + "/" + folder, {"*.h"}, QDir::Files);
        while (it.hasNext())
            pluginHeaders.insert(QFileInfo(it.next()).fileName());
    }
    ASSERT_FALSE(pluginHeaders.isEmpty());

    const QRegularExpression include(QStringLiteral("^\\s*#\\s*include\\s*[\"<]([^\">]+)[\">]"),
                                     QRegularExpression::MultilineOption);
    int filesRead = 0;
    QDirIterator it(source + "/host", {"*.h", "*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        ++filesRead;
        const QString text = QString::fromUtf8(file.readAll());
        auto matches = include.globalMatch(text);
        while (matches.hasNext()) {
            const QString header = QFileInfo(matches.next().captured(1)).fileName();
            EXPECT_FALSE(pluginHeaders.contains(header))
                << file.fileName().toStdString() << " includes the plug-in header "
                << header.toStdString();
        }
    }
    EXPECT_GT(filesRead, 10);
}
