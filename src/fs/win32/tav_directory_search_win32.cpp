// tav_directory_search_win32.cpp - reading a directory's entries on Windows.
//
// FindFirstFileA with the pattern "*.*" after the directory; the find data carries the
// attributes, so no entry needs a further call.

#include <windows.h>

#include <cstring>

#include "../tav_fs_os.h"
#include "tav_memmgr.h"

namespace tav::os {

struct DirectorySearch {
  HANDLE handle;
  WIN32_FIND_DATAA data;
};

namespace {

void describe(const WIN32_FIND_DATAA& data, DirectoryEntry* entry) {
  const DWORD attributes = data.dwFileAttributes;
  entry->name = data.cFileName;
  entry->directory = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  entry->symbolicLink = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  entry->hidden = (attributes & FILE_ATTRIBUTE_HIDDEN) != 0;
  entry->readOnlyKnown = true;
  entry->readOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

}  // namespace

OsStatus openDirectorySearch(const char* directory, DirectorySearch** opened,
                             DirectoryEntry* first) {
  constexpr char kPattern[] = "*.*";
  char pattern[TAV_PATH_BUFFER_SIZE + sizeof kPattern];
  const size_t length = std::strlen(directory);
  std::memcpy(pattern, directory, length);
  std::memcpy(pattern + length, kPattern, sizeof kPattern);

  auto* search = static_cast<DirectorySearch*>(tavMalloc(sizeof(DirectorySearch)));
  search->handle = ::FindFirstFileA(pattern, &search->data);
  if (search->handle == INVALID_HANDLE_VALUE) {
    const OsStatus status = statusFromWindowsError(::GetLastError());
    tavFree(search);
    return status;
  }
  describe(search->data, first);
  *opened = search;
  return kOsSuccess;
}

SearchStep nextDirectoryEntry(DirectorySearch* search, DirectoryEntry* entry) {
  if (!::FindNextFileA(search->handle, &search->data)) {
    return ::GetLastError() == ERROR_NO_MORE_FILES ? SearchStep::end : SearchStep::failed;
  }
  describe(search->data, entry);
  return SearchStep::entry;
}

void closeDirectorySearch(DirectorySearch* search) {
  ::FindClose(search->handle);
  tavFree(search);
}

}  // namespace tav::os
