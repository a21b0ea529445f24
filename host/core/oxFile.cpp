#include "oxFile.h"

#include "oxPartialFiles.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <pwd.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool hasDrivePrefix(const std::string& path)
{
    return path.size() >= 2 && std::isalpha(static_cast<unsigned char>(path[0])) && path[1] == ':';
}

} // namespace

std::string oxFile::homeDirectory()
{
    if (const char* home = std::getenv("HOME"); home && *home)
        return home;
    if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_dir)
        return entry->pw_dir;
    return "/";
}

std::string oxFile::convertSeparators(const std::string& path)
{
    std::string result = path;
    for (char& c : result)
        if (c == '\\')
            c = '/';
    return result;
}

std::string oxFile::expandFilename(const std::string& input)
{
    std::string path = input;
    if (path.rfind("\\\\?\\", 0) == 0)
        path.erase(0, 4);
    path = convertSeparators(path);

    if (hasDrivePrefix(path)) {
        std::string rest = path.substr(2);
        if (!rest.empty() && rest[0] == '/')
            rest.erase(0, 1);
        path = homeDirectory() + (rest.empty() ? "" : "/" + rest);
    } else if (path == "~" || path.rfind("~/", 0) == 0) {
        path = homeDirectory() + path.substr(1);
    }

    // Environment variables: $NAME and ${NAME}.
    std::string result;
    for (size_t i = 0; i < path.size(); ++i) {
        if (path[i] != '$' || i + 1 >= path.size()) {
            result += path[i];
            continue;
        }
        size_t start = i + 1;
        size_t end;
        bool braced = path[start] == '{';
        if (braced) {
            end = path.find('}', start);
            if (end == std::string::npos) {
                result += path[i];
                continue;
            }
            ++start;
        } else {
            end = start;
            while (end < path.size() &&
                   (std::isalnum(static_cast<unsigned char>(path[end])) || path[end] == '_'))
                ++end;
            if (end == start) {
                result += path[i];
                continue;
            }
        }
        const std::string name = path.substr(start, end - start);
        if (const char* value = std::getenv(name.c_str()))
            result += value;
        i = braced ? end : end - 1;
    }
    return result;
}

std::string oxFile::getFilePath(const std::string& input)
{
    const std::string path = convertSeparators(input);
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return std::string();
    if (slash == 0)
        return "/";
    return path.substr(0, slash);
}

std::string oxFile::getFileName(const std::string& input)
{
    const std::string path = convertSeparators(input);
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string oxFile::getBaseName(const std::string& path)
{
    const std::string name = getFileName(path);
    const size_t dot = name.rfind('.');
    return (dot == std::string::npos || dot == 0) ? name : name.substr(0, dot);
}

std::string oxFile::getExtension(const std::string& path)
{
    const std::string name = getFileName(path);
    const size_t dot = name.rfind('.');
    return (dot == std::string::npos || dot == 0) ? std::string() : name.substr(dot + 1);
}

bool oxFile::exists(const std::string& input, bool mustBeFile, bool mustBeDirectory)
{
    struct stat info;
    if (::stat(expandFilename(input).c_str(), &info) != 0)
        return false;
    if (mustBeFile && !S_ISREG(info.st_mode))
        return false;
    if (mustBeDirectory && !S_ISDIR(info.st_mode))
        return false;
    return true;
}

bool oxFile::checkWrite(const std::string& input, bool mustExist, bool testByCreating)
{
    const std::string path = expandFilename(input);
    struct stat info;
    if (::stat(path.c_str(), &info) == 0)
        return !S_ISDIR(info.st_mode) && ::access(path.c_str(), W_OK) == 0;
    if (mustExist)
        return false;
    std::string folder = getFilePath(path);
    if (folder.empty())
        folder = ".";
    if (::access(folder.c_str(), W_OK) != 0)
        return false;
    if (!testByCreating)
        return true;
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    if (fd < 0)
        return false;
    ::close(fd);
    ::unlink(path.c_str());
    return true;
}

bool oxFile::createPath(const std::string& input)
{
    const std::string path = expandFilename(input);
    if (path.empty())
        return false;
    std::string partial;
    std::stringstream parts(path);
    std::string part;
    if (path[0] == '/')
        partial = "/";
    while (std::getline(parts, part, '/')) {
        if (part.empty())
            continue;
        partial += part;
        if (::mkdir(partial.c_str(), 0755) != 0 && errno != EEXIST)
            return false;
        partial += '/';
    }
    return exists(path, false, true);
}

bool oxFile::writeAtomically(const std::string& input, const std::string& data, std::string* error)
{
    // Through a symbolic link to its target, so that the link stays a link.
    const std::string path = oxPartialFiles::target(expandFilename(input));
    auto fail = [&](const char* what) {
        if (error)
            *error = std::string(what) + ": " + std::strerror(errno);
        return false;
    };

    // A partial file's name says which process writes it, so that one left by a process that
    // was killed is removed by the next one writing there.
    const std::string pattern = oxPartialFiles::begin(path);
    const int fd = ::open(pattern.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
        const int saved = errno;
        oxPartialFiles::forget(pattern);
        errno = saved;
        return fail("can't create a temporary file");
    }
    // Every way out below removes the temporary, so it is no longer tracked after this.
    struct Untrack {
        const std::string& name;
        ~Untrack() { oxPartialFiles::forget(name); }
    } untrack{pattern};
    size_t written = 0;
    while (written < data.size()) {
        const ssize_t n = ::write(fd, data.data() + written, data.size() - written);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            const int saved = errno;
            ::close(fd);
            ::unlink(pattern.c_str());
            errno = saved;
            return fail("can't write");
        }
        written += static_cast<size_t>(n);
    }
    // Keep the permissions of the file being replaced; a new file gets the usual 0644.
    struct stat info;
    ::fchmod(fd, ::stat(path.c_str(), &info) == 0 ? (info.st_mode & 07777) : 0644);
    if (::fsync(fd) != 0 || ::close(fd) != 0) {
        const int saved = errno;
        ::unlink(pattern.c_str());
        errno = saved;
        return fail("can't flush");
    }
    if (::rename(pattern.c_str(), path.c_str()) != 0) {
        const int saved = errno;
        ::unlink(pattern.c_str());
        errno = saved;
        return fail("can't rename into place");
    }
    return true;
}

bool oxFile::readAll(const std::string& path, std::string& data)
{
    std::ifstream in(expandFilename(path), std::ios::binary);
    if (!in)
        return false;
    std::ostringstream buffer;
    buffer << in.rdbuf();
    if (in.bad())
        return false;
    data = buffer.str();
    return true;
}
