// tav_directory.cpp - one directory: create, remove, remove a tree, change to it, move up and
// down.
//
// The location is kept in the native style and, after construction, expanded, so the native
// separator is the only one the operations look for.

#include <cstring>

#include "tav_file.h"
#include "tav_fs_os.h"
#include "tav_path_text.h"
#include "tav_relative_path.h"

namespace {

char nativeSeparator() { return tav::path::separatorOf(tav::os::nativePathStyle()); }

// Where the first directory below the root begins: after "C:\\", after a leading separator, or
// after a server part and its separator.
size_t firstComponentOffset(const TavClLocation& location) {
  const size_t pathOffset = static_cast<size_t>(location.getPathStart() - location.getAsCString());
  if (location.hasDrive()) return pathOffset + 3;
  return pathOffset + 1;
}

}  // namespace

TavClDirectory::TavClDirectory() {
  char current[TAV_PATH_BUFFER_SIZE];
  if (tav::os::currentDirectory(current, sizeof current).ok()) {
    location = TavClLocation(current);
  } else {
    recordError(DIRECTORY_EXPANSION_FAILED, TAV_CLASS_IO_INVALID_NAME);
  }
}

TavClDirectory::TavClDirectory(const TavClLocation& source) { initExpanded(source.getAsCString()); }

TavClDirectory::TavClDirectory(const char* text) { initExpanded(text); }

TavClDirectory::TavClDirectory(const TavClFileABase& file) { initExpanded(file.getName()); }

TavClDirectory::~TavClDirectory() = default;

void TavClDirectory::initExpanded(const char* text) {
  const TavClLocation normalised(text != nullptr ? text : "", true);
  char expanded[TAV_PATH_BUFFER_SIZE];
  std::memcpy(expanded, normalised.getAsCString(), normalised.getLength() + 1);
  if (isRelativePath(expanded) && !expandRelativePath(expanded)) {
    recordError(DIRECTORY_EXPANSION_FAILED, TAV_CLASS_IO_INVALID_NAME);
  }
  location = TavClLocation(expanded);
}

void TavClDirectory::copyWithoutSeparator(char* out) const {
  std::memcpy(out, location.getAsCString(), location.getLength() + 1);
  if (location.getLength() > 1 && !location.isRoot() &&
      out[location.getLength() - 1] == nativeSeparator()) {
    out[location.getLength() - 1] = '\0';
  }
}

bool TavClDirectory::isExistent() const { return location.isExistent(); }

bool TavClDirectory::create() {
  const char separator = nativeSeparator();
  const char* text = location.getAsCString();
  const size_t length = location.getLength();
  char prefix[TAV_PATH_BUFFER_SIZE];
  for (size_t end = firstComponentOffset(location); end <= length; ++end) {
    if (end != length && text[end] != separator) continue;
    std::memcpy(prefix, text, end);
    prefix[end] = '\0';
    if (end == 0 || tav::os::isDirectory(prefix)) continue;
    // Another process may make the same directory between the test and the call.
    if (!tav::os::makeDirectory(prefix).ok() && !tav::os::isDirectory(prefix)) {
      recordError(DIRECTORY_COULD_NOT_CREATE, TAV_CLASS_IO_NOT_EXISTENT);
      return false;
    }
  }
  if (length == 0 || !tav::os::isDirectory(text)) {
    recordError(DIRECTORY_COULD_NOT_CREATE, TAV_CLASS_IO_NOT_EXISTENT);
    return false;
  }
  clearError();
  return true;
}

bool TavClDirectory::remove() {
  char path[TAV_PATH_BUFFER_SIZE];
  copyWithoutSeparator(path);
  const tav::os::OsStatus status = path[0] == '\0'
                                       ? tav::os::failureStatus(tav::os::OsFailure::notFound)
                                       : tav::os::removeDirectory(path);
  if (status.ok()) {
    clearError();
    return true;
  }
  recordError(DIRECTORY_COULD_NOT_REMOVE, status.is(tav::os::OsFailure::accessDenied)
                                              ? TAV_CLASS_IO_STILL_IN_USE
                                              : TAV_CLASS_IO_INVALID_NAME);
  return false;
}

bool TavClDirectory::removeAll(bool withContents) {
  if (withContents) removeTree(*this);
  return remove();
}

namespace {

bool removeFileEntry(const char* path) {
  if (tav::os::isReadOnly(path)) tav::os::setReadOnly(path, false);
  return tav::os::removeFile(path).ok();
}

bool removeTreeAt(const TavClLocation& directory);

// The sub-directory's location gets the native separator whatever characters its name holds.
bool removeSubTree(const char* nameWithPath) {
  char text[TAV_PATH_BUFFER_SIZE];
  const size_t length = std::strlen(nameWithPath);
  if (length + 1 > TAV_PATH_MAX_LENGTH) return false;
  std::memcpy(text, nameWithPath, length);
  text[length] = nativeSeparator();
  text[length + 1] = '\0';
  return removeTreeAt(TavClLocation(text));
}

// Recursion by location, never by a TavClDirectory: an entry's full name is already absolute,
// and expanding it again would drop components such as "x." from it.
bool removeTreeAt(const TavClLocation& directory) {
  TavClDirectoryWalk walk(directory);
  if (!walk.isValid()) return false;
  for (; walk.isValid(); walk.setToNext()) {
    // Directories named with a dot first or second (".", "..", ".git", "x.y") stay where they
    // are, with their contents; the final remove of the tree's root then reports them.
    if (walk.isDirectory() && !walk.isSubDirectory()) continue;
    // A cut full name would name some other file.
    if (walk.isNameWithPathCut()) return false;
    if (walk.isDirectory()) {
      if (!walk.isSymbolicLink() && !removeSubTree(walk.getNameWithPath())) return false;
      if (!tav::os::removeDirectory(walk.getNameWithPath()).ok()) return false;
    } else if (!removeFileEntry(walk.getNameWithPath())) {
      return false;
    }
  }
  return walk.getLastError().id == NO_ERROR;
}

}  // namespace

bool TavClDirectory::removeTree(const TavClDirectory& directory) {
  if (directory.location.getLength() == 0) return false;
  return removeTreeAt(directory.location);
}

bool TavClDirectory::setAsCurrent() {
  if (location.getLength() == 0 ||
      !tav::os::changeDirectory(location.getAsCString()).ok()) {
    recordError(DIRECTORY_COULD_NOT_CHANGE, TAV_CLASS_IO_NOT_EXISTENT);
    return false;
  }
  clearError();
  return true;
}

void TavClDirectory::attachSubDir(const TavClLocation& sub) {
  const TavClLocation normalised(sub.getAsCString(), true);
  const char* subPath = normalised.getPathStart();
  const size_t subLength = std::strlen(subPath);
  char combined[TAV_PATH_BUFFER_SIZE];
  if (location.getLength() + subLength > TAV_PATH_MAX_LENGTH) {
    recordError(DIRECTORY_EXPANSION_FAILED, TAV_CLASS_IO_INVALID_NAME);
    return;
  }
  std::memcpy(combined, location.getAsCString(), location.getLength());
  std::memcpy(combined + location.getLength(), subPath, subLength + 1);
  if (!expandRelativePath(combined)) {
    recordError(DIRECTORY_EXPANSION_FAILED, TAV_CLASS_IO_INVALID_NAME);
    return;
  }
  location = TavClLocation(combined);
}

bool TavClDirectory::detachLastSubDir() {
  const char separator = nativeSeparator();
  const char* text = location.getAsCString();
  const char* pathPart = location.getPathStart();
  const char* end = text + location.getLength();
  // The separator before the last component, which must lie in the path part.
  const char* cut = end;
  if (cut > pathPart && cut[-1] == separator) --cut;
  while (cut > pathPart && cut[-1] != separator) --cut;
  if (location.isRoot() || cut <= pathPart) {
    recordError(DIRECTORY_COULD_NOT_DETACH, TAV_CLASS_LOGIC);
    return false;
  }
  location = TavClLocation(text, static_cast<size_t>(cut - text));
  clearError();
  return true;
}

bool TavClDirectory::detachSubDirs(unsigned int count) {
  for (unsigned int i = 0; i < count; ++i) {
    if (!detachLastSubDir()) return false;
  }
  clearError();
  return true;
}

unsigned int TavClDirectory::getNumOfSubDirs() const {
  return tav::path::countSubDirectories(location.getPathStart(), nativeSeparator());
}

time_t TavClDirectory::getDateTimeOfCreation() const {
  char path[TAV_PATH_BUFFER_SIZE];
  copyWithoutSeparator(path);
  return getDateTimeOfCreation(path);
}

time_t TavClDirectory::getDateTimeOfLastAccess() const {
  char path[TAV_PATH_BUFFER_SIZE];
  copyWithoutSeparator(path);
  return getDateTimeOfLastAccess(path);
}

time_t TavClDirectory::getDateTimeOfLastModification() const {
  char path[TAV_PATH_BUFFER_SIZE];
  copyWithoutSeparator(path);
  return getDateTimeOfLastModification(path);
}
