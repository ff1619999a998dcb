// tav_tmp_filename.cpp - names for new temporary files, backup names and the temporary
// directory.

#include <cstring>

#include "tav_environment.h"
#include "tav_error.h"
#include "tav_filename.h"
#include "tav_fs_os.h"
#include "tav_path_text.h"
#include "tav_process.h"
#include "tav_random.h"
#include "tav_utils.h"

namespace {

// One generator for the whole process, so that names made in the same millisecond still
// differ. The process id in the seed keeps two processes started together apart as well.
const TavClRandomNumberGenerator& temporaryNameGenerator() {
  static const TavClRandomNumberGenerator generator(tavGetTimeStamp() ^
                                                    (TavClProcessProperty().getId() * 2654435761u));
  return generator;
}

// Each attempt costs one existence test. The bound matters only when the random characters are
// cut away by a directory near 260 characters, or when the directory is crowded with names of
// this prefix; a free name among 41^3 or more is otherwise found within a few attempts.
constexpr unsigned kMaxAttempts = 10000;
constexpr unsigned kAlphabetSize = 41;

}  // namespace

const char* tavGetTmpDirectory(void) {
  for (const char* const* name = tav::os::temporaryDirectoryVariables(); *name != nullptr; ++name) {
    const char* value = TavClEnvironmentVariableQueryOnly(*name).getValue();
    // An empty value cannot exist on Windows; on POSIX it is treated the same, as unset.
    if (value != nullptr && *value != '\0') return value;
  }
  return tav::os::fallbackTemporaryDirectory();
}

TavClTmpFilename::TavClTmpFilename() : TavClFilenameABase(tavGetTmpDirectory(), "", nullptr) {
  initPrefix(kDefaultPrefix);
}

TavClTmpFilename::TavClTmpFilename(const char* prefix)
    : TavClFilenameABase(tavGetTmpDirectory(), "", nullptr) {
  initPrefix(prefix);
}

TavClTmpFilename::TavClTmpFilename(const char* directory, const char* prefix)
    : TavClFilenameABase(directory != nullptr ? directory : tavGetTmpDirectory(), "", nullptr) {
  initPrefix(prefix);
}

TavClTmpFilename::TavClTmpFilename(const TavClLocation& directory)
    : TavClFilenameABase(directory.getAsCString(), "", nullptr) {
  initPrefix(kDefaultPrefix);
}

TavClTmpFilename::TavClTmpFilename(const TavClLocation& directory, const char* prefix)
    : TavClFilenameABase(directory.getAsCString(), "", nullptr) {
  initPrefix(prefix);
}

TavClTmpFilename::TavClTmpFilename(const TavClFilename& name, const char* prefix)
    : TavClFilenameABase(TavClLocation(name).getAsCString(), "", nullptr) {
  initPrefix(prefix);
}

// The buffer holds the directory when this runs. Each attempt writes prefix, random characters,
// '.' and the reversed last three digits of the process id after it, and the first name that no
// file has is kept.
void TavClTmpFilename::initPrefix(const char* prefix) {
  if (prefix == nullptr) prefix = kDefaultPrefix;
  const size_t directoryLength = length;

  char name[kBaseNameLength + 1 + 3 + 1];
  size_t prefixLength = 0;
  while (prefixLength < kMaxPrefixLength && prefix[prefixLength] != '\0') {
    name[prefixLength] = prefix[prefixLength];
    ++prefixLength;
  }
  uint32_t processId = TavClProcessProperty().getId();
  name[kBaseNameLength] = '.';
  for (size_t digit = 0; digit < 3; ++digit) {
    name[kBaseNameLength + 1 + digit] = static_cast<char>('0' + processId % 10);
    processId /= 10;
  }
  name[sizeof(name) - 1] = '\0';

  for (unsigned attempt = 0; attempt < kMaxAttempts; ++attempt) {
    uint32_t number = temporaryNameGenerator().getRandomNumber();
    for (size_t position = kBaseNameLength; position > prefixLength; --position) {
      name[position - 1] = kAlphabet[number % kAlphabetSize];
      number /= kAlphabetSize;
    }
    // Always after the bare directory, so that a prefix holding a separator cannot move the
    // directory's end from one attempt to the next.
    const size_t used = tav::path::appendCut(text, directoryLength, name);
    text[used] = '\0';
    init(text, used);
    if (!isExistent()) return;
  }
  TAV_THROW(
      "No unused temporary file name was found: shorten the directory or clear out old "
      "temporary files",
      NO_ERROR, TAV_CLASS_RESOURCE_EXHAUSTED, TAV_SEVERITY_NORMAL, TAV_ACTION_USER);
}

TavClBakFilename::TavClBakFilename(const TavClFilenameABase& name) : TavClFilenameABase(name) {
  appendKeepingParts(".BAK");
}
