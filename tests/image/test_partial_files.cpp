// Temporary files of writes: never left behind by a signal or a dead writer, written in the
// target's folder, and committed through symbolic links with the replaced file's mode.

#include "oxFile.h"
#include "oxImageEncoder.h"
#include "oxPartialFiles.h"
#include "oxTestSupport.h"

#include <OpenImageIO/imageio.h>

#include <QDir>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// The names in folder, hidden ones included, sorted.
std::vector<std::string> entries(const std::string& folder)
{
    std::vector<std::string> names;
    for (const QString& name :
         QDir(QString::fromStdString(folder))
             .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                        QDir::Name))
        names.push_back(name.toStdString());
    std::sort(names.begin(), names.end());
    return names;
}

// Runs body in a child process and gives how it ended (the wait status).
int inChild(const std::function<void()>& body)
{
    const pid_t child = ::fork();
    if (child == 0) {
        body();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return status;
}

const float kPixels[4 * 4] = {1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1, 1, 1, 1, 0.5f};

} // namespace

// A writer ended by a signal removes its partial files on the way out and still ends by that
// signal; the partial files of writers that died without a chance to clean up are removed by the
// next process writing there, while those of live processes and other hosts stay.
TEST(PartialFiles, SignalsAndDeadWritersLeaveNoPartialFiles)
{
    oxTempDir dir;
    for (int signal : {SIGTERM, SIGHUP, SIGINT}) {
        const int status = inChild([&] {
            const std::string partial = oxPartialFiles::begin(dir.file("image.png"));
            oxFile::writeAtomically(partial, "half an image");
            std::raise(signal);
        });
        ASSERT_TRUE(WIFSIGNALED(status)) << signal;
        EXPECT_EQ(WTERMSIG(status), signal);
        EXPECT_EQ(entries(dir.path()), std::vector<std::string>()) << signal;
    }

    oxTempDir other;
    std::string dead;
    const int status = inChild([&] {
        const std::string partial = oxPartialFiles::begin(other.file("movie.avi"));
        oxFile::writeAtomically(partial, "frames");
        ::_exit(3); // as SIGKILL would: no handler runs
    });
    ASSERT_TRUE(WIFEXITED(status));
    ASSERT_EQ(entries(other.path()).size(), 1u);
    dead = entries(other.path())[0];
    const size_t part = dead.find(".part");
    ASSERT_NE(part, std::string::npos) << dead;
    // The same name with pid 1, which runs, and with another host.
    const std::string pidAndRest = dead.substr(part + 5);
    const std::string rest = pidAndRest.substr(pidAndRest.find('-'));
    const std::string alive = ".movie.part1" + rest;
    const std::string elsewhere =
        ".movie.part" + pidAndRest.substr(0, pidAndRest.find('-')) + "-0-otherhost.avi";
    ASSERT_TRUE(oxFile::writeAtomically(other.file(alive), "x"));
    ASSERT_TRUE(oxFile::writeAtomically(other.file(elsewhere), "x"));
    ASSERT_TRUE(oxFile::writeAtomically(other.file(".movie.avi.notes"), "x"));

    const std::string mine = oxPartialFiles::begin(other.file("movie.avi"));
    oxPartialFiles::discard(mine);
    EXPECT_EQ(entries(other.path()),
              (std::vector<std::string>{".movie.avi.notes", alive, elsewhere}));
}

// Overwriting goes through a symbolic link to the file it points to and keeps that file's
// mode, for images and for the writes of records alike; a new file gets the usual mode.
TEST(PartialFiles, OverwritesFollowLinksAndKeepTheMode)
{
    const std::vector<oxImageLayer> layers = {{"beauty", kPixels, false}};
    const std::vector<std::pair<std::string, std::function<bool(const std::string&)>>> writers = {
        {"image.png",
         [&](const std::string& path) {
             std::string error;
             return oxImageEncoder::writeFile(path, 2, 2, layers, oxEncodeSettings(), error);
         }},
        {"record.xml",
         [](const std::string& path) { return oxFile::writeAtomically(path, "<new/>"); }},
    };
    for (const auto& [name, write] : writers) {
        SCOPED_TRACE(name);
        oxTempDir dir, elsewhere;
        const std::string target = elsewhere.file(name), link = dir.file(name);
        ASSERT_TRUE(oxFile::writeAtomically(target, "old"));
        ASSERT_EQ(::chmod(target.c_str(), 0600), 0);
        // A relative link, as users make them.
        const std::string relative =
            "../" + QDir(QString::fromStdString(elsewhere.path())).dirName().toStdString() + "/" +
            name;
        ASSERT_EQ(::symlink(relative.c_str(), link.c_str()), 0);
        ASSERT_TRUE(write(link));

        struct stat info;
        ASSERT_EQ(::lstat(link.c_str(), &info), 0);
        EXPECT_TRUE(S_ISLNK(info.st_mode));
        ASSERT_EQ(::stat(target.c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 07777, 0600u);
        EXPECT_NE(oxReadFile(target), "old");
        EXPECT_EQ(entries(elsewhere.path()), std::vector<std::string>{name});

        const std::string fresh = dir.file("fresh-" + name);
        ASSERT_TRUE(write(fresh));
        ASSERT_EQ(::stat(fresh.c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0200, 0200u) << "a new file is writable by its owner";
    }
}

// Multi-layer TIFF needs a file to encode through: it is made in the target's folder, so the
// write works without a usable system temporary folder and leaves nothing anywhere.
TEST(PartialFiles, MultiLayerTiffEncodesBesideItsTarget)
{
    oxTempDir dir;
    const char* previous = std::getenv("TMPDIR");
    const std::string saved = previous ? previous : "";
    ::setenv("TMPDIR", dir.file("no-such-folder").c_str(), 1);
    oxEncodeSettings settings;
    settings.multiLayer = true;
    std::string error;
    const bool written = oxImageEncoder::writeFile(
        dir.file("layers.tif"), 2, 2, {{"beauty", kPixels, false}, {"albedo", kPixels, false}},
        settings, error);
    if (previous)
        ::setenv("TMPDIR", saved.c_str(), 1);
    else
        ::unsetenv("TMPDIR");
    ASSERT_TRUE(written) << error;
    EXPECT_EQ(entries(dir.path()), std::vector<std::string>{"layers.tif"});
    auto input = OIIO::ImageInput::open(dir.file("layers.tif"));
    ASSERT_TRUE(input);
    EXPECT_TRUE(input->seek_subimage(1, 0));
}
