// A job split into tasks: each task walks its own part, and the parts make up the job in
// order, whether the units are stills, frame runs of sequences or movies.

#include "oxOutputTestSupport.h"

#include "oxRenderTasks.h"

namespace {

class RenderTaskTest : public RenderJobTest {
protected:
    QStringList taskFiles(int64_t index, int framesPerTask)
    {
        const oxRenderTaskScope scope({index, framesPerTask});
        return collect(record());
    }
    // The files of every task, one list each.
    std::vector<QStringList> everyTask(int framesPerTask)
    {
        std::vector<QStringList> tasks;
        const int64_t count = renderTaskCount(record(), framesPerTask);
        for (int64_t index = 0; index < count; ++index)
            tasks.push_back(taskFiles(index, framesPerTask));
        return tasks;
    }
    static QStringList joined(const std::vector<QStringList>& tasks)
    {
        QStringList all;
        for (const QStringList& task : tasks)
            all << task;
        return all;
    }
};

} // namespace

TEST_F(RenderTaskTest, TasksPartitionTheJobInWalkOrder)
{
    struct Case {
        const char* what;
        bool animation;
        int exportType;
        int framesPerTask;
        int64_t tasks;
        int filesPerTask; // of the first task
    };
    // Two tuples; stills on a still track of 8 viewpoints, animations in the current view
    // over frames 0 to 4 by 2 (0, 2, 4).
    const Case cases[] = {
        {"stills", false, 0, 1, 16, 1},
        {"sequence, a frame a task", true, 0, 1, 6, 1},
        {"sequence, two frames a task", true, 0, 2, 4, 2},
        {"movie", true, 1, 1, 2, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        current() = oxRenderSettingsPreset();
        current().filename = dir.file(c.exportType == 1 ? "car.avi" : "car.png");
        current().pixel_width = 32.0f;
        current().pixel_height = 18.0f;
        current().view = c.animation ? "" : "Turntable";
        current().renderAnimation = c.animation;
        current().exportType = c.exportType;
        current().startFrame = 0;
        current().stopFrame = 4;
        current().stepFrame = 2;
        chooseVariantSets({"Paint Red", "Paint Blue"}, {});

        const std::vector<QStringList> tasks = everyTask(c.framesPerTask);
        ASSERT_EQ(int64_t(tasks.size()), c.tasks);
        EXPECT_EQ(tasks.front().size(), c.filesPerTask);
        EXPECT_EQ(joined(tasks), collect(record()));
        // Past the last task nothing is walked.
        EXPECT_TRUE(taskFiles(c.tasks, c.framesPerTask).isEmpty());
    }
}

TEST_F(RenderTaskTest, TaskRendersOnlyItsFiles)
{
    chooseVariantSets({"Paint Red", "Paint Blue", "Paint Silver"}, {});
    const QStringList all = collect(record());
    ASSERT_EQ(all.size(), 3);
    {
        const oxRenderTaskScope scope({1, 1});
        module->startRenderToFile(true);
    }
    EXPECT_EQ(filesOnDisk(), cleaned({all[1]}));
}
