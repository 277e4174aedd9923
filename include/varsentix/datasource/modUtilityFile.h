#pragma once
// modUtilityFile: existence test and deletion of files, with retries for a file still in use.
//
// A file counts as "in use" while another process holds a lock on it (flock or a POSIX record
// lock): deleteFile leaves such a file alone, as the platform it came from leaves a file that
// another process keeps open. Unlinking an open but unlocked file succeeds, as it always does
// on Linux.
#include <cstdint>
#include <functional>
#include <string>

namespace varsentix::modUtilityFile {

// True when path names an existing file: the trimmed path is looked up (wildcards * and ?
// honoured; read-only and hidden files found; directories not), and the bare name of the first
// match must occur in path, compared without regard to letter case. A pattern therefore finds
// only a file whose name is spelled out in it. Failures give false; the empty text gives false.
bool fileExists(const std::string& path);

// Deletes every file that path names (wildcards * and ? honoured). True when at least one file
// matched and every match was deleted; false on any failure (nothing matched, a file in use, no
// permission, a directory).
bool deleteFile(const std::string& path);

// True when the file is gone. A missing file returns at once. Otherwise up to 21 attempts are
// made, one at once and one after each of the first 20 one-second waits; a 21st wait comes
// before giving up with false, so a file that cannot be deleted blocks about 21 seconds.
// The waits go through Sleep, so they block the calling thread.
bool deleteFileWithRetry(const std::string& path);

// Waits milliseconds by calling the installed sleep hook (by default the real clock).
using SleepHook = std::function<void(int32_t milliseconds)>;
void Sleep(int32_t milliseconds);
// Installs a process-wide sleep hook; an empty function restores the real clock. Returns the
// hook it replaces. Tests count the waits of deleteFileWithRetry with it.
SleepHook setSleepHook(SleepHook hook);

}  // namespace varsentix::modUtilityFile
