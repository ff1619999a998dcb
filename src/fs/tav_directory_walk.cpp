// tav_directory_walk.cpp - the entries of a directory, one at a time.

#include <cstring>

#include "tav_directory_walker.h"
#include "tav_file.h"
#include "tav_path_text.h"
#include "tav_utils.h"

TavClOSSDirectoryWalker::TavClOSSDirectoryWalker(const TavClLocation& directory,
                                                 _TavStError* ownersRecord)
    : errorRecord(ownersRecord) {
  directoryLength = directory.getLength();
  std::memcpy(searchBuffer, directory.getAsCString(), directoryLength + 1);
  if (!tav::os::openDirectorySearch(searchBuffer, &search, &entry).ok()) {
    errorRecord->id = DIRWALK_COULD_NOT_INIT;
    errorRecord->errorClass = TAV_CLASS_IO_PROBLEM;
    invalidate();
    return;
  }
  valid = true;
  takeEntry();
}

TavClOSSDirectoryWalker::~TavClOSSDirectoryWalker() {
  if (search != nullptr) tav::os::closeDirectorySearch(search);
}

void TavClOSSDirectoryWalker::takeEntry() {
  const size_t used = tav::path::appendCut(searchBuffer, directoryLength, entry.name);
  searchBuffer[used] = '\0';
  nameCut = entry.name[used - directoryLength] != '\0';
}

void TavClOSSDirectoryWalker::invalidate() {
  valid = false;
  nameCut = false;
  searchBuffer[0] = '\0';
  entry = tav::os::DirectoryEntry{"", false, false, false, false, false};
}

bool TavClOSSDirectoryWalker::setToNext() {
  if (!valid) return false;
  switch (tav::os::nextDirectoryEntry(search, &entry)) {
    case tav::os::SearchStep::entry: takeEntry(); return true;
    case tav::os::SearchStep::failed:
      errorRecord->id = DIRWALK_NO_CONTINUATION;
      errorRecord->errorClass = TAV_CLASS_IO_PROBLEM;
      break;
    case tav::os::SearchStep::end: break;
  }
  invalidate();
  return false;
}

bool TavClOSSDirectoryWalker::isReadOnly() const {
  if (!valid) return false;
  return entry.readOnlyKnown ? entry.readOnly : tav::os::isReadOnly(searchBuffer);
}

TavClDirectoryWalk::TavClDirectoryWalk(const TavClLocation& directory) { start(directory); }

TavClDirectoryWalk::TavClDirectoryWalk(const TavClDirectory& directory) {
  start(directory.getLocation());
}

void TavClDirectoryWalk::start(const TavClLocation& directory) {
  walker = new TavClOSSDirectoryWalker(directory, &lastError);
}

TavClDirectoryWalk::~TavClDirectoryWalk() { delete walker; }

bool TavClDirectoryWalk::isValid() const { return walker->isValid(); }

bool TavClDirectoryWalk::setToNext() { return walker->setToNext(); }

const char* TavClDirectoryWalk::getNameWithPath() const { return walker->getNameWithPath(); }

const char* TavClDirectoryWalk::getNameWithoutPath() const { return walker->getNameWithoutPath(); }

bool TavClDirectoryWalk::isNameWithPathCut() const { return walker->isNameWithPathCut(); }

bool TavClDirectoryWalk::matchesWildcardPattern(const char* pattern) const {
  return walker->isValid() && pattern != nullptr &&
         tavMatchesWildcardPattern(pattern, walker->getNameWithoutPath(), false);
}

bool TavClDirectoryWalk::isDirectory() const { return walker->getEntry().directory; }

bool TavClDirectoryWalk::isSubDirectory() const {
  const char* name = walker->getNameWithoutPath();
  return isDirectory() && name[0] != '.' && (name[0] == '\0' || name[1] != '.');
}

bool TavClDirectoryWalk::isParentDirectory() const {
  const char* name = walker->getNameWithoutPath();
  return isDirectory() && name[0] == '.' && name[1] == '.';
}

bool TavClDirectoryWalk::isCurrentDirectory() const {
  return isDirectory() && std::strcmp(walker->getNameWithoutPath(), ".") == 0;
}

bool TavClDirectoryWalk::isHidden() const { return walker->getEntry().hidden; }

bool TavClDirectoryWalk::isReadOnly() const { return walker->isReadOnly(); }

bool TavClDirectoryWalk::isSymbolicLink() const { return walker->getEntry().symbolicLink; }
