#pragma once

#include "oxRenderSettingsPreset.h"

#include <QString>
#include <QStringList>

#include <functional>

class QWidget;
class oxImageWriter;

// Before a job writes: which of its files exist or can't be written, and the questions that
// let the user settle them.

/// Answers of the question about existing files.
enum oxOverwriteChoice : int {
    OverwriteFiles = 0,
    RenameFiles = 1,
    CancelOverwrite = 2,
    NothingToOverwrite = 3
};
/// Answers of the question about files that can't be written.
enum oxWriteChoice : int {
    RetryWrite = 0,
    IgnoreUnwritable = 1,
    RenameUnwritable = 2,
    CancelWrite = 3,
    NothingUnwritable = 4
};

/// The entries of list that exist, or that can't be written, as absolute native paths.
QStringList filterExistingFiles(const QStringList& list);
QStringList filterUnwritableFiles(const QStringList& list);
/// The questions about the files of list (Rename offered with allowRename), over parent.
oxOverwriteChoice askOverwrite(const QStringList& list, bool allowRename, QWidget* parent);
oxWriteChoice askUnwritable(const QStringList& list, bool allowRename, QWidget* parent);
/// Asks about the existing files of list, if any; asks about the unwritable ones until they
/// can be written or the user decides otherwise.
oxOverwriteChoice checkOverwrite(const QStringList& list, QWidget* parent);
oxWriteChoice checkWriteAccess(const QStringList& list, QWidget* parent);
/// Settles the output files of record's job: asks for the output name with chooseName
/// (always with askForName, else after a Rename) and about existing and unwritable files
/// until the user settles; true to go on.
bool checkOutputFiles(oxImageWriter& writer, const oxRenderSettingsPresetSPtr& record,
                      bool askForName, const std::function<bool()>& chooseName, QWidget* parent);
/// Lets the user choose the output file of record: the image file dialog, or for a movie a
/// ".avi" name; empty when the user cancelled or chose an unsupported format.
QString chooseOutputFileName(const oxRenderSettingsPresetSPtr& record);
