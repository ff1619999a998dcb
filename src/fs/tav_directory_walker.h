// tav_directory_walker.h - the search behind TavClDirectoryWalk.
//
// A search buffer holds the directory text with the current entry's name after it, so the full
// name of an entry costs no copy of the directory. The operating system's search lives behind
// the file-system seam.

#ifndef TAV_DIRECTORY_WALKER_H
#define TAV_DIRECTORY_WALKER_H

#include "tav_error.h"
#include "tav_filename.h"
#include "tav_fs_os.h"
#include "tav_memmgr.h"

class TavClOSSDirectoryWalker : public TavClMemoryManagedObject {
 public:
  // Starts the search; on failure the walker is invalid and errorRecord holds
  // DIRWALK_COULD_NOT_INIT. errorRecord must outlive the walker.
  TavClOSSDirectoryWalker(const TavClLocation& directory, _TavStError* errorRecord);
  ~TavClOSSDirectoryWalker();
  TavClOSSDirectoryWalker(const TavClOSSDirectoryWalker&) = delete;
  TavClOSSDirectoryWalker& operator=(const TavClOSSDirectoryWalker&) = delete;

  bool isValid() const { return valid; }
  bool setToNext();

  const char* getNameWithPath() const { return searchBuffer; }
  const char* getNameWithoutPath() const { return entry.name; }
  bool isNameWithPathCut() const { return nameCut; }
  const tav::os::DirectoryEntry& getEntry() const { return entry; }
  bool isReadOnly() const;

 private:
  void takeEntry();
  void invalidate();

  char searchBuffer[TAV_PATH_BUFFER_SIZE];
  size_t directoryLength;
  bool valid = false;
  bool nameCut = false;
  _TavStError* errorRecord;
  tav::os::DirectorySearch* search = nullptr;
  tav::os::DirectoryEntry entry{"", false, false, false, false, false};
};

#endif  // TAV_DIRECTORY_WALKER_H
