// tav_directory_search_posix.cpp - reading a directory's entries on POSIX.
//
// readdir gives "." and ".." like the Windows search; the entry type comes from the directory
// itself where the file system supplies it, and from lstat otherwise, so links are never
// followed and no status call is made per entry on the common file systems.

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "../tav_fs_os.h"
#include "tav_memmgr.h"

namespace tav::os {

struct DirectorySearch {
  DIR* stream;
  size_t directoryLength;
  char path[TAV_PATH_BUFFER_SIZE];  // the directory text, then the entry name for lstat
};

namespace {

bool hiddenName(const char* name) {
  return name[0] == '.' && std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0;
}

void describe(DirectorySearch* search, const struct dirent* record, DirectoryEntry* entry) {
  entry->name = record->d_name;
  entry->hidden = hiddenName(record->d_name);
  entry->readOnlyKnown = false;
  entry->readOnly = false;
  unsigned char type = record->d_type;
  if (type == DT_UNKNOWN) {
    const size_t nameLength = std::strlen(record->d_name);
    struct stat status;
    if (search->directoryLength + nameLength < sizeof search->path) {
      std::memcpy(search->path + search->directoryLength, record->d_name, nameLength + 1);
      if (::lstat(search->path, &status) == 0) {
        type = S_ISDIR(status.st_mode) ? DT_DIR : S_ISLNK(status.st_mode) ? DT_LNK : DT_REG;
      }
      search->path[search->directoryLength] = '\0';
    }
  }
  entry->directory = type == DT_DIR;
  entry->symbolicLink = type == DT_LNK;
}

// The next record, or null at the end (errno 0) or on a failure (errno set).
const struct dirent* readRecord(DIR* stream) {
  errno = 0;
  return ::readdir(stream);
}

}  // namespace

OsStatus openDirectorySearch(const char* directory, DirectorySearch** opened,
                             DirectoryEntry* first) {
  auto* search = static_cast<DirectorySearch*>(tavMalloc(sizeof(DirectorySearch)));
  search->directoryLength = std::strlen(directory);
  std::memcpy(search->path, directory, search->directoryLength + 1);
  search->stream = ::opendir(directory[0] != '\0' ? directory : ".");
  const struct dirent* record = search->stream != nullptr ? readRecord(search->stream) : nullptr;
  if (record == nullptr) {
    // Every directory holds "." at least: no first entry means it could not be read.
    const OsStatus status = statusFromErrno(errno);
    closeDirectorySearch(search);
    return status.ok() ? failureStatus(OsFailure::failed) : status;
  }
  describe(search, record, first);
  *opened = search;
  return kOsSuccess;
}

SearchStep nextDirectoryEntry(DirectorySearch* search, DirectoryEntry* entry) {
  const struct dirent* record = readRecord(search->stream);
  if (record == nullptr) return errno == 0 ? SearchStep::end : SearchStep::failed;
  describe(search, record, entry);
  return SearchStep::entry;
}

void closeDirectorySearch(DirectorySearch* search) {
  if (search->stream != nullptr) ::closedir(search->stream);
  tavFree(search);
}

}  // namespace tav::os
