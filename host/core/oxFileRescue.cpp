#include "oxFileRescue.h"

#include "oxFile.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace oxFileRescue {

std::string keepBeside(const std::string& input)
{
    const std::string path = oxFile::expandFilename(input);
    if (!oxFile::exists(path, true))
        return std::string();
    for (int number = 0; number < 1000; ++number) {
        const std::string kept = path + ".bad" + (number ? "." + std::to_string(number) : "");
        // A hard link takes the new name only when it is free, so that two savers never keep
        // their files under the same name; the old name then goes.
        if (::link(path.c_str(), kept.c_str()) == 0) {
            ::unlink(path.c_str());
            return kept;
        }
        if (errno == EEXIST)
            continue;
        // File systems without hard links: a checked rename does the same, not atomically.
        if (!oxFile::exists(kept) && std::rename(path.c_str(), kept.c_str()) == 0)
            return kept;
        if (!oxFile::exists(kept))
            return std::string();
    }
    return std::string();
}

} // namespace oxFileRescue
