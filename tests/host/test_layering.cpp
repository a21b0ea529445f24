// The code stands in layers: the host below the plug-in, and inside the plug-in settings <
// output < window (preferences beside it) < plugin < script. A file may include headers of
// its own layer and below, never above.

#include "oxTestSupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QRegularExpression>

namespace {

struct Layer {
    const char* folder;
    int rank;
};

constexpr Layer kLayers[] = {
    {"host", 0},        {"settings", 1}, {"output", 2}, {"window", 3},
    {"preferences", 3}, {"plugin", 4},   {"script", 5},
};

QStringList sourcesBelow(const QString& folder, const QStringList& patterns)
{
    QStringList files;
    QDirIterator it(folder, patterns, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        files << it.next();
    return files;
}

} // namespace

TEST(LayeringTest, NoFileIncludesAHeaderOfAHigherLayer)
{
    const QString source = QStringLiteral(OX_TEST_SOURCE_DIR);
    QHash<QString, const Layer*> layerOfHeader;
    for (const Layer& layer : kLayers)
        for (const QString& header : sourcesBelow(source + "/" + layer.folder, {"*.h"}))
            layerOfHeader.insert(QFileInfo(header).fileName(), &layer);
    ASSERT_GT(layerOfHeader.size(), 50);

    const QRegularExpression include(QStringLiteral("^\\s*#\\s*include\\s*[\"<]([^\">]+)[\">]"),
                                     QRegularExpression::MultilineOption);
    int filesRead = 0;
    for (const Layer& layer : kLayers) {
        for (const QString& path : sourcesBelow(source + "/" + layer.folder, {"*.h", "*.cpp"})) {
            QFile file(path);
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            ++filesRead;
            auto matches = include.globalMatch(QString::fromUtf8(file.readAll()));
            while (matches.hasNext()) {
                const QString header = QFileInfo(matches.next().captured(1)).fileName();
                const Layer* target = layerOfHeader.value(header);
                EXPECT_FALSE(target && target->rank > layer.rank)
                    << path.mid(source.size() + 1).toStdString() << " (" << layer.folder
                    << ") includes " << header.toStdString() << " of the higher layer "
                    << target->folder;
            }
        }
    }
    EXPECT_GT(filesRead, 100);
}
