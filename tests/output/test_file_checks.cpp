// Checks before a job: file names, folders, existing and unwritable files, and the answers.

#include "oxOutputTestSupport.h"
#include "oxPlatform.h"

#include <QFile>

namespace {

const std::string kBadFilename = "Bad Filename, please choose a valid filename!";
const QString kOverwriteQuestion = "This operation will overwrite existing files! What do you "
                                   "want to do?\n\nFiles to be overwritten:\n";
const QString kUnwritableQuestion =
    "Unable to write files! What do you want to do?\n\nFiles that can not be written:\n";

void touch(const QString& file) { QFile(file).open(QIODevice::WriteOnly); }

void queue(const QStringList& answers)
{
    for (const QString& answer : answers)
        oxDialogResponder::queueAnswer(answer);
}

QStringList questions()
{
    QStringList list;
    for (const oxDialogResponder::Exchange& exchange : oxDialogResponder::history())
        list << exchange.question;
    return list;
}

bool cancelOf(const oxMessage& message)
{
    bool cancel = false;
    EXPECT_TRUE(message.get("cancel", cancel));
    return cancel;
}

} // namespace

class FileCheckTest : public RenderJobTest {
protected:
    oxRenderSettingsPresetSPtr movie(const std::string& name)
    {
        auto settings = record();
        settings->filename = name.empty() ? name : dir.file(name);
        settings->renderAnimation = true;
        settings->exportType = 1;
        return settings;
    }
    void addJob(const std::string& jobName, const std::string& fileName)
    {
        auto job = record();
        job->name = jobName;
        job->filename = dir.file(fileName);
        window()->getRQPresets().push_back(job);
    }
};

TEST_F(FileCheckTest, BadNamesAndFoldersStopTheJobWithTheExactError)
{
    expectLog(oxLog::Error, kBadFilename);
    auto still = record();
    still->filename = dir.file("car.AVI");
    const std::vector<oxRenderSettingsPresetSPtr> bad = {movie("spin.png"), movie(""), still};
    for (const oxRenderSettingsPresetSPtr& settings : bad) {
        QStringList names{"kept"};
        EXPECT_FALSE(module->walkRenderPlan(settings, names, PlanCollect));
        EXPECT_EQ(names, QStringList{"kept"}) << settings->filename;
    }
    // The check and the walk each say it.
    EXPECT_EQ(log().messages(oxLog::Error).size(), 2 * bad.size());
    // A movie name in capitals is a movie name.
    EXPECT_EQ(collect(movie("spin.AVI")).size(), 1);

    touch(path("plain"));
    current().filename = dir.file("plain/sub/car.png");
    expectLog(oxLog::Error, "Unable to create directory " + dir.file("plain/sub"));
    EXPECT_TRUE(collect(record()).isEmpty());
    EXPECT_FALSE(module->renderPresetToFile(record()));
    EXPECT_FALSE(oxController::isBusy());
    EXPECT_EQ(source.renders, 0);
}

TEST_F(FileCheckTest, ExistingAndUnwritableFilesAskOnceForTheWholeJob)
{
    chooseVariantSets({"Paint Red", "Paint Blue"}, {});
    auto settings = record();
    EXPECT_TRUE(module->checkOutputFiles(settings, false));
    EXPECT_TRUE(oxDialogResponder::history().isEmpty());

    touch(path("car_Paint Blue.png"));
    queue({"Overwrite"});
    EXPECT_TRUE(module->checkOutputFiles(settings, false));
    queue({"Cancel"});
    EXPECT_FALSE(module->checkOutputFiles(settings, false));
    EXPECT_EQ(oxDialogResponder::history().value(0).title, oxPlatform::getAppVersionName());
    const QString existing = kOverwriteQuestion + path("car_Paint Blue.png");
    EXPECT_EQ(questions(), (QStringList{existing, existing}));

    // A folder where an image should go exists and can't be written: Retry asks again.
    oxDialogResponder::clear();
    ASSERT_TRUE(QDir().mkpath(path("car_Paint Red.png")));
    queue({"Overwrite", "Retry", "Ignore"});
    EXPECT_TRUE(module->checkOutputFiles(settings, false));
    EXPECT_EQ(questions().value(2), kUnwritableQuestion + path("car_Paint Red.png"));
    queue({"Overwrite", "Cancel"});
    EXPECT_FALSE(module->checkOutputFiles(settings, false));
}

TEST_F(FileCheckTest, RenameAsksForAnotherMovieName)
{
    touch(path("spin.avi"));
    auto settings = movie("spin.avi");
    queue({"Rename", path("other.avi")});
    EXPECT_TRUE(module->checkOutputFiles(settings, false));
    EXPECT_EQ(settings->filename, dir.file("other.avi"));
    EXPECT_EQ(current().filename, dir.file("other.avi"));

    // Cancel in the Save dialog ends it with no further question.
    oxDialogResponder::clear();
    EXPECT_FALSE(module->checkOutputFiles(settings, true));
    EXPECT_EQ(oxDialogResponder::history().size(), 1);

    expectLog(oxLog::Error, "Movie format not supported!");
    queue({path("still.png")});
    EXPECT_FALSE(module->chooseOutputFile(settings));
    EXPECT_EQ(settings->filename, dir.file("other.avi"));
}

TEST_F(FileCheckTest, PresetCallbacksReportTheDecision)
{
    addJob("a", "a.png");
    addJob("b", "b.png");
    touch(path("a.png"));
    ASSERT_TRUE(QDir().mkpath(path("b.png")));

    oxMessage one;
    oxController::call("checkFileWritingForPreset", one);
    one.set("preset", std::string("unknown"));
    oxController::call("checkFileWritingForPreset", one);
    EXPECT_FALSE(one.has("cancel"));
    one.set("preset", std::string("a"));
    queue({"Overwrite"});
    oxController::call("checkFileWritingForPreset", one);
    EXPECT_FALSE(cancelOf(one));
    std::string filename;
    EXPECT_TRUE(one.get("filename", filename));
    EXPECT_EQ(filename, dir.file("a.png"));

    // One question for all presets, their texts above their files; no Rename here.
    oxDialogResponder::clear();
    oxMessage all;
    all.set("presets", std::vector<std::pair<std::string, std::string>>{
                           {"Job A", "a"}, {"Gone", "missing"}, {"Job B", "b"}});
    queue({"Overwrite", "Ignore"});
    oxController::call("checkFileWritingForPresets", all);
    EXPECT_FALSE(cancelOf(all));
    EXPECT_EQ(questions(), (QStringList{kOverwriteQuestion + "Job A\n" + path("a.png") +
                                            "\nJob B\n" + path("b.png"),
                                        kUnwritableQuestion + "Job B\n" + path("b.png")}));
    for (const QStringList& answers : {QStringList{"Cancel"}, QStringList{"Overwrite", "Cancel"}}) {
        queue(answers);
        oxController::call("checkFileWritingForPresets", all);
        EXPECT_TRUE(cancelOf(all)) << answers.join(",").toStdString();
    }
}
