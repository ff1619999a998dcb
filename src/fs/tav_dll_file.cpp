// tav_dll_file.cpp - a dynamic library, loaded for the lifetime of its object, and its entry
// points, for C++ and for C callers.

#include "tav_exe_search_os.h"
#include "tav_exefile.h"
#include "tav_library_os.h"

TavClDllFile::TavClDllFile(const TavClFilenameABase& fileName)
    : TavClExeFile(fileName, tav::os::libraryExtension(), 0, getSystemPathEnvironmentVariable()) {
  load();
}

TavClDllFile::TavClDllFile(const char* fileName) : TavClDllFile(TavClFilename(fileName)) {}

TavClDllFile::~TavClDllFile() { tav::os::closeLibrary(module); }

const char* TavClDllFile::getDefaultFileType() { return tav::os::libraryExtension(); }

bool TavClDllFile::load() {
  const tav::os::OsStatus status =
      tav::os::openLibrary(getName(), &module, loadFailure, sizeof loadFailure);
  if (status.ok()) {
    loadFailure[0] = '\0';
    return true;
  }
  recordError(static_cast<uint32_t>(status.code), TAV_CLASS_RESOURCE_MISSING);
  return false;
}

void* TavClDllProcLoaderFile::getProcedure(const char* procedureName) const {
  return tav::os::findLibrarySymbol(module, procedureName);
}

void* tavDllProcLoaderOpen(const char* name) {
  // Allocated through the memory manager (the file classes are memory-managed objects).
  auto* loader = new TavClDllProcLoaderFile(name);
  if (loader->isLoaded()) return loader;
  delete loader;
  return nullptr;
}

void* tavDllProcLoaderGetProcedure(void* handle, const char* name) {
  if (handle == nullptr) return nullptr;
  return static_cast<const TavClDllProcLoaderFile*>(handle)->getProcedure(name);
}

void tavDllProcLoaderClose(void* handle) { delete static_cast<TavClDllProcLoaderFile*>(handle); }
