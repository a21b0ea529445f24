#pragma once

#include <string>

/// File names and file tests of the host.
///
/// Path rule on this platform: every function that takes a path accepts both '\' and '/' as
/// separators, a leading "\\?\" long-path prefix is dropped, and a drive prefix such as "c:\"
/// stands for the user's home folder. Results are POSIX paths.
class oxFile {
public:
    /// The path as a POSIX path: separators turned to '/', "\\?\" dropped, a drive prefix
    /// mapped to the home folder, a leading "~" expanded, "$VAR" and "${VAR}" replaced by
    /// the environment's values (unknown ones by nothing).
    static std::string expandFilename(const std::string& path);

    /// The path with every separator turned into '/' (nothing else changes).
    static std::string convertSeparators(const std::string& path);

    /// The folder part of path, without a trailing separator ("" when path has no folder;
    /// "/" for a file in the root folder).
    static std::string getFilePath(const std::string& path);
    /// The file name without folder and without its last extension.
    static std::string getBaseName(const std::string& path);
    /// The file name without folder.
    static std::string getFileName(const std::string& path);
    /// The last extension, without the dot ("" when there is none).
    static std::string getExtension(const std::string& path);

    /// True when path names an existing file or folder. With mustBeFile only files count;
    /// with mustBeDirectory only folders.
    static bool exists(const std::string& path, bool mustBeFile = false,
                       bool mustBeDirectory = false);
    /// True when path can be written: an existing file that is writable, or a new file in a
    /// writable folder. With mustExist a missing file is not writable; with testByCreating a
    /// new file's folder is tested by really creating (and removing) an empty file there.
    static bool checkWrite(const std::string& path, bool mustExist = false,
                           bool testByCreating = false);
    /// Creates the folder and all its missing parents; true when it exists afterwards.
    static bool createPath(const std::string& path);

    /// Writes data to path atomically: into a temporary file in the same folder, flushed to
    /// disk, then renamed over path. On failure path is untouched, the temporary file is
    /// removed and error (when given) says what went wrong.
    static bool writeAtomically(const std::string& path, const std::string& data,
                                std::string* error = nullptr);
    /// Reads a whole file; false when it can't be read.
    static bool readAll(const std::string& path, std::string& data);

    /// The user's home folder (no trailing separator).
    static std::string homeDirectory();
};
