// The job plan: camera steps, variant set tuples and the names they give.

#include "oxOutputTestSupport.h"

#include <QFileInfo>
#include <QRegularExpression>

namespace {

QStringList decorated(const oxRenderSteps& steps, const QString& base)
{
    QStringList names;
    for (const oxRenderStepSPtr& step : steps)
        names << step->decorateName(base);
    return names;
}

QStringList fileNames(const QStringList& paths)
{
    QStringList names;
    for (const QString& path : paths)
        names << QFileInfo(path).fileName();
    return names;
}

} // namespace

TEST_F(RenderJobTest, CameraStepsFollowTheKindOfView)
{
    auto steps = [&](const std::string& view) {
        current().view = view;
        return oxCameraRenderSettings(record()).getRenderSteps();
    };
    EXPECT_EQ(decorated(steps(""), "car"), QStringList{"car"});
    // A viewpoint names itself only for "#"; a name merely containing "#" stays.
    EXPECT_EQ(decorated(steps("Front"), "car"), QStringList{"car"});
    EXPECT_EQ(decorated(steps("Front"), "#"), QStringList{"Front"});
    EXPECT_EQ(decorated(steps("Front"), "#car"), QStringList{"#car"});
    ASSERT_EQ(steps("Perspective").size(), 1u);
    EXPECT_TRUE(
        dynamic_cast<oxActivateCameraRenderStep&>(*steps("Perspective")[0]).targetsCamera());

    // A still track: one step per viewpoint in play order; an animated track is one job.
    const QStringList track = decorated(steps("Turntable"), "car");
    ASSERT_EQ(track.size(), 8);
    EXPECT_EQ(track.front(), "car_Turntable 1");
    EXPECT_EQ(track.back(), "car_Turntable 8");
    current().renderAnimation = true;
    EXPECT_EQ(decorated(steps("Turntable"), "#"), QStringList{"#"});

    // A missing view renders the current one.
    expectLog(oxLog::Error, "oxRenderSettingsPreset: Unable to find view 'Nowhere'.");
    EXPECT_EQ(decorated(steps("Nowhere"), "car"), QStringList{"car"});
}

TEST_F(RenderJobTest, VariantTuplesCrossTheChosenGroups)
{
    chooseVariantSets({"Paint Red", "Paint Blue"}, {"Rims Sport"});
    oxVariantSetRenderSettings tuples(record());
    ASSERT_EQ(tuples.getStepCount(), 2u);
    EXPECT_EQ(tuples.getStep(1)->decorateName("car"), "car_Paint Blue_Rims Sport");
    EXPECT_EQ(tuples.getExampleName("car"), "car_Paint Red_Rims Sport");
    EXPECT_EQ(tuples.getNamingScheme("car"), "car_$Paint_$Rims");

    // Nothing chosen: no tuple, so the job writes nothing.
    chooseVariantSets({}, {});
    EXPECT_EQ(oxVariantSetRenderSettings(record()).getStepCount(), 0u);
    EXPECT_EQ(oxVariantSetRenderSettings(record()).getExampleName("car"), "car");
    EXPECT_TRUE(collect(record()).isEmpty());

    // Switched off: one plain step whatever is chosen.
    chooseVariantSets({"Paint Red"}, {});
    current().variantSetsUsed = false;
    EXPECT_EQ(oxVariantSetRenderSettings(record()).getStepCount(), 1u);
    EXPECT_EQ(oxVariantSetRenderSettings(record()).getStep(0)->decorateName("car"), "car");
}

TEST_F(RenderJobTest, NamesComeInJobOrder)
{
    // A still track crosses with the tuples; its images go into the track's folder.
    current().view = "Turntable";
    chooseVariantSets({"Paint Red", "Paint Blue"}, {});
    const QStringList names = collect(record());
    ASSERT_EQ(names.size(), 16);
    EXPECT_EQ(QDir::cleanPath(names[0]), path("Turntable/car_Turntable 1_Paint Red.png"));
    EXPECT_EQ(QFileInfo(names[1]).fileName(), "car_Turntable 1_Paint Blue.png");
    EXPECT_EQ(QFileInfo(names[15]).fileName(), "car_Turntable 8_Paint Blue.png");

    // A name already in the track's folder gets no second level.
    current().filename = dir.file("Turntable/#.png");
    current().variantSetsUsed = false;
    EXPECT_EQ(QDir::cleanPath(collect(record()).value(2)), path("Turntable/Turntable 3.png"));

    // A movie is one file per step and tuple, whatever passes and frames there are.
    current().view.clear();
    current().filename = dir.file("spin.AVI");
    current().renderAnimation = true;
    current().exportType = 1;
    current().stopFrame = 5;
    current().renderpasses = true;
    current().depth_pass = true;
    chooseVariantSets({"Paint Red", "Paint Blue"}, {"Rims Sport"});
    EXPECT_EQ(fileNames(collect(record())),
              (QStringList{"spin_Paint Red_Rims Sport.AVI", "spin_Paint Blue_Rims Sport.AVI"}));
}

TEST_F(RenderJobTest, TimeStampGoesBeforeTheLastDot)
{
    auto settings = record();
    QString name = "/tmp/a.b/car.v2.png";
    insertTimestamp(settings, name);
    EXPECT_EQ(name, "/tmp/a.b/car.v2.png");
    settings->timeStamp = true;
    insertTimestamp(settings, name);
    const QRegularExpression stamped(R"(^/tmp/a\.b/car\.v2\(\d{8} \d\d-\d\d-\d\d\)\.png$)");
    EXPECT_TRUE(stamped.match(name).hasMatch()) << name.toStdString();
    // The people's form of a name drops the long path prefix wherever it stands.
    EXPECT_EQ(withoutLongPathPrefix("\\\\?\\c:\\a.png x\\\\?\\y"), "c:\\a.png xy");
}
