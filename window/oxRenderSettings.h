#pragma once

#include "oxRenderJobMessage.h"
#include "oxRenderSettingsPreset.h"
#include "oxdObject.h"
#include "ui_oxRenderSettingsGUI.h"

#include <QMainWindow>
#include <QTimer>
#include <QVector>

#include <memory>

class QAbstractButton;
class QAction;
class QActionGroup;
class QMessageBox;
class QUndoCommand;
class oxVariantSetTree;
class oxImageWriter;
class oxMessage;
class oxMovieExport;
class oxPresetGUII;

/// Sets a busy flag for the life of the guard and puts its earlier value back on every way
/// out, so that a guard inside another leaves the flag set.
class oxScopedFlag {
public:
    explicit oxScopedFlag(bool& flag) : m_flag(flag), m_previous(flag) { m_flag = true; }
    ~oxScopedFlag() { m_flag = m_previous; }
    oxScopedFlag(const oxScopedFlag&) = delete;
    oxScopedFlag& operator=(const oxScopedFlag&) = delete;

private:
    bool& m_flag;
    const bool m_previous;
};

/// The Render Settings window: the form of every output and raytracing setting, docked into
/// the host by the module. There is one window at a time; instance() reaches it.
class oxRenderSettings : public QMainWindow, public Ui_oxRenderSettingsGUI {
    Q_OBJECT
public:
    /// title names the window in the host's window menu (windowAction); imageWriter is the
    /// module's writer, module the module that owns the window (may be null in tests).
    oxRenderSettings(const QString& title, oxImageWriter* imageWriter,
                     oxMovieExport* module = nullptr, QWidget* parent = nullptr);
    ~oxRenderSettings() override;

    /// The window while one exists, else null.
    static oxRenderSettings* instance();

    /// The window itself, as the host's module interface wants a widget.
    QWidget* getWidget() { return this; }
    oxImageWriter* getImageWriter() const { return imageWriter; }
    oxMovieExport* getMovieExport() const { return movieExport; }

    /// Entry of the window in the host's window menu.
    QAction* getWindowAction() const { return windowAction; }
    /// The tree of the chosen variant sets, in _variantTreeLayout.
    oxVariantSetTree* getVariantSetTree() const { return variantSetTree; }
    oxPresetGUII* getPresetGUI() const { return presetGUI; }
    QActionGroup* getPresetActionGroup() const { return presetActionGroup; }

    bool isGuiUpdateLocked() const { return guiUpdateLock; }

    /// The settings the window shows: the output fields live here, the raytracing fields are
    /// a copy of the host's services.
    oxRenderSettingsPreset& getCurrentPreset() { return currentPreset; }
    /// The user's named presets and the render job presets, in insertion order.
    oxRenderSettingsPresets& getPresets() { return presets; }
    oxRenderSettingsPresets& getRQPresets() { return rqPresets; }

    /// A new record frozen from the host's live values and the window's output fields.
    oxRenderSettingsPresetSPtr getCurrentRenderSettings();
    /// What a job record takes from the window beside the current record: the size preset
    /// shown, the statistics counts and the cluster hosts.
    oxRenderJobWindowValues renderJobWindowValues() const;
    /// The cluster hosts a job renders on: the hosts field while the cluster box is ticked,
    /// else empty.
    QString clusterHosts() const;

    /// The settings' life in the scene's project record and in the preferences: load and
    /// save the current record, or reset it to the default settings of the preferences.
    void loadSettings(oxMessage& project);
    void saveSettings(oxMessage& project);
    void loadDefaultSettings(bool reset);

    /// Merges preset into the current record, keeping of the current record what the bits of
    /// applyMode name, and pushes the result to the host's services in their fixed order;
    /// then the preset menu and the widgets follow.
    void applyPreset(const oxRenderSettingsPreset& preset,
                     oxRenderSettingsPreset::ApplyPresetMode applyMode);
    /// The first entry of list named name: its index (-1 when none) or the entry itself (null
    /// when none). An empty name is never found.
    int findPresetIndex(const std::string& name, const oxRenderSettingsPresets& list) const;
    oxRenderSettingsPresetSPtr findPreset(const std::string& name,
                                          const oxRenderSettingsPresets& list) const;
    /// Photometric mode of the scene: the headlight's unit and value and the default
    /// environment follow on; switchPhotometricFlag sets the flag in the record, the parameter
    /// store, the scene data and the materials.
    void applyHeadlightPhotometric(bool on);
    void switchPhotometricFlag(bool on);
    /// The scene's lights become physically based (or not) keeping their values, and the
    /// materials' incandescence and the environments follow the mode.
    void convertSceneToPhotometric(bool enable);
    /// Light values, incandescence, clamping and tone mapping times the display luminance
    /// (enable), or divided by it; environments then map photometric values.
    void rescaleSceneValues(bool enable);
    /// The default environment's luminance mapping for the mode.
    static void applyDefaultEnvironmentMapping(bool photometric);
    /// Moves the scene to a BRDF mode (0 separate diffuse and glossy, 1 with fresnel from the
    /// glossy colour, 2 energy preserving GGX): the render parameter always, the material
    /// system's class-wide mode and every material's BRDF bits when the class-wide mode
    /// differs. True when a material was rewritten. withProgress shows the walk over the
    /// materials.
    static bool switchBrdfMode(int mode, bool withProgress = false);
    /// The named callback "oxRenderSettings::loadSettings": output keys of a message into the
    /// current record of instance(); nothing without a window or for an empty message.
    static void loadSettingsCallback(oxMessage& message);

public slots:
    /// applyPreset keeping nothing.
    void applyPreset(const oxRenderSettingsPreset& preset);
    /// Applies the first user preset of that name, keeping the current file name, clip,
    /// variant sets and photometric values; an empty or unknown name does nothing.
    void applyPresetByName(const std::string& name);
    /// applyPresetByName with the text of the sending action.
    void applyPresetFromMenu();
    /// The default settings of the preferences, as from a new scene.
    void applyDefaultPreset();
    /// User presets by name: delete (the file is not written), delete several and write the
    /// file, rename (refused when the new name is taken), save the current settings under the
    /// active name or under a name the user enters.
    void deletePresetByName(const std::string& name);
    void deletePresets(const QVector<QString>& names);
    void renamePreset(const QString& oldName, const QString& newName);
    void savePreset();
    void savePresetAs();
    /// Shows the dialog that renames and deletes presets.
    void editPresets();
    /// Rebuilds the preset menu and writes the preset file.
    void updatePresets();

public:
    QTimer& getVariantGuiTimer() { return variantGuiTimer; }
    QTimer& getStatisticsTimer() { return statisticsTimer; }
    QTimer& getVariantListTimer() { return variantListTimer; }

public slots:
    /// Brings every widget back into line with the stores of its setting.
    void updateGUI();

    /// Render job presets (rqPresets), by name. addRQPreset saves the captured settings under
    /// name, replacing a preset of that name in place; deleteRQPreset removes the first of
    /// that name (an empty or unknown name does nothing); getRQPreset finds the first, or
    /// null; applyRQPresetByName applies it with its file name, clip and variant sets, leaves
    /// the current settings unnamed and emits renderQueuePresetApplied.
    void addRQPreset(const char* name);
    void deleteRQPreset(const char* name);
    oxRenderSettingsPresetSPtr getRQPreset(const char* name);
    void applyRQPresetByName(const char* name);
    /// Hands the render job record of the current settings to the render queue
    /// ("addRenderJobProxy").
    void buildRenderJobMessage();
    /// Takes the settings of a render job record back into the window and the renderer;
    /// keys the record lacks leave their settings alone.
    void receiveRenderSettingsFromRenderQueue(const oxMessage& job);
    /// Tells listeners of "oxRenderSettings::render" that a render or a hand-off started: the
    /// current record in the preset file's column form, and "sender" (what started it).
    void notifyRenderStarted(const char* sender);
    /// Brings the window's dock to the user.
    void triggeredWindowAction();
    /// Requests a refresh of the variant set display, the statistics and the read-back of the
    /// variant set tree; requests coalesce within one turn of the event loop.
    void updateVariantSetGUI();
    void updateRenderStatistics();
    void updateVariantSetList();

    /// Timer handlers of the three refresh requests.
    void refreshVariantSetGui();
    void refreshRenderStatistics();
    void readBackVariantSetTree();

    // The variant set selection, as the tree and the variant set module change it.

    /// Adds each named set to the entry of its group ("ungrouped" for a set without group),
    /// the entry created when missing; unknown names are skipped, names that can't be part of
    /// a file name are left out and shown in one warning box.
    void addVariantSets(const QStringList& names);
    /// Sets and groups of the variant set module, as dropped or handed over by the host.
    void addVariantSetObjects(const QList<oxdVariantSetBase>& objects);
    /// Appends every group of the module, in the module's order.
    void addAllVariantSetGroups();
    /// Takes the order of the groups from the tree after a group was dragged; nothing when the
    /// tree and the selection don't hold the same groups.
    void reorderVariantSetGroups();
    /// Drops the names (and then the groups) that the variant set module no longer has, each
    /// with an error line, then refreshes. Returns whether something was dropped.
    bool validateVariantSets();
    /// The module changed: validation, then a refresh of the display.
    void onVariantSetsChanged();
    /// A set or group of the module was renamed: the selection follows the new name.
    void variantSetRenamed(const std::string& oldName, const std::string& newName,
                           const std::string& groupName);
    void variantGroupRenamed(const std::string& oldName, const std::string& newName);
    /// Writes the selection to a configuration file, or replaces it with one read back
    /// (validated); the slots ask for the file. A file that can't be written or read leaves
    /// everything as it was, with an error line naming the file.
    void saveVariantSetConfiguration();
    void loadVariantSetConfiguration();
    bool saveVariantSetConfiguration(const QString& path);
    bool loadVariantSetConfiguration(const QString& path);
    /// The tick boxes "Render Variant Sets" and "Use View From Variant Set".
    void changedVariantSetsUsed(int state);
    void changedVariantSetViewpointsUsed(int state);

    /// Re-reads the host's parameters after the scene replaced them, and refreshes.
    void refreshHostParameters();
    /// Rebuilds _animationCB from the host's clips, keeping the chosen clip where it remains.
    void updateClipList();

    // Raytracing settings: each writes the host's store (some also mirror into the current
    // record) and refreshes the window, the render and the scene's modified state.
    void changedAAThresholdQuality(int index);
    void changedImageFilter(int index);
    void changedFilterWidth(double width);
    void changedFilterHeight(double height);
    void changedInteractiveReflectionDepth(int depth);
    void changedStillFrameReflectionDepth(int depth);
    void changedClamping(bool on);
    void changedReflectionClampValue(double value);
    void changedInteractiveQualityMode(int index);
    void changedInteractiveQuality(int quality);
    void changedStillFrameQualityMode(int index);
    void changedRenderMode(int index);
    void changedStillFrameQuality(int quality);
    void changedEnvironmentInteractiveQuality(int quality);
    void changedEnvironmentStillQuality(int quality);
    void changedPhotonDispersionQuality(int quality);
    void changedRenderer(int renderer);
    void changedPhotonMode(int mode);
    void changedPhotonTraceDepth(int depth);
    void changedPhotonNoiseReductionSteps(int steps);
    void changedPhotonUseAutomaticRadius(bool on);
    void changedPhotonLookupCount(int count);
    void changedFinalGatherRadius(double radius);
    void changedUseFinalGatherForGlossy(bool on);
    void changedIndirectPhotonRadius(double radius);
    void changedInteractivePhotonCount(int count);
    void changedStillFramePhotonCount(int count);
    void changedInteractiveFinalGatherQuality(int quality);
    void changedStillFrameFinalGatherQuality(int quality);
    void changedPhotonMapRefreshMode(int mode);
    void changedPhotonMapFreezeMode(bool on);
    void changedIlluminant(int illuminant);

    void changedUseInfiniteRendering(int on);
    void changedRenderingFinishMode(int mode);
    void changedSamplesThreshold(int threshold);
    void changedOverrideIBLQuality(bool on);
    void changedOverrideIlluminationMode(bool on);
    void changedOverrideReflectionQuality(bool on);
    void changedOverrideTraceDepth(bool on);
    void changedNURBSMode(bool on);
    void changedCostVisualizationMode(bool on);
    void changedLightOptimizationMode(bool on);
    void changedNumCoresLimit(int cores);
    void changedUseRaySplitting(bool on);
    void changedDenoiserType(int type);
    void changedDenoiserInput(int input);
    void changedDenoiseAlpha(bool on);
    void changedUseTwoSampleImportanceSampling(bool on);
    void changedUseTextureSharing(bool on);
    void changedUseGeometrySharing(bool on);
    void changedDenoiseFilter(int filter);
    void changedEnableDenoise(bool on);
    void changedDisplayColorspace(int index);
    void changedUseHighQualityTextureFiltering(bool on);
    void changedStillFrameSupersampling(int factor);
    void changedSpectralRaytracing(bool on);

    void changedImageSamples(int samples);
    void changedQualityPreset(int index);
    void changedRenderTime(int ignored);
    void changedRenderTime(int hours, int minutes, int seconds);
    void changedGamma(double gamma);
    void changedDisplayLuminance(double value);
    void changedSim2LuminanceMapping(double value);
    void changedDynamicTonemapping(bool on);
    void changedDithering(bool on);
    void changedHistogramEnabled(bool on);
    void changedHistogramLogScale(bool on);
    void changedHistogramRedEnabled(bool on);
    void changedHistogramGreenEnabled(bool on);
    void changedHistogramBlueEnabled(bool on);
    void changedHistogramLumEnabled(bool on);

    // Output settings: they live in the current record only.
    void changedUseTimestamp(bool on);
    void changedFilename();
    void changedRenderAnimation(bool on);
    void changedUseClipRange(bool on);
    void changedAnimationType(int type);
    void changedAnimationFormat(int format);
    void changedClip(const QString& clip);
    void changedStart(int frame);
    void changedStop(int frame);
    void changedFrameStep(int step);
    void changedFPS(int fps);
    void changedSSFactor(int index);
    void changedTonemapHDR(bool on);
    void changedAlpha(bool on);
    void changedBackgroundColor(float r, float g, float b);
    void changedTiffHDR(bool on);
    void changedExrHalf(bool on);
    void changedICCProfile(int index);
    void changedPremultiply(bool on);
    void changedUseMultiLayer(bool on);
    void changedEmbedCamera(bool on);
    void changedEmbedNodeVisibilities(bool on);
    void changedEmbedSwitchNodeChoices(bool on);
    void changedEmbedSwitchMaterialChoices(bool on);
    void changedEmbedRenderSettings(bool on);
    void changedEmbedAll(bool on);
    void changedExportRenderpasses(bool on);
    /// The flag of one render pass; the pass check boxes of the pass table call it.
    void changedExportPass(PassFlag flag, bool on);
    /// One slot per pass flag, as the pass table names them, so that a pass can be set by
    /// the slot's name (changedExportPass with that row's flag).
    void changedExportBeautyPass(bool on);
    void changedExportDiffuseIBLPass(bool on);
    void changedExportDiffuseLightPass(bool on);
    void changedExportDiffuseIndirectPass(bool on);
    void changedExportGlossyIBLPass(bool on);
    void changedExportGlossyLightPass(bool on);
    void changedExportGlossyIndirectPass(bool on);
    void changedExportSpecularIBLPass(bool on);
    void changedExportTranslucencyPass(bool on);
    void changedExportIncandescencePass(bool on);
    void changedExportAlbedoPass(bool on);
    void changedExportOcclusionPass(bool on);
    void changedExportNormalPass(bool on);
    void changedExportCameraNormalPass(bool on);
    void changedExportDepthPass(bool on);
    void changedExportCryptoObjectPass(bool on);
    void changedExportCryptoMaterialPass(bool on);
    void changedExportMaterialIDPass(bool on);
    void changedExportMaskPass(bool on);
    void changedExportPositionPass(bool on);
    void changedExportViewVectorPass(bool on);
    void changedExportDiffuseColorPass(bool on);
    void changedExportGlossyColorPass(bool on);
    void changedExportSpecularColorPass(bool on);
    void changedExportTranslucencyColorPass(bool on);
    void changedExportTransparencyColorPass(bool on);
    void changedExportBackgroundColorPass(bool on);
    void changedExportDiffuseIBLIlluminationPass(bool on);
    void changedExportDiffuseLightIlluminationPass(bool on);
    void changedExportDiffuseIndirectIlluminationPass(bool on);
    void changedExportGlossyIBLIlluminationPass(bool on);
    void changedExportGlossyLightIlluminationPass(bool on);
    void changedExportGlossyIndirectIlluminationPass(bool on);
    void changedExportTranslucencyIBLIlluminationPass(bool on);
    void changedExportTranslucencyLightIlluminationPass(bool on);
    void changedExportTranslucencyIndirectIlluminationPass(bool on);
    void changedExportSpecularReflectionPass(bool on);
    void changedExportFogPass(bool on);
    void changedExportLensFlarePass(bool on);
    void changedExportFrontplatePass(bool on);
    void changedExportBackplatePass(bool on);
    void changedExportSpecularLightPass(bool on);

    /// _view changed: a choice from its menu becomes the record's view as a step on the undo
    /// stack; while the chooser follows the scene, the view is set directly.
    void changedView(const QString& text, const QVariant& data);
    /// Cameras, viewpoints or camera tracks came or went: _view re-reads its entry and the
    /// statistics are refreshed; other nodes change nothing.
    void cameraNodesChanged(const QList<oxdNode>& nodes);
    /// An undo or redo on the host's stack that deleted or restored nodes: _view shows again
    /// an entry that a deletion took away.
    void undoneOrRedone(const QUndoCommand* command);

    /// _enable_PBParameters: asks, then switches the scene's photometric mode, converting the
    /// scene's values unless the user ticks not to; Cancel puts the check box back.
    void changedPBParameters(bool toggled);

public:
    /// The question of the photometric switch, for enabling or disabling: a warning with the
    /// check box "Do not convert values ..." and the buttons accept and "Cancel".
    std::unique_ptr<QMessageBox> createPhotometricQuestion(bool enable);
public slots:
    /// _brdf_mode: the scene moves to the chosen mode (with progress unless a script runs).
    void changedBrdfMode(int mode);

    // Kept for scripts and old connections; they do nothing.
    void changedAdaptiveAASamples(int samples);
    void changedCausticPhotonRadius(double radius);
    void clickedMore();

    // Snapshot overlays of the render view; no refresh, no scene change.
    void changedSnapshotFrame(bool on);
    void changedSnapshotRuleOfThirds(bool on);
    void changedSnapshotInnerFrameEnable(bool on);
    void changedSnapshotRenderRegionFrameEnabled(bool on);
    void changedInnerFrame(int ignored);

    // Image size, print resolution and render region.
    void changedImageSize(int index);
    void changedPixelWidth(double width);
    void changedPixelHeight(double height);
    void changedPrintWidth(double width);
    void changedPrintHeight(double height);
    void changedDpi(int dpi);
    void changedUseRenderRegion(bool on);
    void changedRegionStartX(int x);
    void changedRegionStartY(int y);
    void changedRegionEndX(int x);
    void changedRegionEndY(int y);
    void changedUseViewportRegion(bool on);

public:
    /// Sets the image size in pixels and the print resolution; the print size follows.
    void setPixelResolution(float width, float height, float dpi);
    /// Sets the print size in centimetres and the print resolution; the pixels follow.
    void setPrintResolution(float width, float height, float dpi);
    /// Selects the _imageSizes entry that matches the current size, then hands the frames
    /// that depend on the size to the render view.
    void syncImageSizeAndFrames();
    void selectImageSizeEntry();
    /// Moves the render region with a change of the image size from old to new (nothing while
    /// regionSyncLock is set).
    void rescaleRenderRegion(float oldWidth, float oldHeight, float newWidth, float newHeight);
    /// Takes the region drawn in the render view over, when the region follows the view.
    void adoptViewportRegion();
    /// Hands the record's region to the render view.
    void applyRenderRegion();
    bool isRegionSyncLocked() const { return regionSyncLock; }
    /// Pops up the menu of named sizes at position; a chosen size gives its width and height
    /// in pixels and its dpi. "Custom ..." asks for millimetres and dpi. False when nothing
    /// was chosen.
    static bool showImageSizeMenu(QWidget* parent, const QPoint& position, int& width, int& height,
                                  double& dpi);

    // Output settings as scripts reach them: by value and by name instead of through widgets.

    /// Stores value in field of the current record and refreshes the form, statistics
    /// included: a script's plain output setter.
    template <typename T>
    void setOutputSetting(T oxRenderSettingsPreset::*field, const T& value)
    {
        currentPreset.*field = value;
        updateGUI();
        updateRenderStatistics();
    }
    /// Renders through viewNode: its unique path below the camera pool's root goes into the
    /// record (empty for null, the current view); then the form is refreshed.
    void setView(osg::NodePtr viewNode);
    /// The record's view node (null for the current view), and the node _view shows (null
    /// for "Current" or a node that is gone).
    osg::NodePtr getCurrentView() const;
    osg::NodePtr getSelectedViewNode() const;
    /// Puts path into the record as its view, and refreshes the form and the statistics.
    void setViewPath(const std::string& path);
    /// setView with the first node of that name below the camera pool's root; a name no node
    /// bears gives the current view.
    void setViewByName(const std::string& viewName);
    /// The name of the record's view node; the view chooser's text ("Current") when the record
    /// has no view or it can't be found.
    std::string getViewName() const;
    /// Appends a variant set group of that name unless the record has one; false, after an
    /// error line, when the name is reserved or ambiguous in the scene's variant set module.
    bool addVariantSetGroup(const std::string& groupName);
    /// The chosen sets of a group: replaced (the group added when missing; nothing when that
    /// is refused) and read (empty for an unknown group).
    void setActiveVariantSets(const std::string& groupName, const std::vector<std::string>& names);
    std::vector<std::string> getActiveVariantSets(const std::string& groupName) const;
    /// Removes every group of that name, or all groups, keeping the order of the others.
    void removeVariantSetGroup(const std::string& groupName);
    void clearVariantSetGroups();
    /// The group names in the record's order.
    std::vector<std::string> getVariantSetGroupNames() const;
    /// Clears all pass flags, then sets those of the known names (scriptName of the pass
    /// table; unknown names are skipped); refreshes also for an empty list.
    void setRenderPasses(const std::vector<std::string>& names);
    /// The names of the set pass flags, in the order scripts know them.
    std::vector<std::string> getRenderPasses() const;
    /// The names of the scene's clips, in order.
    static std::vector<std::string> getClipNames();

signals:
    /// A render queue job's settings were applied to the window.
    void renderQueuePresetApplied();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void setupWidgets();
    void fitTabsToContents();
    /// Merge into the current record and push, without lock or refresh.
    void mergeAndPush(const oxRenderSettingsPreset& preset, int applyMode);
    /// Captures the settings under name into list, in place of an entry of that name.
    void saveCurrentSettingsAs(const std::string& name, oxRenderSettingsPresets& list);
    /// Rebuilds _presetsMenu and the preset dialog's list from presets.
    void updatePresetMenu();
    /// The BRDF mode a scene's settings bring, against the current one as reference.
    int decideBrdfMode(const oxMessage& project, int reference);
    void connectBindings();
    void disconnectBindings();
    /// The widgets of one tab: their connections and their pass of updateGUI.
    void connectOutputBindings();
    void connectRaytracingBindings();
    void connectQualityBindings();
    void connectDisplayBindings();
    void connectImageSize();
    void connectVariantSets();
    void connectView();
    void disconnectVariantSets();
    /// The warning box for variant set names that can't be part of a file name; nothing for an
    /// empty list.
    void showBadVariantSetNames(const QStringList& names);
    /// The example file name and naming scheme under the tree.
    void updateVariantSetExampleLabels();
    void fillImageSizes();
    void updateOutputWidgets();
    void updateRaytracingWidgets();
    void updateQualityWidgets();
    void updatePhotonWidgets();
    void updateDisplayWidgets();
    /// Runs each host parameter that a scene replaced through its setter again.
    void reassertHostParameters();
    /// The live refresh: updateGUI, a render update and the scene marked modified.
    void refreshLive();
    /// Sends all ten post-processing flags, the checked state of the widget that just changed
    /// replaced by on.
    void sendPostprocessingFlags(QAbstractButton* changed, bool on);
    void setMetaDataFlag(int mask, bool on);
    /// The end of a region that sat on the image's edge follows the edge.
    void followRegionEndX(float oldWidth, float newWidth);
    void followRegionEndY(float oldHeight, float newHeight);
    /// The region's corners mapped from an image of old size onto one of new size, about
    /// the centre.
    void mapRegionToImage(int oldW, int oldH, int newW, int newH, int& x1, int& y1, int& x2,
                          int& y2) const;

    // In the order the window's data are laid out; see the constructor for the order of
    // construction.
    oxVariantSetTree* variantSetTree = nullptr;
    QAction* windowAction = nullptr;
    oxMovieExport* movieExport = nullptr;
    oxImageWriter* imageWriter = nullptr;
    bool regionSyncLock = false;
    bool guiUpdateLock = false;
    /// Set while _view follows the scene rather than the user.
    bool viewFollowLock = false;
    oxRenderSettingsPreset currentPreset;
    oxRenderSettingsPresets presets;
    oxRenderSettingsPresets rqPresets;
    oxPresetGUII* presetGUI = nullptr;
    QActionGroup* presetActionGroup = nullptr;
    QTimer variantGuiTimer;
    QTimer statisticsTimer;
    QTimer variantListTimer;
};

/// Registers the window's named callback "oxRenderSettings::loadSettings" (again, without
/// doubling, when it is there) and removes it.
void registerRenderSettingsCallbacks();
void unregisterRenderSettingsCallbacks();
