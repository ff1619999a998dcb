// tav_file_base.cpp - what files and directories share: relative paths and dates of a name.

#include <cstring>

#include "tav_file.h"
#include "tav_fs_os.h"
#include "tav_relative_path.h"

TavClFileABase::~TavClFileABase() = default;

bool TavClFileABase::isRelativePath(const char* text) {
  return tav::path::isRelativePathIn(text, tav::os::nativePathStyle());
}

bool TavClFileABase::expandRelativePath(char* text) {
  if (text == nullptr) return false;
  char currentDirectory[TAV_PATH_BUFFER_SIZE];
  if (!tav::os::currentDirectory(currentDirectory, sizeof currentDirectory).ok()) {
    text[0] = '\0';
    return false;
  }
  return tav::path::expandRelativePathIn(text, tav::os::nativePathStyle(), currentDirectory);
}

namespace {

tav::os::FileTimes timesOf(const char* name) {
  tav::os::FileTimes times{0, 0, 0};
  if (name == nullptr || !tav::os::fileTimes(name, &times).ok()) return {0, 0, 0};
  return times;
}

}  // namespace

time_t TavClFileABase::getDateTimeOfCreation(const char* name) { return timesOf(name).creation; }

time_t TavClFileABase::getDateTimeOfLastAccess(const char* name) {
  return timesOf(name).lastAccess;
}

time_t TavClFileABase::getDateTimeOfLastModification(const char* name) {
  return timesOf(name).lastModification;
}
