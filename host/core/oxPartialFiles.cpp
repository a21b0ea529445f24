#include "oxPartialFiles.h"

#include "oxFile.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <mutex>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace oxPartialFiles {

namespace {

// The names the signal handlers remove: fixed slots, so that the handler reads them without
// allocating or locking. A slot is free (0), being filled or emptied (1), or holds a name (2).
constexpr int kSlots = 64;
constexpr size_t kMaxPath = 4096;
struct Slot {
    std::atomic<int> state{0};
    char path[kMaxPath];
};
Slot g_slots[kSlots];

extern "C" void onTerminatingSignal(int signal)
{
    const int saved = errno;
    for (Slot& slot : g_slots)
        if (slot.state.load(std::memory_order_acquire) == 2)
            ::unlink(slot.path);
    errno = saved;
    // The handler was installed with SA_RESETHAND: raised again, the signal ends the process as
    // it would have without us, once the handler returns.
    std::raise(signal);
}

// Only signals whose disposition is the default are taken over: a handler of someone else (the
// headless Ctrl-C cancel) and an ignored signal keep their meaning. Checked at every new
// temporary, since such a handler may have been there at the last one and gone since.
void installSignalHandlers()
{
    for (int signal : {SIGTERM, SIGHUP, SIGINT}) {
        struct sigaction previous {};
        if (::sigaction(signal, nullptr, &previous) != 0 || (previous.sa_flags & SA_SIGINFO) ||
            previous.sa_handler != SIG_DFL)
            continue;
        struct sigaction action {};
        action.sa_handler = onTerminatingSignal;
        action.sa_flags = SA_RESETHAND;
        sigemptyset(&action.sa_mask);
        ::sigaction(signal, &action, nullptr);
    }
}

const std::string& hostName()
{
    static const std::string name = [] {
        char buffer[256] = {};
        if (::gethostname(buffer, sizeof buffer - 1) != 0 || !buffer[0])
            return std::string("localhost");
        std::string text = buffer;
        for (char& c : text)
            if (c == '/')
                c = '_';
        return text;
    }();
    return name;
}

// Reads the decimal number at text[at]; false when there is none.
bool number(const std::string& text, size_t& at, long long& value)
{
    const size_t start = at;
    value = 0;
    while (at < text.size() && text[at] >= '0' && text[at] <= '9' && at - start < 18)
        value = value * 10 + (text[at++] - '0');
    return at > start;
}

// The process id of a partial file of this host named name; 0 when name is none.
long long writerOf(const std::string& name)
{
    const size_t part = name.rfind(".part");
    if (name.empty() || name[0] != '.' || part == std::string::npos || part == 0)
        return 0;
    size_t at = part + 5;
    long long pid = 0, counter = 0;
    if (!number(name, at, pid) || at >= name.size() || name[at++] != '-' ||
        !number(name, at, counter) || at >= name.size() || name[at++] != '-')
        return 0;
    const std::string& host = hostName();
    if (name.compare(at, host.size(), host) != 0)
        return 0;
    at += host.size();
    return at == name.size() || name[at] == '.' ? pid : 0;
}

void removeStaleOnce(const std::string& folder)
{
    static std::mutex mutex;
    static std::set<std::string> seen;
    {
        std::lock_guard<std::mutex> lock(mutex);
        if (!seen.insert(folder).second)
            return;
    }
    removeStale(folder);
}

} // namespace

std::string target(const std::string& input)
{
    std::string path = input;
    // A bound on the links followed, as the system has, so that a loop of links ends.
    for (int links = 0; links < 40; ++links) {
        struct stat info;
        if (::lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode))
            return path;
        std::string link(size_t(info.st_size > 0 ? info.st_size : 255) + 1, '\0');
        const ssize_t length = ::readlink(path.c_str(), link.data(), link.size());
        if (length <= 0 || size_t(length) >= link.size())
            return path;
        link.resize(size_t(length));
        if (link[0] != '/') {
            const std::string folder = oxFile::getFilePath(path);
            if (!folder.empty())
                link = (folder == "/" ? "/" : folder + "/") + link;
        }
        path = link;
    }
    return input;
}

std::string begin(const std::string& input)
{
    static std::atomic<unsigned> counter{0};
    const std::string path = target(input);
    const std::string folder = oxFile::getFilePath(path);
    const std::string extension = oxFile::getExtension(path);
    removeStaleOnce(folder.empty() ? "." : folder);
    std::string name = "." + oxFile::getBaseName(path) + ".part" + std::to_string(::getpid()) +
                       "-" + std::to_string(counter++) + "-" + hostName();
    if (!extension.empty())
        name += "." + extension;
    name = folder.empty() ? name : (folder == "/" ? "/" + name : folder + "/" + name);
    track(name);
    return name;
}

bool commit(const std::string& temporary, const std::string& path, std::string& error)
{
    const std::string destination = target(path);
    auto fail = [&](const char* what) {
        error = std::string(what) + ": " + std::strerror(errno);
        discard(temporary);
        return false;
    };
    // The data reaches the disk before the name does: a crash right after the rename leaves
    // the complete new file or the old one, never an empty file under the final name.
    const int fd = ::open(temporary.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return fail("can't open the finished file");
    const bool synced = ::fsync(fd) == 0;
    ::close(fd);
    if (!synced)
        return fail("can't flush the finished file");
    struct stat info;
    if (::stat(destination.c_str(), &info) == 0 &&
        ::chmod(temporary.c_str(), info.st_mode & 07777) != 0)
        return fail("can't keep the mode of the file replaced");
    if (::rename(temporary.c_str(), destination.c_str()) != 0)
        return fail("can't rename the finished file");
    forget(temporary);
    return true;
}

void discard(const std::string& temporary)
{
    ::unlink(temporary.c_str());
    forget(temporary);
}

void track(const std::string& temporary)
{
    installSignalHandlers();
    if (temporary.size() >= kMaxPath)
        return;
    for (Slot& slot : g_slots) {
        int expected = 0;
        if (slot.state.compare_exchange_strong(expected, 1, std::memory_order_acquire)) {
            std::memcpy(slot.path, temporary.c_str(), temporary.size() + 1);
            slot.state.store(2, std::memory_order_release);
            return;
        }
    }
    // More files at once than slots: this one is still removed at the next start.
}

void forget(const std::string& temporary)
{
    for (Slot& slot : g_slots) {
        int expected = 2;
        if (slot.state.load(std::memory_order_acquire) == 2 && temporary == slot.path &&
            slot.state.compare_exchange_strong(expected, 1, std::memory_order_acquire)) {
            slot.state.store(0, std::memory_order_release);
            return;
        }
    }
}

int removeStale(const std::string& folder)
{
    DIR* dir = ::opendir(folder.c_str());
    if (!dir)
        return 0;
    int removed = 0;
    while (const dirent* entry = ::readdir(dir)) {
        const std::string name = entry->d_name;
        const long long pid = writerOf(name);
        if (pid <= 0 || pid == ::getpid())
            continue;
        // kill with no signal only asks whether the process exists; EPERM means it does.
        if (::kill(pid_t(pid), 0) == 0 || errno != ESRCH)
            continue;
        if (::unlink((folder + "/" + name).c_str()) == 0)
            ++removed;
    }
    ::closedir(dir);
    return removed;
}

} // namespace oxPartialFiles
