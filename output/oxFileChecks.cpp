#include "oxMovieExport.h"

#include "QOXScrollableMessageBox.h"
#include "oxFile.h"
#include "oxFileIO.h"
#include "oxImageWriter.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxMovieExportCallbacks.h"
#include "oxPlatform.h"
#include "oxRenderSettings.h"
#include "oxSceneServices.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QPushButton>

#include <string>
#include <utility>
#include <vector>

namespace {

const char kMovieExtension[] = ".avi";
// Dialog window flags: a dialog with a fixed size.
constexpr int kQuestionWindowFlags = 259;
constexpr int kQuestionWidth = 600;
constexpr int kQuestionHeight = 600;

bool endsWithNoCase(const QString& text, const QString& end)
{
    return text.endsWith(end, Qt::CaseInsensitive);
}

QString nativeAbsolute(const QString& entry)
{
    return QDir::toNativeSeparators(QFileInfo(entry).absoluteFilePath());
}

QString joinedForPeople(const QStringList& list)
{
    QStringList shown;
    for (const QString& entry : list)
        shown << withoutLongPathPrefix(entry);
    return shown.join(QLatin1Char('\n'));
}

// The render job preset of that name, compared byte for byte; an empty name never matches.
oxRenderSettingsPresetSPtr findPreset(const std::string& name)
{
    oxRenderSettings* window = oxRenderSettings::instance();
    if (!window || name.empty())
        return nullptr;
    for (const oxRenderSettingsPresetSPtr& preset : window->getRQPresets()) {
        if (preset && preset->name == name)
            return preset;
    }
    return nullptr;
}

} // namespace

bool oxMovieExport::validateOutputFilename(const oxRenderSettingsPresetSPtr& record) const
{
    const QString name = QString::fromStdString(record->filename);
    const bool isMovieName = endsWithNoCase(name, QLatin1String(kMovieExtension));
    if (name.isEmpty() || isMovieName != record->isMovieExport()) {
        oxLog::error("%s", kBadFilenameMessage);
        return false;
    }
    return true;
}

QString oxMovieExport::prepareOutputDirectory(const oxRenderSettingsPresetSPtr& record) const
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

QStringList oxMovieExport::filterExistingFiles(const QStringList& list) const
{
    QStringList found;
    for (const QString& entry : list) {
        if (oxFile::exists(oxFileIO::toUtf8std(entry), false, false))
            found << nativeAbsolute(entry);
    }
    return found;
}

QStringList oxMovieExport::filterUnwritableFiles(const QStringList& list) const
{
    QStringList found;
    for (const QString& entry : list) {
        if (!oxFile::checkWrite(oxFileIO::toUtf8std(entry), false, false))
            found << nativeAbsolute(entry);
    }
    return found;
}

oxMovieExport::OverwriteChoice oxMovieExport::askOverwrite(const QStringList& list,
                                                           bool allowRename)
{
    const QString text = tr("This operation will overwrite existing files! What do you want to "
                            "do?\n\n") +
                         tr("Files to be overwritten:\n") + joinedForPeople(list);
    QOXScrollableMessageBox box(QMessageBox::Warning, oxPlatform::getAppVersionName(), text,
                                QMessageBox::NoButton, renderSettingsWindow,
                                Qt::WindowFlags(kQuestionWindowFlags));
    QPushButton* overwrite = box.addButton(tr("&Overwrite"), QMessageBox::ActionRole);
    QPushButton* rename =
        allowRename ? box.addButton(tr("&Rename"), QMessageBox::ActionRole) : nullptr;
    QPushButton* cancel = box.addButton(tr("Cancel"), QMessageBox::ActionRole);
    box.setDefaultButton(overwrite);
    box.setEscapeButton(cancel);
    box.makeScrollable(kQuestionWidth, kQuestionHeight);
    box.exec();
    const QAbstractButton* pressed = box.clickedButton();
    if (rename && pressed == rename)
        return RenameFiles;
    if (pressed == cancel)
        return CancelOverwrite;
    return OverwriteFiles;
}

oxMovieExport::WriteChoice oxMovieExport::askUnwritable(const QStringList& list, bool allowRename)
{
    const QString text = tr("Unable to write files! What do you want to do?\n\n") +
                         tr("Files that can not be written:\n") + joinedForPeople(list);
    QOXScrollableMessageBox box(QMessageBox::Warning, oxPlatform::getAppVersionName(), text,
                                QMessageBox::NoButton, renderSettingsWindow,
                                Qt::WindowFlags(kQuestionWindowFlags));
    QPushButton* retry = box.addButton(tr("Retry"), QMessageBox::ActionRole);
    QPushButton* ignore = box.addButton(tr("Ignore"), QMessageBox::ActionRole);
    QPushButton* rename =
        allowRename ? box.addButton(tr("&Rename"), QMessageBox::ActionRole) : nullptr;
    QPushButton* cancel = box.addButton(tr("Cancel"), QMessageBox::ActionRole);
    box.setDefaultButton(retry);
    box.setEscapeButton(cancel);
    box.makeScrollable(kQuestionWidth, kQuestionHeight);
    box.exec();
    const QAbstractButton* pressed = box.clickedButton();
    if (pressed == retry)
        return RetryWrite;
    if (pressed == ignore)
        return IgnoreUnwritable;
    if (rename && pressed == rename)
        return RenameUnwritable;
    return CancelWrite;
}

oxMovieExport::OverwriteChoice oxMovieExport::checkOverwrite(const QStringList& list)
{
    const QStringList found = filterExistingFiles(list);
    if (found.isEmpty())
        return NothingToOverwrite;
    return askOverwrite(found, true);
}

oxMovieExport::WriteChoice oxMovieExport::checkWriteAccess(const QStringList& list)
{
    for (;;) {
        // Files may have become writable while the user was asked: look again each round.
        const QStringList found = filterUnwritableFiles(list);
        if (found.isEmpty())
            return NothingUnwritable;
        const WriteChoice choice = askUnwritable(found, true);
        if (choice != RetryWrite)
            return choice;
    }
}

bool oxMovieExport::checkOutputFiles(const oxRenderSettingsPresetSPtr& record, bool askForName)
{
    if (!record)
        return false;
    OverwriteChoice lastOverwrite = CancelOverwrite;
    WriteChoice lastWrite = CancelWrite;
    for (;;) {
        if (askForName || lastOverwrite == RenameFiles || lastWrite == RenameUnwritable) {
            if (!chooseOutputFile(record))
                return false;
        }
        QStringList list;
        walkRenderPlan(record, list, PlanCollect);
        lastOverwrite = checkOverwrite(list);
        if (lastOverwrite == CancelOverwrite)
            return false;
        // Asked even when the name is about to change by a Rename: one round asks both.
        lastWrite = checkWriteAccess(list);
        if (lastWrite == CancelWrite)
            return false;
        if (lastOverwrite == RenameFiles || lastWrite == RenameUnwritable)
            continue;
        return true;
    }
}

bool oxMovieExport::chooseOutputFile(const oxRenderSettingsPresetSPtr& record)
{
    if (!record)
        return false;
    QString name;
    if (!record->isMovieExport()) {
        name = runImageFileDialog(record);
    } else {
        name = QString::fromStdString(record->filename);
        if (!endsWithNoCase(name, QLatin1String(kMovieExtension))) {
            // An image name becomes the movie's name by its extension.
            for (const std::string& format : oxImageWriter::getFormatsOpenSG()) {
                const QString extension = QStringLiteral(".") + QString::fromStdString(format);
                if (endsWithNoCase(name, extension)) {
                    const int at =
                        name.lastIndexOf(QString::fromStdString(format), -1, Qt::CaseInsensitive);
                    name.replace(at, int(format.size()), QStringLiteral("avi"));
                    break;
                }
            }
        }
        QString filter = QStringLiteral("*.avi");
        // Existing files are the business of the checks that follow, not of the dialog.
        name = QFileDialog::getSaveFileName(nullptr, tr("Save Rendering(s)..."), name, filter,
                                            &filter, QFileDialog::DontConfirmOverwrite);
        if (name.isEmpty())
            return false;
        if (!endsWithNoCase(name, QLatin1String(kMovieExtension))) {
            oxLog::error("Movie format not supported!");
            return false;
        }
    }
    if (name.isEmpty())
        return false;
    record->filename = oxFileIO::toUtf8std(name);
    if (oxRenderSettings* window = renderSettingsWindow) {
        window->getCurrentPreset().filename = record->filename;
        window->updateGUI();
    }
    return true;
}

void oxMovieExport::openFileDialog()
{
    if (oxRenderSettings* window = renderSettingsWindow)
        chooseOutputFile(window->getCurrentRenderSettings());
}

void checkFileWritingForPresetCB(oxMessage& message)
{
    std::string name;
    if (!theMovieExport || !message.get("preset", name))
        return;
    const oxRenderSettingsPresetSPtr preset = findPreset(name);
    if (!preset)
        return;
    const bool goOn = theMovieExport->checkOutputFiles(preset, false);
    message.set("cancel", !goOn);
    message.set("filename", preset->filename);
}

void checkFileWritingForPresetsCB(oxMessage& message)
{
    using NamedPresets = std::vector<std::pair<std::string, std::string>>;
    NamedPresets presets;
    if (!theMovieExport || !message.get("presets", presets))
        return;
    for (;;) {
        QStringList unwritableReport;
        QStringList existingReport;
        for (const auto& [shownText, presetName] : presets) {
            const oxRenderSettingsPresetSPtr preset = findPreset(presetName);
            if (!preset)
                continue;
            QStringList list;
            theMovieExport->walkRenderPlan(preset, list, PlanCollect);
            const QStringList existing = theMovieExport->filterExistingFiles(list);
            const QStringList unwritable = theMovieExport->filterUnwritableFiles(list);
            // The presets' texts stand as headers above their files.
            if (!unwritable.isEmpty())
                unwritableReport << QString::fromStdString(shownText) << unwritable;
            if (!existing.isEmpty())
                existingReport << QString::fromStdString(shownText) << existing;
        }
        if (!existingReport.isEmpty() &&
            theMovieExport->askOverwrite(existingReport, false) == oxMovieExport::CancelOverwrite) {
            message.set("cancel", true);
            return;
        }
        if (!unwritableReport.isEmpty()) {
            const oxMovieExport::WriteChoice choice =
                theMovieExport->askUnwritable(unwritableReport, false);
            if (choice == oxMovieExport::RetryWrite)
                continue;
            if (choice == oxMovieExport::CancelWrite) {
                message.set("cancel", true);
                return;
            }
        }
        message.set("cancel", false);
        return;
    }
}
