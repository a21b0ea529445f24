#pragma once

#include "oxImageMetaData.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

struct oxEncodeSettings;
struct oxRenderRequest;
struct oxRenderedImage;

/// Writes rendered images and movies to files. Pixels come from the current oxImageSource;
/// names come from getExportedImageFilenames, which is the one place that composes them:
///   still image             NAME.EXT
///   with passes             NAME.PASS.EXT, one file per pass (pass names: oxImagePasses)
///   sequence                NAME.FRAME.EXT, FRAME zero-padded to 4 digits (more when needed)
///   sequence with passes    NAME.PASS.FRAME.EXT
///   multi-layer (EXR, TIFF) NAME.EXT or NAME.FRAME.EXT holding a layer per pass
/// Every file is written under a temporary name in its folder and renamed when complete.
///
/// A cancel (cancel(), Ctrl-C in a headless run, Cancel in the GUI progress dialog) is seen
/// after each refinement round of a renderer that refines in rounds, else after each image. An
/// image stopped in the middle is not written at all; images finished before stay.
class oxImageWriter {
public:
    /// Preference keys (oxPreferences) naming the ICC profile files of profiles 3 and 4.
    static constexpr const char* monitorICCProfileKey = "Monitor ICC Profile File";
    static constexpr const char* imageICCProfileKey = "Image ICC Profile File";
    /// Preference key of the compression quality of written images, 0 to 100: JPEG's quality,
    /// and PNG's compression level from 9 (quality 0) to 0 (quality 100). -1 or no value: each
    /// format's usual compression (for PNG the level of osg::PNGImageFileType).
    static constexpr const char* qualityKey = "ImageExport quality";

    /// Where a running export stands: image (from 0) of images, rounds done of the image's
    /// refinement rounds.
    struct ProgressInfo {
        size_t image = 0;
        size_t images = 0;
        int round = 0;
        int rounds = 0;
    };
    using ProgressCallback = std::function<void(const ProgressInfo&)>;

    oxImageWriter();
    ~oxImageWriter();
    oxImageWriter(const oxImageWriter&) = delete;
    oxImageWriter& operator=(const oxImageWriter&) = delete;

    /// Every writer alive: the host reaches them all to cancel running exports at shutdown.
    static const std::vector<oxImageWriter*>& getAll();

    /// Puts the export switches back to their start values (new scene).
    void resetExportSettings();

    /// TIFF and PSD written with floating point channels.
    void setExportTiffHDR(bool on);
    bool getExportTiffHDR() const { return m_tiffHDR; }
    /// EXR written with 16-bit instead of 32-bit floats.
    void setExportExrHalf(bool on);
    bool getExportExrHalf() const { return m_exrHalf; }
    /// Render passes written as layers of one file where the format allows it.
    void setExportMultiLayer(bool on);
    bool getExportMultiLayer() const { return m_multiLayer; }

    /// The files of one still image. path keeps its form (separators, prefixes); passIds
    /// empty means the image alone, without a pass part.
    QStringList getExportedImageFilenames(QString path, const std::vector<unsigned int>& passIds,
                                          bool multiLayer) const;
    /// The files of an image sequence: frames start to stop (both included) by step; the sign
    /// of step is ignored and a step of 0 counts as 1.
    QStringList getExportedImageFilenames(QString path, const std::vector<unsigned int>& passIds,
                                          bool multiLayer, int start, int stop, int step) const;

    /// Renders and writes one image. ssFactor 0 none, 3 full supersampling, -1 keep; alpha
    /// 0, 1 or -1 keep; dpi -1 keep. passes: write the passes of the active pass override.
    /// False (and osg_image_file_handler_errno non-zero) on failure or cancel.
    bool exportImage(QString filename, int width, int height, int ssFactor, int alpha, float dpi,
                     bool passes, QString clusterHosts, bool unused, bool tonemapHDR);
    /// Renders and writes frames start..stop by step, the scene evaluated at each frame.
    /// objectId names the clip (node id) whose motion blurs; 0 or -1: the animation manager's
    /// motion blur object, if any.
    bool exportImages(QString filename, int width, int height, int fps, int start, int stop,
                      int ssFactor, int alpha, bool passes, int64_t objectId, QString clusterHosts,
                      int step, bool tonemapHDR);
    /// Renders frames start..stop into an AVI movie (Motion JPEG) at fps frames per second.
    bool exportAVI(QString filename, int width, int height, int fps, int start, int stop,
                   int ssFactor, int64_t objectId, QString clusterHosts, bool unused);

    /// Fast snapshots: Init fixes the size, each exportImageFast writes one image without
    /// passes, Terminate ends the series.
    bool exportImageFastInit(int width, int height, int supersampling);
    bool exportImageFast(QString filename);
    void exportImageFastTerminate();

    /// Seconds that the last image took to render.
    static double getLastRenderTime();
    /// Number of views per image: 1 (mono).
    int getStereoMode() const { return 1; }
    /// True when the format of filename holds all passes in one file (EXR, TIFF).
    static bool isMultilayerSupported(const QString& filename);
    /// True while oxImageOutStream redirects images away from files.
    static bool isStreamOutput();
    /// Writable file extensions, lower case.
    static std::set<std::string> getFormatsOpenSG();

    /// Background colour the renderer puts behind transparent pixels when alpha is off.
    void setAlphaColor(float red, float green, float blue);
    /// 0 none, 1 sRGB, 2 Adobe RGB (1998), 3 the monitor profile and 4 the image profile: the
    /// files the preferences monitorICCProfileKey and imageICCProfileKey name. An empty
    /// preference or a file that is no usable RGB profile gives one warning per export and
    /// images without a profile.
    void setICCProfile(int profileID);
    int getICCProfile() const { return m_iccProfile; }
    /// Which metadata groups are embedded (oxImageMetaData::Flags).
    void setMetaDataFlags(int flags);
    int getMetaDataFlags() const { return m_metaDataFlags; }
    oxImageMetaData* getMetaData() { return &m_metaData; }

    /// true: existing files are replaced without a question.
    void setNoOverwriteMessage(bool on);
    /// true: written images are not shown (GUI).
    void setNoShowImage(bool on);
    /// true: no progress is shown.
    void setNoProgress(bool on);
    /// True when the last export was cancelled (Ctrl-C headless, Cancel in the GUI, cancel()).
    bool wasExportCanceled() const { return m_canceled; }
    /// Asks a running export to stop after the refinement round it is rendering.
    void cancel() { m_cancelRequested = true; }
    /// Called on the export's thread after each refinement round of each image (renderers
    /// without rounds: never); it may call cancel(). Empty: none.
    void setProgressCallback(ProgressCallback callback)
    {
        m_progressCallback = std::move(callback);
    }

    /// Puts the quality preference (qualityKey) into settings for a file of that extension.
    static void applyQualityPreference(const std::string& extension, oxEncodeSettings& settings);

    /// The ICC profile bytes of the built-in profiles 1 and 2 ("" for any other id).
    static std::string iccProfileData(int profileID);
    /// The bytes of the ICC profile file of profile 3 or 4 as the preferences name it. "" with
    /// problem set when the preference is empty or the file is unreadable or no RGB profile.
    static std::string iccProfileFromPreferences(int profileID, std::string& file,
                                                 std::string& problem);

private:
    struct Job;
    bool run(Job& job);
    bool renderUnit(Job& job, int frame, const QStringList& names);
    bool writeUnit(Job& job, const oxRenderedImage& image, const QStringList& names);
    bool confirmOverwrite(const std::string& path);
    void showImage(const std::string& path);
    bool cancelRequested() const;

    bool m_tiffHDR = false;
    bool m_exrHalf = true;
    bool m_multiLayer = false;
    float m_alphaColor[3] = {1.0f, 1.0f, 1.0f};
    int m_iccProfile = 0;
    int m_metaDataFlags = 0;
    bool m_noOverwriteMessage = false;
    bool m_noShowImage = false;
    bool m_noProgress = false;
    bool m_canceled = false;
    bool m_cancelRequested = false;
    int m_alpha = 0;
    int m_supersampling = 0;
    float m_dpi = 72.0f;
    int m_fastWidth = 0;
    int m_fastHeight = 0;
    int m_fastSupersampling = 0;
    bool m_fastReady = false;
    oxImageMetaData m_metaData;
    ProgressCallback m_progressCallback;
};
