#include "oxImageWriter.h"

#include "oxCallTrace.h"
#include "oxController.h"
#include "oxCryptomatte.h"
#include "oxDisplayCurve.h"
#include "oxExportProgress.h"
#include "oxFile.h"
#include "oxImageEncoder.h"
#include "oxImageFileNames.h"
#include "oxImageOutStream.h"
#include "oxImagePasses.h"
#include "oxImageRenderWidget.h"
#include "oxImageSource.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxMovieWriter.h"
#include "oxPathText.h"
#include "oxPreferences.h"

#include <lcms2.h>

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPixmap>

#include <algorithm>
#include <cstring>
#include <chrono>
#include <new>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

using namespace oxImageFileNames;

namespace {
std::vector<oxImageWriter*>& writers()
{
    // Never destroyed: a writer that its owner leaves alive stays reachable to the very end.
    static auto* all = new std::vector<oxImageWriter*>();
    return *all;
}

double& lastRenderTime()
{
    static double seconds = 0.0;
    return seconds;
}

// Ctrl-C during a headless export: the handler only raises the flag; the export looks at it
// after each refinement round and each image, so no file is ever left half written.
volatile std::sig_atomic_t g_interrupted = 0;
extern "C" void onInterrupt(int) { g_interrupted = 1; }

class InterruptGuard {
public:
    explicit InterruptGuard(bool install) : m_installed(install)
    {
        g_interrupted = 0;
        if (!m_installed)
            return;
        struct sigaction action {};
        action.sa_handler = onInterrupt;
        sigemptyset(&action.sa_mask);
        sigaction(SIGINT, &action, &m_previous);
    }
    ~InterruptGuard()
    {
        if (m_installed)
            sigaction(SIGINT, &m_previous, nullptr);
    }
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

private:
    bool m_installed;
    struct sigaction m_previous {};
};

std::vector<unsigned> activePassIds()
{
    const std::vector<bool>& flags = oxImageRenderWidget::getActiveRenderPasses();
    std::vector<unsigned> ids;
    for (size_t id = 0; id < flags.size() && id < oxImagePasses::count; ++id)
        if (flags[id])
            ids.push_back(unsigned(id));
    return ids;
}

// File names as bytes: a name that isn't UTF-8 keeps its bytes (oxPathText::toQString).
std::string pathBytes(const QString& path) { return oxPathText::fromQString(path); }

std::string buildProfile(int profileID)
{
    cmsHPROFILE profile = nullptr;
    if (profileID == 1) {
        profile = cmsCreate_sRGBProfile();
    } else if (profileID == 2) {
        const cmsCIExyY white = {0.3127, 0.3290, 1.0};
        const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1.0}, {0.21, 0.71, 1.0}, {0.15, 0.06, 1.0}};
        cmsToneCurve* gamma = cmsBuildGamma(nullptr, 563.0 / 256.0);
        cmsToneCurve* curves[3] = {gamma, gamma, gamma};
        profile = cmsCreateRGBProfile(&white, &primaries, curves);
        cmsFreeToneCurve(gamma);
        if (profile) {
            cmsMLU* description = cmsMLUalloc(nullptr, 1);
            cmsMLUsetASCII(description, "en", "US", "Adobe RGB (1998)");
            cmsWriteTag(profile, cmsSigProfileDescriptionTag, description);
            cmsMLUfree(description);
        }
    }
    if (!profile)
        return std::string();
    cmsUInt32Number size = 0;
    std::string data;
    if (cmsSaveProfileToMem(profile, nullptr, &size) && size > 0) {
        data.resize(size);
        if (!cmsSaveProfileToMem(profile, &data[0], &size))
            data.clear();
    }
    cmsCloseProfile(profile);
    return data;
}
} // namespace

struct oxImageWriter::Job {
    QString filename;
    int width = 0;
    int height = 0;
    std::vector<unsigned> passIds;
    bool sequence = false;
    std::vector<int> frames;
    bool movie = false;
    int fps = 25;
    bool alpha = false;
    bool tonemapHDR = false;
    int64_t objectId = -1;
    std::string iccProfile;
    std::vector<float> displayCurve; // of the profile written, for integer formats
    size_t index = 0;                // of the frame being rendered
    bool stopped = false;            // a cancel was heard during the running image
    std::unique_ptr<oxExportProgress> progress;
    std::unique_ptr<oxMovieWriter> movieWriter;
};

oxImageWriter::oxImageWriter() { writers().push_back(this); }

oxImageWriter::~oxImageWriter()
{
    auto& all = writers();
    all.erase(std::remove(all.begin(), all.end(), this), all.end());
}

const std::vector<oxImageWriter*>& oxImageWriter::getAll() { return writers(); }

void oxImageWriter::resetExportSettings()
{
    oxCallTrace::record("oxImageWriter::resetExportSettings");
    m_tiffHDR = false;
    m_exrHalf = true;
    m_multiLayer = false;
}

void oxImageWriter::setExportTiffHDR(bool on)
{
    oxCallTrace::record("oxImageWriter::setExportTiffHDR", on ? "true" : "false");
    m_tiffHDR = on;
}

void oxImageWriter::setExportExrHalf(bool on)
{
    oxCallTrace::record("oxImageWriter::setExportExrHalf", on ? "true" : "false");
    m_exrHalf = on;
}

void oxImageWriter::setExportMultiLayer(bool on)
{
    oxCallTrace::record("oxImageWriter::setExportMultiLayer", on ? "true" : "false");
    m_multiLayer = on;
}

QStringList oxImageWriter::getExportedImageFilenames(QString path,
                                                     const std::vector<unsigned int>& passIds,
                                                     bool multiLayer) const
{
    QStringList names;
    UnitNamer(path, passIds, multiLayer).appendNames(names, false, 0);
    return names;
}

QStringList oxImageWriter::getExportedImageFilenames(QString path,
                                                     const std::vector<unsigned int>& passIds,
                                                     bool multiLayer, int start, int stop,
                                                     int step) const
{
    const UnitNamer namer(path, passIds, multiLayer);
    const std::vector<int> frames = frameList(start, stop, step);
    QStringList names;
    names.reserve(int(frames.size() * namer.filesPerUnit()));
    for (int frame : frames)
        namer.appendNames(names, true, frame);
    return names;
}

bool oxImageWriter::isMultilayerSupported(const QString& filename)
{
    QString stem, extension;
    splitExtension(filename, stem, extension);
    return !extension.isEmpty() && oxImageEncoder::isMultiLayerFormat(pathBytes(extension.mid(1)));
}

bool oxImageWriter::isStreamOutput() { return oxImageOutStream::isActive(); }

std::set<std::string> oxImageWriter::getFormatsOpenSG()
{
    const std::vector<std::string> list = oxImageEncoder::writableExtensions();
    return std::set<std::string>(list.begin(), list.end());
}

double oxImageWriter::getLastRenderTime() { return lastRenderTime(); }

void oxImageWriter::setAlphaColor(float red, float green, float blue)
{
    oxCallTrace::record("oxImageWriter::setAlphaColor", std::to_string(red) + "," +
                                                            std::to_string(green) + "," +
                                                            std::to_string(blue));
    m_alphaColor[0] = red;
    m_alphaColor[1] = green;
    m_alphaColor[2] = blue;
}

void oxImageWriter::setICCProfile(int profileID)
{
    oxCallTrace::record("oxImageWriter::setICCProfile", std::to_string(profileID));
    m_iccProfile = profileID;
}

void oxImageWriter::setMetaDataFlags(int flags)
{
    oxCallTrace::record("oxImageWriter::setMetaDataFlags", std::to_string(flags));
    m_metaDataFlags = flags;
}

void oxImageWriter::setNoOverwriteMessage(bool on)
{
    oxCallTrace::record("oxImageWriter::setNoOverwriteMessage", on ? "true" : "false");
    m_noOverwriteMessage = on;
}

void oxImageWriter::setNoShowImage(bool on)
{
    oxCallTrace::record("oxImageWriter::setNoShowImage", on ? "true" : "false");
    m_noShowImage = on;
}

void oxImageWriter::setNoProgress(bool on)
{
    oxCallTrace::record("oxImageWriter::setNoProgress", on ? "true" : "false");
    m_noProgress = on;
}

std::string oxImageWriter::iccProfileData(int profileID)
{
    static const std::string srgb = buildProfile(1);
    static const std::string adobe = buildProfile(2);
    return profileID == 1 ? srgb : profileID == 2 ? adobe : std::string();
}

void oxImageWriter::applyQualityPreference(const std::string& extension, oxEncodeSettings& settings)
{
    int quality = -1;
    const boost::any& value = oxPreferences::getData().get(qualityKey);
    if (value.type() == typeid(int))
        quality = boost::any_cast<int>(value);
    if (quality < 0)
        return;
    quality = std::min(quality, 100);
    const std::string format = oxImageEncoder::formatOf(extension);
    if (format == "png")
        settings.pngCompression = ((100 - quality) * 9 + 50) / 100;
    else
        settings.quality = std::max(quality, 1);
}

std::string oxImageWriter::iccProfileFromPreferences(int profileID, std::string& file,
                                                     std::string& problem)
{
    file.clear();
    problem.clear();
    const char* key = profileID == 3   ? monitorICCProfileKey
                      : profileID == 4 ? imageICCProfileKey
                                       : nullptr;
    if (!key) {
        problem = "the profile id " + std::to_string(profileID) + " names no profile file";
        return std::string();
    }
    // The preference page may store the name as either string type.
    const boost::any& value = oxPreferences::getData().get(key);
    if (const auto* text = boost::any_cast<std::string>(&value))
        file = *text;
    else if (const auto* qtext = boost::any_cast<QString>(&value))
        file = pathBytes(*qtext);
    else if (!value.empty()) {
        problem = std::string("the preference \"") + key + "\" holds no file name";
        return std::string();
    }
    if (file.empty()) {
        problem = std::string("the preference \"") + key + "\" names no ICC profile file";
        return std::string();
    }
    std::string data;
    const std::string path = oxFile::expandFilename(file);
    if (!oxFile::exists(path, true) || !oxFile::readAll(path, data)) {
        problem = "it can't be read";
        return std::string();
    }
    cmsHPROFILE profile = cmsOpenProfileFromMem(data.data(), cmsUInt32Number(data.size()));
    if (!profile) {
        problem = "it is no ICC profile";
        return std::string();
    }
    // Every image this writer embeds a profile in is RGB.
    const bool rgb = cmsGetColorSpace(profile) == cmsSigRgbData;
    cmsCloseProfile(profile);
    if (!rgb) {
        problem = "it is no RGB profile";
        return std::string();
    }
    return data;
}

bool oxImageWriter::exportImage(QString filename, int width, int height, int ssFactor, int alpha,
                                float dpi, bool passes, QString clusterHosts, bool unused,
                                bool tonemapHDR)
{
    (void)clusterHosts; // this host renders locally
    (void)unused;
    oxCallTrace::record("oxImageWriter::exportImage",
                        pathBytes(filename) + "," + std::to_string(width) + "," +
                            std::to_string(height) + "," + std::to_string(ssFactor) + "," +
                            std::to_string(alpha) + "," + std::to_string(dpi) + "," +
                            (passes ? "true" : "false"));
    if (ssFactor != -1)
        m_supersampling = ssFactor > 0 ? 3 : 0;
    if (alpha != -1)
        m_alpha = alpha;
    if (dpi != -1.0f)
        m_dpi = dpi;
    Job job;
    job.filename = filename;
    job.width = width;
    job.height = height;
    job.passIds = passes ? activePassIds() : std::vector<unsigned>();
    job.frames = {0};
    job.alpha = m_alpha != 0;
    job.tonemapHDR = tonemapHDR;
    return run(job);
}

bool oxImageWriter::exportImages(QString filename, int width, int height, int fps, int start,
                                 int stop, int ssFactor, int alpha, bool passes, int64_t objectId,
                                 QString clusterHosts, int step, bool tonemapHDR)
{
    (void)clusterHosts;
    oxCallTrace::record("oxImageWriter::exportImages",
                        pathBytes(filename) + "," + std::to_string(start) + "," +
                            std::to_string(stop) + "," + std::to_string(step));
    if (ssFactor != -1)
        m_supersampling = ssFactor > 0 ? 3 : 0;
    if (alpha != -1)
        m_alpha = alpha;
    Job job;
    job.filename = filename;
    job.width = width;
    job.height = height;
    job.fps = fps;
    job.passIds = passes ? activePassIds() : std::vector<unsigned>();
    job.sequence = true;
    job.frames = frameList(start, stop, step);
    job.alpha = m_alpha != 0;
    job.objectId = objectId;
    job.tonemapHDR = tonemapHDR;
    return run(job);
}

bool oxImageWriter::exportAVI(QString filename, int width, int height, int fps, int start, int stop,
                              int ssFactor, int64_t objectId, QString clusterHosts, bool unused)
{
    (void)clusterHosts;
    (void)unused;
    oxCallTrace::record("oxImageWriter::exportAVI",
                        pathBytes(filename) + "," + std::to_string(fps) + "," +
                            std::to_string(start) + "," + std::to_string(stop));
    if (ssFactor != -1)
        m_supersampling = ssFactor > 0 ? 3 : 0;
    Job job;
    job.filename = filename;
    job.width = width;
    job.height = height;
    job.fps = fps;
    job.movie = true;
    job.frames = frameList(start, stop, 1);
    job.objectId = objectId;
    return run(job);
}

bool oxImageWriter::exportImageFastInit(int width, int height, int supersampling)
{
    oxCallTrace::record("oxImageWriter::exportImageFastInit", std::to_string(width) + "," +
                                                                  std::to_string(height) + "," +
                                                                  std::to_string(supersampling));
    if (width <= 0 || height <= 0) {
        oxLog::error("Image writer: fast snapshots need a positive size, not %dx%d.", width,
                     height);
        m_fastReady = false;
        return false;
    }
    m_fastWidth = width;
    m_fastHeight = height;
    m_fastSupersampling = supersampling > 0 ? 3 : 0;
    m_fastReady = true;
    return true;
}

bool oxImageWriter::exportImageFast(QString filename)
{
    oxCallTrace::record("oxImageWriter::exportImageFast", pathBytes(filename));
    if (!m_fastReady) {
        osg_image_file_handler_errno = 1;
        oxLog::error("Image writer: can't write '%s': fast snapshots were not initialised "
                     "(exportImageFastInit).",
                     pathBytes(filename).c_str());
        return false;
    }
    const int saved = m_supersampling;
    m_supersampling = m_fastSupersampling;
    Job job;
    job.filename = filename;
    job.width = m_fastWidth;
    job.height = m_fastHeight;
    job.frames = {0};
    job.alpha = m_alpha != 0;
    const bool ok = run(job);
    m_supersampling = saved;
    return ok;
}

void oxImageWriter::exportImageFastTerminate()
{
    oxCallTrace::record("oxImageWriter::exportImageFastTerminate");
    m_fastReady = false;
}

bool oxImageWriter::cancelRequested() const { return m_cancelRequested || g_interrupted != 0; }

bool oxImageWriter::confirmOverwrite(const std::string& path)
{
    if (m_noOverwriteMessage || !oxFile::exists(path, true))
        return true;
    if (oxController::isNoGUI()) {
        oxLog::info("Image writer: overwriting '%s'.", path.c_str());
        return true;
    }
    const auto answer = QMessageBox::question(
        nullptr, QObject::tr("Overwrite"),
        QObject::tr("The file '%1' exists already. Overwrite it?").arg(oxPathText::toQString(path)),
        QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer == QMessageBox::Yes)
        return true;
    oxLog::info("Image writer: kept the existing file '%s'.", path.c_str());
    return false;
}

void oxImageWriter::showImage(const std::string& path)
{
    if (m_noShowImage || oxController::isNoGUI() ||
        !qobject_cast<QApplication*>(QCoreApplication::instance()))
        return;
    // From the bytes: Qt would open a name that isn't UTF-8 under a different name.
    std::string data;
    QPixmap pixmap;
    if (oxFile::readAll(path, data))
        pixmap.loadFromData(reinterpret_cast<const uchar*>(data.data()), uint(data.size()));
    if (pixmap.isNull())
        return; // a format Qt can't show (EXR, HDR...): nothing to display
    auto* label = new QLabel();
    label->setAttribute(Qt::WA_DeleteOnClose);
    label->setWindowTitle(oxPathText::toQString(oxFile::getFileName(path)));
    label->setPixmap(pixmap);
    label->show();
}

bool oxImageWriter::run(Job& job)
{
    m_canceled = false;
    m_cancelRequested = false;
    osg_image_file_handler_errno = 1;
    const std::string shown = pathBytes(job.filename);
    if (!oxImageSource::current()) {
        oxLog::error("Image writer: can't render '%s': no renderer is available.", shown.c_str());
        return false;
    }
    if (job.width <= 0 || job.height <= 0) {
        oxLog::error("Image writer: can't render '%s': the size %dx%d is not valid.", shown.c_str(),
                     job.width, job.height);
        return false;
    }
    if (job.frames.empty()) {
        oxLog::error("Image writer: can't render '%s': no frames to render.", shown.c_str());
        return false;
    }
    const bool toStream = oxImageOutStream::isActive();
    const std::string expanded = oxFile::expandFilename(shown);
    if (job.movie) {
        if (toStream) {
            oxLog::error("Image writer: the movie '%s' can't be redirected into a stream.",
                         shown.c_str());
            return false;
        }
    } else if (!toStream && oxImageEncoder::formatOf(oxFile::getExtension(expanded)).empty()) {
        oxLog::error("Image writer: can't write '%s': the format '%s' is not supported.",
                     shown.c_str(), oxFile::getExtension(expanded).c_str());
        return false;
    }
    if (!toStream) {
        const std::string folder = oxFile::getFilePath(expanded);
        if (!folder.empty() && !oxFile::createPath(folder)) {
            oxLog::error("Image writer: can't create the folder '%s' for '%s'.", folder.c_str(),
                         shown.c_str());
            return false;
        }
    }

    job.iccProfile = iccProfileData(m_iccProfile);
    if ((m_iccProfile == 3 || m_iccProfile == 4) && !toStream && !job.movie) {
        std::string file, problem;
        job.iccProfile = iccProfileFromPreferences(m_iccProfile, file, problem);
        const char* key = m_iccProfile == 3 ? monitorICCProfileKey : imageICCProfileKey;
        if (job.iccProfile.empty() && file.empty())
            oxLog::warning("Image writer: %s; '%s' is written without an ICC profile.",
                           problem.c_str(), shown.c_str());
        else if (job.iccProfile.empty())
            oxLog::warning("Image writer: the ICC profile file '%s' (preference \"%s\") can't "
                           "be used: %s; '%s' is written without an ICC profile.",
                           file.c_str(), key, problem.c_str(), shown.c_str());
    }

    // Integer files are display-referred: they follow the curve of the profile they carry,
    // and sRGB's when they carry none, as viewers assume then.
    job.displayCurve = oxDisplayCurve::fromICCProfile(job.iccProfile).table();

    InterruptGuard interrupt(oxController::isNoGUI());
    job.progress = std::make_unique<oxExportProgress>(
        !m_noProgress, job.frames.size(), QObject::tr("Rendering %1").arg(job.filename));
    if (job.movie) {
        if (!confirmOverwrite(expanded))
            return false;
        job.movieWriter = std::make_unique<oxMovieWriter>();
        std::string error;
        if (!job.movieWriter->open(expanded, job.width, job.height, job.fps, error)) {
            oxLog::error("Image writer: can't write the movie '%s': %s.", shown.c_str(),
                         error.c_str());
            return false;
        }
    }

    bool ok = true;
    for (size_t i = 0; i < job.frames.size() && ok; ++i) {
        const int frame = job.frames[i];
        QStringList names;
        if (!job.movie)
            for (const UnitFile& file :
                 unitFiles(job.filename, job.passIds, m_multiLayer, job.sequence, frame))
                names << file.name;
        job.index = i;
        try {
            ok = renderUnit(job, frame, names);
        } catch (const std::bad_alloc&) {
            // Encoders, streams and movies copy the image; any of them may find no memory.
            oxLog::error("Image writer: can't render '%s': there is not enough memory for an "
                         "image of %dx%d pixels.",
                         shown.c_str(), job.width, job.height);
            ok = false;
        }
        if (m_canceled || !ok)
            break;
        job.progress->step(job.movie ? shown : pathBytes(names.value(0)));
        if (ok && i + 1 < job.frames.size() && (cancelRequested() || job.progress->canceled())) {
            m_canceled = true;
            oxLog::info("Image writer: export of '%s' cancelled after frame %d.", shown.c_str(),
                        frame);
            break;
        }
    }
    if (job.movie) {
        std::string error;
        if (ok && !m_canceled) {
            if (!job.movieWriter->finish(error)) {
                oxLog::error("Image writer: can't write the movie '%s': %s.", shown.c_str(),
                             error.c_str());
                ok = false;
            }
        } else {
            job.movieWriter->abandon();
        }
    }
    if (ok && !m_canceled)
        osg_image_file_handler_errno = 0;
    return ok && !m_canceled;
}

bool oxImageWriter::renderUnit(Job& job, int frame, const QStringList& names)
{
    oxRenderRequest request;
    request.width = job.width;
    request.height = job.height;
    request.frame = frame;
    request.animation = job.sequence || job.movie;
    request.passIds = job.passIds.empty() || job.movie
                          ? std::vector<unsigned>{oxImagePasses::Beauty}
                          : knownPasses(job.passIds);
    request.supersampling = m_supersampling;
    request.alpha = job.alpha;
    std::copy(m_alphaColor, m_alphaColor + 3, request.alphaColor);
    request.tonemapHDR = job.tonemapHDR;
    request.motionBlurObjectId = job.objectId;
    job.stopped = false;
    request.onRound = [this, &job](int done, int rounds) {
        job.progress->round(done, rounds);
        if (m_progressCallback)
            m_progressCallback({job.index, job.frames.size(), done, rounds});
        job.stopped = cancelRequested() || job.progress->canceled();
        return !job.stopped;
    };

    oxRenderedImage image;
    std::string error;
    const auto started = std::chrono::steady_clock::now();
    const bool rendered = oxImageSource::current()->render(request, image, error);
    lastRenderTime() =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    const std::string shown = job.movie ? pathBytes(job.filename) : pathBytes(names.value(0));
    if (!rendered && job.stopped) {
        // Stopped between two rounds: the image is unfinished, so none of its files appear.
        m_canceled = true;
        if (job.sequence || job.movie)
            oxLog::info("Image writer: export of '%s' cancelled during frame %d; the frame was "
                        "not written.",
                        pathBytes(job.filename).c_str(), frame);
        else
            oxLog::info("Image writer: export of '%s' cancelled; the image was not written.",
                        pathBytes(job.filename).c_str());
        return false;
    }
    if (!rendered) {
        oxLog::error("Image writer: rendering '%s' failed: %s.", shown.c_str(), error.c_str());
        return false;
    }
    const size_t size = size_t(job.width) * size_t(job.height) * 4;
    for (unsigned id : request.passIds) {
        const oxRenderedPass* pass = image.find(id);
        if (!pass || pass->rgba.size() != size || image.width != job.width ||
            image.height != job.height) {
            oxLog::error("Image writer: rendering '%s' failed: the renderer delivered no %dx%d "
                         "image of the pass '%s'.",
                         shown.c_str(), job.width, job.height, oxImagePasses::name(id));
            return false;
        }
    }
    if (job.movie) {
        if (!job.movieWriter->addFrame(image.find(oxImagePasses::Beauty)->rgba.data(), error)) {
            oxLog::error("Image writer: can't add frame %d to the movie '%s': %s.", frame,
                         shown.c_str(), error.c_str());
            return false;
        }
        return true;
    }
    return writeUnit(job, image, names);
}

bool oxImageWriter::writeUnit(Job& job, const oxRenderedImage& image, const QStringList& names)
{
    const std::vector<UnitFile> files =
        unitFiles(job.filename, job.passIds, m_multiLayer, job.sequence, 0);
    bool ok = true;
    for (int f = 0; f < names.size(); ++f) {
        std::vector<unsigned> passes = files[size_t(f)].passIds;
        if (passes.empty())
            passes = {0};
        const std::string name = pathBytes(names[f]);

        if (oxImageOutStream::isActive()) {
            std::vector<osg::ImagePtr> layers;
            for (unsigned id : passes) {
                auto layer = std::make_shared<osg::Image>(
                    job.width, job.height, image.find(id)->rgba, oxImagePasses::name(id));
                layer->setCryptomatte(oxImagePasses::isCryptomatte(id));
                layers.push_back(layer);
            }
            const osg::ImagePtr first = layers.front();
            if (layers.size() == 1)
                layers.clear();
            if (!oxImageOutStream::write(first, name, layers)) {
                oxLog::error("Image writer: the redirected image '%s' was not taken.",
                             name.c_str());
                ok = false;
            }
            continue;
        }

        const std::string path = oxFile::expandFilename(name);
        if (!confirmOverwrite(path))
            continue;
        oxEncodeSettings settings;
        osg::ImageFileHandler::the().applyOptions(oxFile::getExtension(path), settings);
        applyQualityPreference(oxFile::getExtension(path), settings);
        settings.alpha = job.alpha;
        settings.tiffHDR = m_tiffHDR;
        settings.exrHalf = m_exrHalf;
        settings.multiLayer = passes.size() > 1;
        settings.ppi = m_dpi;
        settings.iccProfile = job.iccProfile;
        settings.displayCurve = job.displayCurve;
        if (m_metaDataFlags != 0)
            settings.xmp = m_metaData.buildXMP(m_metaDataFlags, image.cameraData);
        std::vector<oxImageLayer> layers;
        bool objects = false, materials = false;
        for (unsigned id : passes) {
            const bool crypto = oxImagePasses::isCryptomatte(id);
            layers.push_back({oxImagePasses::name(id), image.find(id)->rgba.data(), crypto,
                              oxImagePasses::isData(id)});
            objects |= crypto && id < oxImagePasses::cryptoMaterialFirst;
            materials |= crypto && id >= oxImagePasses::cryptoMaterialFirst;
        }
        if (objects)
            for (const auto& entry :
                 oxCryptomatte::metadata("cryptoObject", image.cryptoObjectNames))
                settings.attributes.push_back(entry);
        if (materials)
            for (const auto& entry :
                 oxCryptomatte::metadata("cryptoMaterial", image.cryptoMaterialNames))
                settings.attributes.push_back(entry);
        std::string error;
        if (!oxImageEncoder::writeFile(path, job.width, job.height, layers, settings, error)) {
            oxLog::error("Image writer: can't write '%s': %s.", path.c_str(), error.c_str());
            ok = false;
            continue;
        }
        showImage(path);
    }
    return ok;
}
