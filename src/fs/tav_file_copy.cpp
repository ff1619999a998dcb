// tav_file_copy.cpp - copying a file so that the target is replaced whole or not at all.
//
// The bytes go to a new temporary name in the target's directory (the same file system, so the
// last step is a rename), get their final permissions there, and only then take the target's
// name. A failure at any step removes the temporary file and leaves the target as it was.

#include "tav_error.h"
#include "tav_file.h"
#include "tav_fs_os.h"
#include "tav_path_text.h"

namespace {

// A name another process took between the existence test and the copy is simply tried again.
constexpr int kTemporaryNameAttempts = 8;
constexpr const char* kTemporaryPrefix = "~TAV";

bool namesSameFile(const TavClFilenameABase& self, const TavClFilenameABase& target) {
  if (self.getLength() != target.getLength()) return false;
  return tav::path::equalPrefix(self.getAsCString(), target.getAsCString(), self.getLength(),
                                tav::path::ignoresCase(self.getPathStyle()));
}

// Copies source to a fresh temporary name beside target; the name is left in temporary.
bool copyToTemporary(const char* source, const TavClFilename& target, TavClFilename* temporary) {
  for (int attempt = 0; attempt < kTemporaryNameAttempts; ++attempt) {
    try {
      *temporary = TavClTmpFilename(target, kTemporaryPrefix);
    } catch (const TavClException&) {
      return false;  // the directory leaves no room for a temporary name
    }
    const tav::os::OsStatus status = tav::os::copyToNewFile(source, temporary->getAsCString());
    if (status.ok()) return true;
    if (!status.is(tav::os::OsFailure::alreadyExists)) return false;
  }
  return false;
}

void discardTemporary(const TavClFilename& temporary) {
  tav::os::setReadOnly(temporary.getAsCString(), false);
  tav::os::removeFile(temporary.getAsCString());
}

}  // namespace

bool TavClFile::copyTo(const TavClFilenameABase& target, bool keepReadOnly) {
  return copyToName(target, keepReadOnly);
}

bool TavClFile::copyTo(const TavClLocation& directory, bool keepReadOnly) {
  return copyToName(TavClFilename(directory, name.getName(), nullptr), keepReadOnly);
}

bool TavClFile::copyToName(const TavClFilenameABase& targetName, bool keepReadOnly) {
  if (namesSameFile(name, targetName)) {
    recordError(FILE_COULD_NOT_COPY_SELF, TAV_CLASS_INCONSISTENT_SITUATION);
    return false;
  }
  const TavClFilename target(targetName);
  // A read-only file is not replaced; the rename at the end would otherwise do it on POSIX.
  if (target.isExistent() && tav::os::isReadOnly(target.getAsCString())) {
    recordError(FILE_COULD_NOT_COPY, TAV_CLASS_IO_PROBLEM);
    return false;
  }

  TavClFilename temporary;
  if (!copyToTemporary(getName(), target, &temporary)) {
    recordError(FILE_COULD_NOT_COPY, TAV_CLASS_IO_PROBLEM);
    return false;
  }
  const bool permissionsSet =
      keepReadOnly || tav::os::setReadOnly(temporary.getAsCString(), false).ok();
  if (!permissionsSet ||
      !tav::os::replaceFile(temporary.getAsCString(), target.getAsCString()).ok()) {
    discardTemporary(temporary);
    recordError(FILE_COULD_NOT_COPY, TAV_CLASS_IO_PROBLEM);
    return false;
  }
  clearError();
  return true;
}
