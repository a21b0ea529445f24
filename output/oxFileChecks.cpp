#include "oxFileChecks.h"

#include "QOXScrollableMessageBox.h"
#include "oxFile.h"
#include "oxFileIO.h"
#include "oxImageWriter.h"
#include "oxLog.h"
#include "oxPlatform.h"
#include "oxRenderPlan.h"
#include "oxSnapshots.h"

#include <QCoreApplication>
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

QString translated(const char* text) { return QCoreApplication::translate("oxMovieExport", text); }

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

} // namespace

QStringList filterExistingFiles(const QStringList& list)
{
    QStringList found;
    for (const QString& entry : list) {
        if (oxFile::exists(oxFileIO::toUtf8std(entry), false, false))
            found << nativeAbsolute(entry);
    }
    return found;
}

QStringList filterUnwritableFiles(const QStringList& list)
{
    QStringList found;
    for (const QString& entry : list) {
        if (!oxFile::checkWrite(oxFileIO::toUtf8std(entry), false, false))
            found << nativeAbsolute(entry);
    }
    return found;
}

oxOverwriteChoice askOverwrite(const QStringList& list, bool allowRename, QWidget* parent)
{
    const QString text =
        translated("This operation will overwrite existing files! What do you want to "
                   "do?\n\n") +
        translated("Files to be overwritten:\n") + joinedForPeople(list);
    QOXScrollableMessageBox box(QMessageBox::Warning, oxPlatform::getAppVersionName(), text,
                                QMessageBox::NoButton, parent,
                                Qt::WindowFlags(kQuestionWindowFlags));
    QPushButton* overwrite = box.addButton(translated("&Overwrite"), QMessageBox::ActionRole);
    QPushButton* rename =
        allowRename ? box.addButton(translated("&Rename"), QMessageBox::ActionRole) : nullptr;
    QPushButton* cancel = box.addButton(translated("Cancel"), QMessageBox::ActionRole);
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

oxWriteChoice askUnwritable(const QStringList& list, bool allowRename, QWidget* parent)
{
    const QString text = translated("Unable to write files! What do you want to do?\n\n") +
                         translated("Files that can not be written:\n") + joinedForPeople(list);
    QOXScrollableMessageBox box(QMessageBox::Warning, oxPlatform::getAppVersionName(), text,
                                QMessageBox::NoButton, parent,
                                Qt::WindowFlags(kQuestionWindowFlags));
    QPushButton* retry = box.addButton(translated("Retry"), QMessageBox::ActionRole);
    QPushButton* ignore = box.addButton(translated("Ignore"), QMessageBox::ActionRole);
    QPushButton* rename =
        allowRename ? box.addButton(translated("&Rename"), QMessageBox::ActionRole) : nullptr;
    QPushButton* cancel = box.addButton(translated("Cancel"), QMessageBox::ActionRole);
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

oxOverwriteChoice checkOverwrite(const QStringList& list, QWidget* parent)
{
    const QStringList found = filterExistingFiles(list);
    if (found.isEmpty())
        return NothingToOverwrite;
    return askOverwrite(found, true, parent);
}

oxWriteChoice checkWriteAccess(const QStringList& list, QWidget* parent)
{
    for (;;) {
        // Files may have become writable while the user was asked: look again each round.
        const QStringList found = filterUnwritableFiles(list);
        if (found.isEmpty())
            return NothingUnwritable;
        const oxWriteChoice choice = askUnwritable(found, true, parent);
        if (choice != RetryWrite)
            return choice;
    }
}

bool checkOutputFiles(oxImageWriter& writer, const oxRenderSettingsPresetSPtr& record,
                      bool askForName, const std::function<bool()>& chooseName, QWidget* parent)
{
    if (!record)
        return false;
    oxOverwriteChoice lastOverwrite = CancelOverwrite;
    oxWriteChoice lastWrite = CancelWrite;
    for (;;) {
        if (askForName || lastOverwrite == RenameFiles || lastWrite == RenameUnwritable) {
            if (!chooseName())
                return false;
        }
        QStringList list;
        walkRenderPlan(writer, record, list, PlanCollect, QString());
        lastOverwrite = checkOverwrite(list, parent);
        if (lastOverwrite == CancelOverwrite)
            return false;
        // Asked even when the name is about to change by a Rename: one round asks both.
        lastWrite = checkWriteAccess(list, parent);
        if (lastWrite == CancelWrite)
            return false;
        if (lastOverwrite == RenameFiles || lastWrite == RenameUnwritable)
            continue;
        return true;
    }
}

QString chooseOutputFileName(const oxRenderSettingsPresetSPtr& record)
{
    if (!record)
        return QString();
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
        name = QFileDialog::getSaveFileName(nullptr, translated("Save Rendering(s)..."), name,
                                            filter, &filter, QFileDialog::DontConfirmOverwrite);
        if (name.isEmpty())
            return QString();
        if (!endsWithNoCase(name, QLatin1String(kMovieExtension))) {
            oxLog::error("Movie format not supported!");
            return QString();
        }
    }
    return name;
}
