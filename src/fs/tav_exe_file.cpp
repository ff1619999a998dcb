// tav_exe_file.cpp - a program, found along the system's search order.
//
// A name that names its directory is taken at its word; the search is the fallback that the
// variable TAV_NEWPROCESS_USEPATH switches on, so that a program moved elsewhere on the path
// still starts. A bare name is always searched, as the system's own launcher would.

#include "tav_environment.h"
#include "tav_exe_search_os.h"
#include "tav_exefile.h"

namespace {

// The name names a directory (a server part counts): its base name does not start its path.
bool hasDirectoryPart(const TavClFilenameABase& name) {
  return name.getName() != name.getAsCString();
}

}  // namespace

TavClExeFile::TavClExeFile(const TavClFilenameABase& fileName)
    : TavClFile(fileName, tav::os::programExtension()) {
  if (!hasDirectoryPart(name)) {
    determinePath(0, getSystemPathEnvironmentVariable());
    return;
  }
  if (isExistent()) return;
  if (!TavClEnvironmentVariableQueryOnly("TAV_NEWPROCESS_USEPATH").hasValueEnabled()) return;
  char found[TAV_PATH_BUFFER_SIZE];
  if (tav::os::searchProgram(name.getName(), found, sizeof found).ok()) {
    name = TavClFilename(found);
    foundInSystemPath = true;
  }
}

TavClExeFile::TavClExeFile(const char* fileName) : TavClExeFile(TavClFilename(fileName)) {}

TavClExeFile::TavClExeFile(const TavClFilenameABase& fileName, const char* defaultExtension,
                           unsigned int reserved, const char* variable)
    : TavClFile(fileName, defaultExtension), searchesLibrary(true) {
  if (!hasDirectoryPart(name)) determinePath(reserved, variable);
}

TavClExeFile::~TavClExeFile() = default;

bool TavClExeFile::determinePath(unsigned int, const char*) {
  char found[TAV_PATH_BUFFER_SIZE];
  const tav::os::OsStatus status = searchesLibrary
                                       ? tav::os::searchLibrary(getName(), found, sizeof found)
                                       : tav::os::searchProgram(getName(), found, sizeof found);
  foundInSystemPath = status.ok();
  if (foundInSystemPath) name = TavClFilename(found);
  return foundInSystemPath;
}

const char* TavClExeFile::getDefaultFileType() { return tav::os::programExtension(); }
