// tav_fs_os.h - the operating-system calls of the file-system classes.
//
// Implemented once per platform in posix/ and win32/; the generic files call only these. Calls
// that change something report how they ended as an OsStatus; questions (does it exist, is it a
// directory, hidden, read-only) answer with a bool, a look that fails counting as "no".

#ifndef TAV_FS_OS_H
#define TAV_FS_OS_H

#include <cstddef>
#include <cstdint>
#include <ctime>

#include "../core/tav_os_status.h"
#include "tav_filename.h"

namespace tav::os {

// Backslash style on Windows, slash style on POSIX.
TavEnPathStyle nativePathStyle();

// Whether a file or directory of that name exists (the C runtime's access in existence mode).
bool pathExists(const char* path);

// The environment variables that name the temporary directory, in the order they are asked,
// ending with a null entry; and the directory to use when none of them is set.
const char* const* temporaryDirectoryVariables();
const char* fallbackTemporaryDirectory();

// The separators of a list of directories in an environment variable.
const char* pathListSeparators();

// The current working directory without a final separator (except for a root) into a buffer of
// size characters.
OsStatus currentDirectory(char* buffer, size_t size);
OsStatus changeDirectory(const char* path);
OsStatus makeDirectory(const char* path);
OsStatus removeDirectory(const char* path);
bool isDirectory(const char* path);

struct FileTimes {
  time_t creation;
  time_t lastAccess;
  time_t lastModification;
};
OsStatus fileTimes(const char* path, FileTimes* times);
OsStatus fileSize(const char* path, uint64_t* size);
// The hidden attribute; on POSIX a base name beginning with '.' (not "." or "..") of a name
// that exists.
bool isHidden(const char* path);
// Writing is not allowed (a name that does not exist counts).
bool isReadOnly(const char* path);
OsStatus setReadOnly(const char* path, bool readOnly);

OsStatus removeFile(const char* path);
// Renames without ever replacing: alreadyExists when to exists.
OsStatus renameNoReplace(const char* from, const char* to);
// Copies the bytes and the permissions of source to target, which must not exist
// (alreadyExists when it does). A failed copy removes what it made of target.
OsStatus copyToNewFile(const char* source, const char* target);
// Gives target the permissions of source (on Windows its hidden, system and archive
// attributes), so that a file written anew and renamed over source looks like it.
OsStatus copyPermissions(const char* source, const char* target);
// Moves source over target in one step: target is replaced whole or not at all.
OsStatus replaceFile(const char* source, const char* target);

// One entry of a directory search.
struct DirectoryEntry {
  const char* name;   // valid until the next step of the search
  bool directory;     // of the entry itself, a link not followed
  bool symbolicLink;  // a symbolic link or other reparse point
  bool hidden;
  bool readOnlyKnown;  // when false, ask isReadOnly with the entry's full name
  bool readOnly;
};

struct DirectorySearch;
enum class SearchStep { entry, end, failed };

// Starts a search of a directory (a text ending with its separator; the empty text is the
// current directory) into *search and fills the first entry; nothing is left open when the
// status is a failure. The search state is allocated through the memory manager, so this may
// throw when memory runs out.
OsStatus openDirectorySearch(const char* directory, DirectorySearch** search,
                             DirectoryEntry* first);
SearchStep nextDirectoryEntry(DirectorySearch* search, DirectoryEntry* entry);
void closeDirectorySearch(DirectorySearch* search);

}  // namespace tav::os

#endif  // TAV_FS_OS_H
