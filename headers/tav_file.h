// tav_file.h - files, directories and walks over the entries of a directory.
//
// TavClFile acts on one file, TavClDirectory on one directory, TavClDirectoryWalk visits the
// entries of a directory one by one. None of them throws, except when memory runs out (the
// memory manager's fatal exception): a failing operation returns false (or leaves the walk
// invalid) and keeps the error id and class in the object's error record, which getLastError
// returns. A successful remove, renameAs, copyTo, create, setAsCurrent or detachSubDirs clears
// the record; the attribute and date queries never touch it and answer 0 or false on failure.
//
// Directories are held in the native path style: every TavClDirectory constructor except the
// default one turns separators into the native one and expands a relative directory against the
// current working directory. Expanding follows these rules on the style's separator:
// - a relative text starts from the current working directory; a text with a server part keeps
//   it; a text with a drive keeps the drive;
// - a component whose last character is not '.' is kept; one ending in ".." removes the
//   component before it (there must be one: nothing above a root, a drive or a server part can
//   be removed); any other component ending in '.', such as "." or "x.", is dropped; empty
//   components (doubled separators) are dropped too;
// - the result ends with a separator, and a last component without a separator after it is
//   dropped: the rule is meant for directories, so "C:\\a\\b" expands to "C:\\a\\";
// - a failure (".." above the root, a result longer than 260 characters, no current working
//   directory) leaves the text empty.
// Windows paths may carry a drive and a server part; on POSIX only a leading '/' makes a path
// absolute.

#ifndef TAV_FILE_H
#define TAV_FILE_H

#include <stdint.h>
#include <time.h>

#include "tav_error.h"
#include "tav_export.h"
#include "tav_filename.h"
#include "tav_memmgr.h"

#ifdef __cplusplus

// What files and directories share: a name, an existence test, the relative-path rules and the
// three dates of a name.
class TAV_API TavClFileABase : public TavClMemoryManagedObject {
 public:
  virtual ~TavClFileABase();

  virtual operator const char*() const { return getName(); }
  // The full name: the file name, or the directory text with its final separator.
  virtual const char* getName() const = 0;
  virtual bool isExistent() const = 0;

  // The text is not absolute in the native style, or holds '.' followed by the native
  // separator. A null text is not relative.
  static bool isRelativePath(const char* text);
  // Expands text (a buffer of TAV_PATH_BUFFER_SIZE characters) in place by the rules at the top
  // of this header. False, with the text emptied, on failure. Never writes past 260 characters
  // and the terminator.
  static bool expandRelativePath(char* text);

  // Seconds since 1970 of the name's creation, last access and last modification; 0 when the
  // name cannot be queried. On POSIX the creation time is the birth time where the file system
  // records one, else the time of the last status change.
  static time_t getDateTimeOfCreation(const char* name);
  static time_t getDateTimeOfLastAccess(const char* name);
  static time_t getDateTimeOfLastModification(const char* name);

  const _TavStError& getLastError() const { return lastError; }

 protected:
  TavClFileABase() = default;
  TavClFileABase(const TavClFileABase&) = default;
  TavClFileABase& operator=(const TavClFileABase&) = default;

  void recordError(uint32_t id, TavEnErrorClass errorClass) { lastError = {id, errorClass}; }
  void clearError() { recordError(NO_ERROR, TAV_CLASS_UNKNOWN); }

  _TavStError lastError{NO_ERROR, TAV_CLASS_UNKNOWN};
};

// One file, by name. The file need not exist.
class TAV_API TavClFile : public TavClFileABase {
 public:
  // Copies the name; a name without an extension gets defaultExtension when one is given.
  explicit TavClFile(const TavClFilenameABase& name, const char* defaultExtension = nullptr);
  explicit TavClFile(const char* name, const char* defaultExtension = nullptr);
  TavClFile(const TavClFile& other) = default;
  TavClFile& operator=(const TavClFile& other) = default;
  ~TavClFile() override;

  const char* getName() const override { return name.getAsCString(); }
  const TavClFilename& getFilename() const { return name; }
  bool isExistent() const override;
  bool isFile() const { return true; }
  bool isDirectory() const { return false; }
  // The hidden attribute on Windows; on POSIX a base name that begins with '.'. False for a
  // name that does not exist.
  bool isHidden() const;
  // Writing is not allowed: the read-only attribute on Windows; on POSIX a clear owner write
  // bit or no write access. A name that does not exist cannot be written, so it counts.
  bool isReadOnly() const;
  // The extension without its dot, or "".
  const char* getFileType() const;
  // In bytes; 0 when the name cannot be queried.
  uint64_t getFileSize() const;

  using TavClFileABase::getDateTimeOfCreation;
  using TavClFileABase::getDateTimeOfLastAccess;
  using TavClFileABase::getDateTimeOfLastModification;
  time_t getDateTimeOfCreation() const { return getDateTimeOfCreation(getName()); }
  time_t getDateTimeOfLastAccess() const { return getDateTimeOfLastAccess(getName()); }
  time_t getDateTimeOfLastModification() const { return getDateTimeOfLastModification(getName()); }

  // Sets or clears the read-only attribute (on POSIX the owner's write bit). Records nothing.
  void setReadOnly(bool readOnly);

  // Copies the file over target, which is replaced whole or left as it was: the bytes go to a
  // temporary name in the target's directory first and then take the target's name. Copying
  // onto this file's own name (exactly in slash style, ignoring letter case otherwise) fails
  // with FILE_COULD_NOT_COPY_SELF. A read-only target is not replaced: FILE_COULD_NOT_COPY, as
  // for every other failure. The copy keeps the source's permissions (read-only included) when
  // keepReadOnly, and is writable otherwise.
  bool copyTo(const TavClFilenameABase& target, bool keepReadOnly);
  // To the same base name and extension in directory.
  bool copyTo(const TavClLocation& directory, bool keepReadOnly);
  // Makes the file writable, then removes it. FILE_COULD_NOT_REMOVE with IO_NOT_EXISTENT when
  // there is no such file, IO_PERMISSION_DENIED otherwise (and a file that was read-only is
  // read-only again).
  bool remove();
  // Gives the file a new name, which must not exist yet; the object takes the new name.
  // FILE_COULD_NOT_RENAME with IO_ALREADY_IN_USE when the new name exists, else
  // IO_PERMISSION_DENIED.
  bool renameAs(const TavClFilenameABase& newName);

  // True at once when name exists as it stands. Otherwise tries name's base name and extension
  // in each directory that the variable lists (separated by ';', on POSIX by ':' too; empty
  // entries are skipped) and leaves name at the first that exists. False, with name unchanged,
  // when the variable is not set or no directory holds the file.
  static bool determineFileInEnvVarPath(TavClFilename& name, const char* variable);

 protected:
  TavClFilename name;

 private:
  bool copyToName(const TavClFilenameABase& target, bool keepReadOnly);
};

// One directory, by its location (which ends with the native separator).
class TAV_API TavClDirectory : public TavClFileABase {
 public:
  // The current working directory; when it cannot be read (or is longer than 260 characters)
  // the location is empty and DIRECTORY_EXPANSION_FAILED is recorded.
  TavClDirectory();
  // Each of these normalises the separators and expands a relative directory;
  // DIRECTORY_EXPANSION_FAILED (and an empty location) when that fails.
  explicit TavClDirectory(const TavClLocation& location);
  explicit TavClDirectory(const char* text);
  // The name of file, taken as a directory.
  explicit TavClDirectory(const TavClFileABase& file);
  TavClDirectory(const TavClDirectory& other) = default;
  TavClDirectory& operator=(const TavClDirectory& other) = default;
  ~TavClDirectory() override;

  const char* getName() const override { return location.getAsCString(); }
  const TavClLocation& getLocation() const { return location; }
  bool isExistent() const override;

  // Creates every missing directory along the location. DIRECTORY_COULD_NOT_CREATE at the
  // first one that cannot be made (directories made before it stay).
  bool create();
  // Removes the directory, which must be empty. DIRECTORY_COULD_NOT_REMOVE with
  // IO_STILL_IN_USE when access was denied, IO_INVALID_NAME otherwise.
  bool remove();
  // With contents, removeTree first; then remove, which reports whatever was left.
  bool removeAll(bool withContents);
  // Removes what is inside directory: files (read-only ones too) and the sub-directories that
  // isSubDirectory accepts, with their contents. Directories such as ".git" or "x.y" are left
  // in place, so removeAll(true) of a tree holding one fails with DIRECTORY_COULD_NOT_REMOVE.
  // Symbolic links are removed, not followed. Stops at the first failure and returns false;
  // records nothing.
  static bool removeTree(const TavClDirectory& directory);
  // Makes the directory the process's current working directory. DIRECTORY_COULD_NOT_CHANGE.
  bool setAsCurrent();

  // Appends sub's path part and expands the result; on failure (DIRECTORY_EXPANSION_FAILED)
  // the location stays as it was.
  void attachSubDir(const TavClLocation& sub);
  // Goes up one directory. DIRECTORY_COULD_NOT_DETACH at a root, or when there is no directory
  // above.
  bool detachLastSubDir();
  // Goes up count directories, stopping at the first failure.
  bool detachSubDirs(unsigned int count);
  // The number of directories below the root: 0 for "C:\\" or "/", 2 for "/a/b/".
  unsigned int getNumOfSubDirs() const;

  // The dates of the directory (its text without the final separator).
  using TavClFileABase::getDateTimeOfCreation;
  using TavClFileABase::getDateTimeOfLastAccess;
  using TavClFileABase::getDateTimeOfLastModification;
  time_t getDateTimeOfCreation() const;
  time_t getDateTimeOfLastAccess() const;
  time_t getDateTimeOfLastModification() const;

  static bool isRelativeDirectory(const char* text) { return isRelativePath(text); }
  static bool expandRelativeDirectory(char* text) { return expandRelativePath(text); }

 protected:
  TavClLocation location;

 private:
  void initExpanded(const char* text);
  // The directory text without its final separator (kept for a root), for the C runtime.
  void copyWithoutSeparator(char* out) const;
};

class TavClOSSDirectoryWalker;

// The entries of one directory, in the operating system's order, "." and ".." included. The
// walk starts in the constructor: when the directory cannot be read the walk is invalid and
// DIRWALK_COULD_NOT_INIT is recorded. When the walk is invalid, the name queries give "" and
// the predicates false.
class TAV_API TavClDirectoryWalk : public TavClMemoryManagedObject {
 public:
  // The empty location walks the current working directory.
  explicit TavClDirectoryWalk(const TavClLocation& directory);
  explicit TavClDirectoryWalk(const TavClDirectory& directory);
  ~TavClDirectoryWalk();
  TavClDirectoryWalk(const TavClDirectoryWalk&) = delete;
  TavClDirectoryWalk& operator=(const TavClDirectoryWalk&) = delete;

  bool isValid() const;
  // Moves to the next entry. After the last one the walk becomes invalid; a failure of the
  // system call other than the end of the entries records DIRWALK_NO_CONTINUATION.
  bool setToNext();

  // The directory text followed by the entry's name, cut at 260 characters.
  const char* getNameWithPath() const;
  const char* getNameWithoutPath() const;
  // The name did not fit after the directory text, so getNameWithPath names something else.
  bool isNameWithPathCut() const;
  // The library's wildcard match of pattern against the entry's name, ignoring letter case.
  bool matchesWildcardPattern(const char* pattern) const;

  bool isDirectory() const;
  // A directory whose name neither begins with '.' nor has '.' as its second character:
  // "." and ".." are left out, and so, deliberately, are ".git", "x.y" and "..z".
  bool isSubDirectory() const;
  // A directory whose name begins with "..".
  bool isParentDirectory() const;
  // The directory ".".
  bool isCurrentDirectory() const;
  // As TavClFile::isHidden and isReadOnly for the entry; "." and ".." are not hidden.
  bool isHidden() const;
  bool isReadOnly() const;
  // A symbolic link (on Windows any reparse point); isDirectory tells what kind of entry the
  // link itself is, and the link is never followed.
  bool isSymbolicLink() const;

  const _TavStError& getLastError() const { return lastError; }

 private:
  void start(const TavClLocation& directory);

  TavClOSSDirectoryWalker* walker = nullptr;
  _TavStError lastError{NO_ERROR, TAV_CLASS_UNKNOWN};
};

#endif /* __cplusplus */

#endif /* TAV_FILE_H */
