#pragma once

#include <string>

/// Files being written under a temporary name beside their final name, renamed into place when
/// complete. Every temporary name is known here until it is committed or discarded, so that a
/// process ended by SIGTERM, SIGHUP or SIGINT removes its partial files on the way out, and the
/// partial files of a process that died anyway are removed by the next one writing into that
/// folder.
///
/// Names: "FOLDER/.BASE.partPID-N-HOST.EXT". PID and HOST tell whether the writer still runs
/// (only files of this host are ever judged); EXT stays last so that encoders that go by the
/// extension still recognise the format.
namespace oxPartialFiles {

/// The file a write to path ends in: path itself, or the file a symbolic link at path points to
/// (followed through chains of links), so that writing keeps the link.
std::string target(const std::string& path);

/// A fresh temporary name in the folder of target(path), tracked from now on. The first call
/// for a folder in this process removes the partial files of dead processes there.
std::string begin(const std::string& path);

/// Moves a complete temporary file over target(path): its data is flushed to disk first and it
/// takes the mode of the file it replaces. On failure the temporary is removed and error says
/// why. The temporary is no longer tracked either way.
bool commit(const std::string& temporary, const std::string& path, std::string& error);

/// Removes a temporary file that won't be committed and stops tracking it.
void discard(const std::string& temporary);

/// Tracks a temporary made elsewhere (a unique name of mkstemp) so that the signal handlers
/// remove it too; forget() ends that.
void track(const std::string& temporary);
void forget(const std::string& temporary);

/// Removes the partial files of this host's processes that no longer run from folder; the
/// number of files removed.
int removeStale(const std::string& folder);

} // namespace oxPartialFiles
