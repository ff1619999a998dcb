// tav_file.cpp - one file: attributes, remove, rename and the search along a path variable.

#include <cstring>

#include "tav_environment.h"
#include "tav_file.h"
#include "tav_fs_os.h"
#include "tav_path_text.h"

TavClFile::TavClFile(const TavClFilenameABase& fileName, const char* defaultExtension)
    : name(fileName) {
  if (*name.getExtension() == '\0' && defaultExtension != nullptr && *defaultExtension != '\0') {
    name.setNewExtension(defaultExtension);
  }
}

TavClFile::TavClFile(const char* fileName, const char* defaultExtension)
    : TavClFile(TavClFilename(fileName), defaultExtension) {}

TavClFile::~TavClFile() = default;

bool TavClFile::isExistent() const { return name.isExistent(); }

bool TavClFile::isHidden() const { return tav::os::isHidden(getName()); }

bool TavClFile::isReadOnly() const { return tav::os::isReadOnly(getName()); }

const char* TavClFile::getFileType() const {
  const char* extension = name.getExtension();
  return *extension == '.' ? extension + 1 : extension;
}

uint64_t TavClFile::getFileSize() const {
  uint64_t size = 0;
  return tav::os::fileSize(getName(), &size).ok() ? size : 0;
}

void TavClFile::setReadOnly(bool readOnly) { tav::os::setReadOnly(getName(), readOnly); }

bool TavClFile::remove() {
  const bool wasReadOnly = isExistent() && isReadOnly();
  if (wasReadOnly) tav::os::setReadOnly(getName(), false);
  const tav::os::OsStatus status = tav::os::removeFile(getName());
  if (status.ok()) {
    clearError();
    return true;
  }
  if (wasReadOnly) tav::os::setReadOnly(getName(), true);
  recordError(FILE_COULD_NOT_REMOVE, status.is(tav::os::OsFailure::notFound)
                                         ? TAV_CLASS_IO_NOT_EXISTENT
                                         : TAV_CLASS_IO_PERMISSION_DENIED);
  return false;
}

bool TavClFile::renameAs(const TavClFilenameABase& newName) {
  const tav::os::OsStatus status = tav::os::renameNoReplace(getName(), newName.getAsCString());
  if (status.ok()) {
    name = newName;
    clearError();
    return true;
  }
  recordError(FILE_COULD_NOT_RENAME, status.is(tav::os::OsFailure::alreadyExists)
                                         ? TAV_CLASS_IO_ALREADY_IN_USE
                                         : TAV_CLASS_IO_PERMISSION_DENIED);
  return false;
}

bool TavClFile::determineFileInEnvVarPath(TavClFilename& fileName, const char* variable) {
  if (fileName.isExistent()) return true;
  if (variable == nullptr) return false;
  const char* value = TavClEnvironmentVariableQueryOnly(variable).getValue();
  if (value == nullptr) return false;

  const char* separators = tav::os::pathListSeparators();
  char directory[TAV_PATH_BUFFER_SIZE];
  const char* entry = value;
  while (*entry != '\0') {
    const size_t entryLength = std::strcspn(entry, separators);
    if (entryLength != 0) {
      const size_t kept = entryLength < TAV_PATH_MAX_LENGTH ? entryLength : TAV_PATH_MAX_LENGTH;
      std::memcpy(directory, entry, kept);
      directory[kept] = '\0';
      TavClFilename candidate(fileName);
      candidate.setNewPath(directory);
      if (candidate.isExistent()) {
        fileName = candidate;
        return true;
      }
    }
    entry += entryLength;
    if (*entry != '\0') ++entry;
  }
  return false;
}
