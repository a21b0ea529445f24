#pragma once

#include "oxRenderSettingsPreset.h"
#include "oxdObject.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// One named change of the scene in a render job. The plain step renders the scene as it
/// stands and leaves the file name alone.
class oxRenderStep {
public:
    virtual ~oxRenderStep() = default;
    /// The output base name with what this step adds to it.
    virtual QString decorateName(QString name) const { return name; }
    /// Puts the scene into the state of this step.
    virtual void apply() {}
};

using oxRenderStepSPtr = std::shared_ptr<oxRenderStep>;
using oxRenderSteps = std::vector<oxRenderStepSPtr>;

/// Activates a camera, or a viewpoint (whose name may go into the file name).
class oxActivateCameraRenderStep : public oxRenderStep {
public:
    explicit oxActivateCameraRenderStep(const oxdCameraNode& camera);
    oxActivateCameraRenderStep(const oxdViewpointNode& viewpoint, bool appendName);

    /// "#" as the whole name becomes the target's name; else with appendName the target's
    /// name follows after "_".
    QString decorateName(QString name) const override;
    void apply() override;

    bool targetsCamera() const { return isCamera; }
    bool appendsName() const { return appendName; }
    /// The camera or viewpoint this step activates.
    oxdNode getTarget() const;

private:
    oxdCameraNode camera;
    oxdViewpointNode viewpoint;
    bool isCamera = false;
    bool appendName = false;
};

/// Selects the variant sets of one tuple, one after the other.
class oxVariantSetRenderStep : public oxRenderStep {
public:
    oxVariantSetRenderStep(std::vector<std::string> names, bool useViewFromVariantSets);

    /// The tuple's names, each after "_".
    QString decorateName(QString name) const override;
    void apply() override;

    const std::vector<std::string>& getVariantSetNames() const { return variantSetNames; }
    bool usesViewFromVariantSets() const { return useViewFromVariantSets; }

private:
    std::vector<std::string> variantSetNames;
    bool useViewFromVariantSets = false;
};

/// The camera steps of a record's view.
class oxCameraRenderSettings {
public:
    explicit oxCameraRenderSettings(oxRenderSettingsPresetSPtr record);
    virtual ~oxCameraRenderSettings() = default;

    /// No step without a camera service or record, or for a view that is neither camera,
    /// viewpoint nor camera track (and for a still track without viewpoints). One plain step
    /// for the current view, for a missing view and for an animated track; one step per
    /// viewpoint, in play order, for a still track.
    oxRenderSteps getRenderSteps() const;

private:
    oxRenderSettingsPresetSPtr record;
};

/// The variant set tuples of a record: the crossing of the sets chosen in its groups.
class oxVariantSetRenderSettings {
public:
    explicit oxVariantSetRenderSettings(oxRenderSettingsPresetSPtr record);
    virtual ~oxVariantSetRenderSettings() = default;

    /// 1 without record or with variant sets off; else the number of tuples (0 when none is
    /// chosen).
    uint64_t getStepCount() const;
    /// A plain step without record, with variant sets off or for an empty tuple; else the
    /// step of tuple index.
    oxRenderStepSPtr getStep(uint64_t index) const;
    /// How names are built: name, "_", then "$" and the name of each group with chosen sets,
    /// joined by "_" ("" without record).
    QString getNamingScheme(const QString& name) const;
    /// The name that the first tuple gives.
    QString getExampleName(const QString& name) const;

private:
    oxRenderSettingsPresetSPtr record;
};

/// What walkRenderPlan does besides collecting the file names of the job.
using PlanFlags = uint32_t;
/// Marks a walk that only collects names.
constexpr PlanFlags PlanCollect = 1;
/// Each camera step is applied.
constexpr PlanFlags PlanActivateCamera = 2;
/// Each variant set step is applied.
constexpr PlanFlags PlanActivateVariantSet = 4;
/// The image writer exports each unit and its cancel state ends the walk.
constexpr PlanFlags PlanExport = 8;
/// Only the first tuple of each camera step.
constexpr PlanFlags PlanFirstTupleOnly = 16;
/// A render to file.
constexpr PlanFlags PlanRender = PlanActivateCamera | PlanActivateVariantSet | PlanExport;
/// The scene state of the job's first image (last camera step, first tuple).
constexpr PlanFlags PlanApplyFirst =
    PlanActivateCamera | PlanActivateVariantSet | PlanFirstTupleOnly;

/// With the record's time stamp on, puts "(yyyymmdd hh-mm-ss)" of the local time right before
/// the last "." of path.
void insertTimestamp(const oxRenderSettingsPresetSPtr& record, QString& path);

/// Logged when a job's file name is empty or its extension doesn't suit the export.
constexpr const char* kBadFilenameMessage = "Bad Filename, please choose a valid filename!";

/// The long path prefix "\\?\" that the host may put before a path.
constexpr const char* kLongPathPrefix = "\\\\?\\";
/// name with every long path prefix removed, as people and scripts see it.
QString withoutLongPathPrefix(QString name);

class oxImageWriter;

/// Whether record's file name can be written: not empty, and a movie name (".avi") exactly
/// when the job exports a movie. Logs kBadFilenameMessage when not.
bool validateOutputFilename(const oxRenderSettingsPreset& record);
/// The folder the job of record writes into, created when missing (a still of a camera track
/// writes into a folder of the track's name); empty, after an error line, when it can't be
/// created. Stream output creates nothing.
QString prepareOutputDirectory(const oxRenderSettingsPresetSPtr& record);

/// Walks the job of record: each camera step, inside it each variant set tuple, and appends
/// every file name the unit writes to list; flags say what else happens (PlanFlags), writer
/// names and exports the files, clusterHosts is handed to each export. With PlanExport the
/// result is whether the writer was cancelled, else false. A bad file name or a directory
/// that can't be created leaves list untouched.
bool walkRenderPlan(oxImageWriter& writer, const oxRenderSettingsPresetSPtr& record,
                    QStringList& list, PlanFlags flags, const QString& clusterHosts);

/// The files record's job writes, as people and scripts see them: the names of a collecting
/// walk, in walk order, without the long path prefix. Empty when the walk can't start (which
/// has been logged); the walk creates the output folder.
QStringList renderOutputFilenames(oxImageWriter& writer, const oxRenderSettingsPresetSPtr& record);
