#pragma once

#include <QString>

#include <string>

class oxMessage;

/// Project-level file services: text conversions for file names, long paths and the project
/// record in which modules keep their per-scene data.
class oxFileIO {
public:
    /// The UTF-8 bytes of a file name.
    static std::string toUtf8std(const QString& text);

    /// The path in the form this platform's file functions take. Paths here have no length
    /// prefix, so this is oxFile::expandFilename of the path.
    static QString getLongWindowsPath(const QString& path);
    static std::string getLongWindowsPath(const std::string& path);

    /// The record that the open project carries for its modules. Message 8192 asks modules
    /// to read ("_loading" true) or write ("_loading" false) their entries in it.
    static oxMessage& getProject();
    /// Empties the project record (a new scene).
    static void clearProject();

    /// True while a project file is being loaded by a running script.
    static bool isLoadingProjectWhileRunningScript();
    static void setLoadingProjectWhileRunningScript(bool loading);
};
