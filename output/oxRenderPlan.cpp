#include "oxRenderPlan.h"

#include "oxFile.h"
#include "oxFileIO.h"
#include "oxImageWriter.h"
#include "oxLog.h"
#include "oxRenderAutomationVariantSetGroupsAccess.h"
#include "oxRenderTasks.h"
#include "oxSceneServices.h"
#include "oxVariants.h"

#include <QDateTime>
#include <QDir>
#include <QStringList>

namespace {

const char kMovieExtension[] = ".avi";

const QString& nameSeparator()
{
    static const QString separator = QStringLiteral("_");
    return separator;
}

// The view's node as a handle of its kind. Cameras and viewpoints share one core class, so
// they are told apart by the core itself; every other node goes by its core's type.
oxdNode viewObject(osg::NodePtr node)
{
    const oxdObjectManager* objects = oxdObjectManager::the();
    if (node->getCoreAs<osg::UberCameraBase>()) {
        const auto* uber = node->getCoreAs<osg::UberCamera>();
        const QMetaObject& type = uber && uber->isViewpoint() ? oxdViewpointNode::staticMetaObject
                                                              : oxdCameraNode::staticMetaObject;
        return objects->create(objects->getTypeId(type.className()), node);
    }
    return objects->createFromExternal(oxdObjectManager::getExternalTypeId(node), node);
}

template <typename Handle>
bool takeAs(const oxdNode& general, Handle& wanted)
{
    return general.isTypeOf(Handle::staticMetaObject) && wanted.assign(general);
}

} // namespace

oxActivateCameraRenderStep::oxActivateCameraRenderStep(const oxdCameraNode& camera)
    : camera(camera), isCamera(true), appendName(false)
{}

oxActivateCameraRenderStep::oxActivateCameraRenderStep(const oxdViewpointNode& viewpoint,
                                                       bool appendName)
    : viewpoint(viewpoint), isCamera(false), appendName(appendName)
{}

oxdNode oxActivateCameraRenderStep::getTarget() const
{
    if (isCamera)
        return camera;
    return viewpoint;
}

QString oxActivateCameraRenderStep::decorateName(QString name) const
{
    const QString targetName = QString::fromStdString(getTarget().getName());
    // "#" alone asks for the view's name instead of a base name, whatever appendName says.
    if (name == QLatin1String("#"))
        return targetName;
    if (appendName)
        return name + nameSeparator() + targetName;
    return name;
}

void oxActivateCameraRenderStep::apply()
{
    if (isCamera)
        camera.activate();
    else
        viewpoint.activate(true, false);
}

oxVariantSetRenderStep::oxVariantSetRenderStep(std::vector<std::string> names,
                                               bool useViewFromVariantSets)
    : variantSetNames(std::move(names)), useViewFromVariantSets(useViewFromVariantSets)
{}

QString oxVariantSetRenderStep::decorateName(QString name) const
{
    if (variantSetNames.empty())
        return name;
    QStringList parts;
    for (const std::string& setName : variantSetNames)
        parts << QString::fromStdString(setName);
    return name + nameSeparator() + parts.join(nameSeparator());
}

void oxVariantSetRenderStep::apply()
{
    for (const std::string& setName : variantSetNames)
        oxVariants::selectVariantSet(setName.c_str(), !useViewFromVariantSets);
}

oxCameraRenderSettings::oxCameraRenderSettings(oxRenderSettingsPresetSPtr record)
    : record(std::move(record))
{}

oxRenderSteps oxCameraRenderSettings::getRenderSteps() const
{
    if (!oxCameraService::the() || !record)
        return {};
    // One lookup, so that a missing view is reported once.
    const osg::NodePtr viewNode = record->getViewNode();
    if (!viewNode)
        return {std::make_shared<oxRenderStep>()};

    const oxdNode view = viewObject(viewNode);
    oxdCameraNode camera;
    if (takeAs(view, camera))
        return {std::make_shared<oxActivateCameraRenderStep>(camera)};
    oxdViewpointNode viewpoint;
    if (takeAs(view, viewpoint))
        return {std::make_shared<oxActivateCameraRenderStep>(viewpoint, false)};
    oxdCameraTrackNode track;
    if (!takeAs(view, track))
        return {};
    // An animated track is one job: its own animation moves the camera through the frames.
    if (record->renderAnimation)
        return {std::make_shared<oxRenderStep>()};
    oxRenderSteps steps;
    for (const oxdViewpointNode& trackViewpoint : track.getViewpoints())
        steps.push_back(std::make_shared<oxActivateCameraRenderStep>(trackViewpoint, true));
    return steps;
}

oxVariantSetRenderSettings::oxVariantSetRenderSettings(oxRenderSettingsPresetSPtr record)
    : record(std::move(record))
{}

uint64_t oxVariantSetRenderSettings::getStepCount() const
{
    // Only the switch counts here, not the view: a still camera track still crosses with the
    // tuples.
    if (!record || !record->variantSetsUsed)
        return 1;
    return oxRenderAutomationVariantSetGroupsAccess(record->variantSets).getVariantSetTupleCount();
}

oxRenderStepSPtr oxVariantSetRenderSettings::getStep(uint64_t index) const
{
    if (!record || !record->variantSetsUsed)
        return std::make_shared<oxRenderStep>();
    std::vector<std::string> tuple =
        oxRenderAutomationVariantSetGroupsAccess(record->variantSets).getVariantSetTuple(index);
    if (tuple.empty())
        return std::make_shared<oxRenderStep>();
    return std::make_shared<oxVariantSetRenderStep>(std::move(tuple),
                                                    record->usesVariantSetViewpoints());
}

QString oxVariantSetRenderSettings::getNamingScheme(const QString& name) const
{
    if (!record)
        return QString();
    QStringList groups;
    for (const oxRenderAutomationVariantSetGroup& group : record->variantSets) {
        if (group.hasActiveVariantSets())
            groups << QStringLiteral("$") + QString::fromStdString(group.getGroupName());
    }
    return name + nameSeparator() + groups.join(nameSeparator());
}

QString oxVariantSetRenderSettings::getExampleName(const QString& name) const
{
    const oxRenderStepSPtr step = getStep(0);
    return step ? step->decorateName(name) : QString();
}

void insertTimestamp(const oxRenderSettingsPresetSPtr& record, QString& path)
{
    if (!record || !record->timeStamp)
        return;
    const QString stamp =
        QDateTime::currentDateTime().toString(QStringLiteral("'('yyyyMMdd hh-mm-ss')'"));
    const int dot = path.lastIndexOf(QLatin1Char('.'));
    if (dot >= 0)
        path.insert(dot, stamp);
}

QString withoutLongPathPrefix(QString name)
{
    // Most names have none: don't search a million of them for nothing.
    if (!name.contains(QLatin1Char('?')))
        return name;
    return name.remove(QLatin1String(kLongPathPrefix), Qt::CaseSensitive);
}

bool validateOutputFilename(const oxRenderSettingsPreset& record)
{
    const QString name = QString::fromStdString(record.filename);
    const bool isMovieName = name.endsWith(QLatin1String(kMovieExtension), Qt::CaseInsensitive);
    if (name.isEmpty() || isMovieName != record.isMovieExport()) {
        oxLog::error("%s", kBadFilenameMessage);
        return false;
    }
    return true;
}

QString prepareOutputDirectory(const oxRenderSettingsPresetSPtr& record)
{
    if (!record)
        return QString();
    std::string directory = oxFile::getFilePath(oxFile::expandFilename(record->filename));
    if (record->isStillCameraTrackView()) {
        // All images of a still track go into a folder of the track's name, unless the file
        // name already points into it.
        const std::string trackName = oxNodeUtils::getName(record->getViewNode());
        if (QDir(QString::fromStdString(directory)).dirName().toStdString() != trackName)
            directory += "\\" + trackName;
    }
    const QString result = QString::fromStdString(directory);
    if (oxImageWriter::isStreamOutput())
        return result;
    if (!oxFile::exists(directory, false, false) && !oxFile::createPath(directory)) {
        oxLog::error("Unable to create directory %s", directory.c_str());
        return QString();
    }
    return result;
}

bool walkRenderPlan(oxImageWriter& writer, const oxRenderSettingsPresetSPtr& record,
                    QStringList& list, PlanFlags flags, const QString& clusterHosts)
{
    if (!record)
        return false;
    if (!validateOutputFilename(*record)) {
        oxLog::error("%s", kBadFilenameMessage);
        return false;
    }
    const QString directory = prepareOutputDirectory(record);
    if (directory.isEmpty())
        return false;
    const QString baseName = QString::fromStdString(oxFile::getBaseName(record->filename));

    const oxRenderSteps cameraSteps = oxCameraRenderSettings(record).getRenderSteps();
    const oxVariantSetRenderSettings variantSettings(record);
    const uint64_t tupleCount = variantSettings.getStepCount();
    const QString extension = QString::fromStdString(record->getFileExtension(true));
    const bool exporting = (flags & PlanExport) != 0;
    oxAnimManager* animations = oxAnimManager::the();
    // A task of a split job walks one unit, and of an image sequence one run of its frames.
    const oxRenderTask* task = (flags & PlanFirstTupleOnly) ? nullptr : currentRenderTask();
    const int64_t frameRuns = task ? renderTaskFrameRuns(*record, task->framesPerTask) : 1;
    const int64_t taskUnit = task ? task->index / frameRuns : -1;
    int64_t unit = -1;

    for (const oxRenderStepSPtr& cameraStep : cameraSteps) {
        const QString cameraName = cameraStep->decorateName(baseName);
        const int64_t firstUnit = unit + 1;
        if (task && (taskUnit < firstUnit || taskUnit >= firstUnit + int64_t(tupleCount))) {
            unit += int64_t(tupleCount);
            continue;
        }
        if (flags & PlanActivateCamera)
            cameraStep->apply();
        for (uint64_t tuple = 0; tuple < tupleCount; ++tuple) {
            if (task && ++unit != taskUnit)
                continue;
            const oxRenderStepSPtr variantStep = variantSettings.getStep(tuple);
            const QString name = variantStep->decorateName(cameraName);
            if (flags & PlanActivateVariantSet)
                variantStep->apply();
            QString path = directory + QLatin1Char('\\') + name + extension;
            path = oxFileIO::getLongWindowsPath(path);
            insertTimestamp(record, path);

            const int width = record->getPixelWidth();
            const int height = record->getPixelHeight();
            if (!record->renderAnimation) {
                list << writer.getExportedImageFilenames(path, record->getRenderPassIds(),
                                                         record->multiLayer);
                if (exporting)
                    writer.exportImage(path, width, height, record->ssFactor, record->alpha,
                                       float(record->getPixelsPerInch()),
                                       record->hasSelectedRenderPass(), clusterHosts, false,
                                       record->tonemap_hdr);
            } else {
                const oxRenderSettingsPreset::AnimationRange range = record->getAnimationRange();
                int start = int(range.firstFrame);
                int stop = int(range.lastFrame);
                const int step = int(range.step);
                if (task && !record->isMovieExport() &&
                    !renderTaskFrames(task->index % frameRuns, task->framesPerTask, start, stop,
                                      step))
                    continue;
                animations->setMotionBlurObjectID(range.animationId);
                if (!record->isMovieExport()) {
                    list << writer.getExportedImageFilenames(path, record->getRenderPassIds(),
                                                             record->multiLayer, start, stop, step);
                    if (exporting)
                        writer.exportImages(
                            path, width, height, record->fps, start, stop, record->ssFactor,
                            record->alpha, record->hasSelectedRenderPass(),
                            int64_t(range.animationId), clusterHosts, step, record->tonemap_hdr);
                } else {
                    // Frames and passes don't multiply a movie: it is one file.
                    list << path;
                    if (exporting)
                        writer.exportAVI(path, width, height, record->fps, start, stop,
                                         record->ssFactor, int64_t(range.animationId), clusterHosts,
                                         false);
                }
                animations->resetMotionBlurObjectID();
            }
            if (flags & PlanFirstTupleOnly)
                break;
            if (exporting && writer.wasExportCanceled())
                break;
        }
        if (exporting && writer.wasExportCanceled())
            break;
    }
    return exporting && writer.wasExportCanceled();
}

QStringList renderOutputFilenames(oxImageWriter& writer, const oxRenderSettingsPresetSPtr& record)
{
    QStringList list;
    walkRenderPlan(writer, record, list, PlanCollect, QString());
    for (QString& name : list)
        name = withoutLongPathPrefix(name);
    return list;
}
