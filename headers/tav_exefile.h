/* tav_exefile.h - programs and dynamic libraries: finding them and calling into them.
 *
 * TavClExeFile names a program and finds it along the system's search order; TavClDllFile names
 * a dynamic library and loads it on construction; TavClDllProcLoaderFile looks up its entry
 * points. The three tavDllProcLoader functions offer the same to C callers on an opaque handle.
 *
 * The search order is the system's:
 * - Windows: SearchPathA's default order (the program's directory, the current directory, the
 *   system directories, then each directory of PATH), for programs and libraries alike;
 * - POSIX, programs: the directories of PATH in order, as execvp searches them; an empty entry
 *   is the current directory, and only a regular file with execute permission counts (a
 *   directory or a file without the permission is passed over). When PATH is not set, the
 *   system's default path is used. A name with a directory part is never searched;
 * - POSIX, libraries: no search of their own; dlopen's search applies when the library loads,
 *   so isFoundInSystemPath stays false.
 * A name that is not found is no error: the name stays as it was given.
 *
 * Default extensions: a name without an extension gets "EXE" (programs) or ".DLL" (libraries)
 * on Windows; on POSIX programs get none and libraries get ".so".
 *
 * The C part of this header compiles as C.
 */
#ifndef TAV_EXEFILE_H
#define TAV_EXEFILE_H

#include "tav_export.h"
#include "tav_file.h"

TAV_EXTERN_C_BEGIN

/* Loads the library name (found as TavClDllFile finds it) and returns an opaque handle, or null
 * when it could not be loaded; nothing stays allocated then. */
TAV_API void* tavDllProcLoaderOpen(const char* name);
/* The address of the entry point name in the library of handle, or null. */
TAV_API void* tavDllProcLoaderGetProcedure(void* handle, const char* name);
/* Unloads the library and frees the handle; a null handle is ignored. */
TAV_API void tavDllProcLoaderClose(void* handle);

TAV_EXTERN_C_END

#ifdef __cplusplus

/* A program, located on construction. */
class TAV_API TavClExeFile : public TavClFile {
 public:
  /* A name with a directory part is taken as it stands when the file exists. When it does not,
   * and only when the variable TAV_NEWPROCESS_USEPATH is enabled, its base name (with the
   * extension) is searched in the system's order instead. A name without a directory part is
   * searched at once. What is found replaces the name, as the full name the search gives. */
  explicit TavClExeFile(const TavClFilenameABase& name);
  explicit TavClExeFile(const char* name);
  TavClExeFile(const TavClExeFile& other) = default;
  TavClExeFile& operator=(const TavClExeFile& other) = default;
  ~TavClExeFile() override;

  /* Searches the name as it is held in the system's order. Both arguments are ignored: the
   * system's order applies whatever variable is named. True, with the name replaced by the full
   * name found and the flag set, when found; false with the flag cleared otherwise. */
  bool determinePath(unsigned int reserved, const char* variable);
  /* The name was found by a search of the system's order. */
  bool isFoundInSystemPath() const { return foundInSystemPath; }

  /* "EXE" on Windows, "" on POSIX. */
  static const char* getDefaultFileType();
  static const char* getSystemPathEnvironmentVariable() { return "PATH"; }

 protected:
  /* For libraries: a name with a directory part is kept (the flag cleared); a name without one
   * goes through determinePath. */
  TavClExeFile(const TavClFilenameABase& name, const char* defaultExtension, unsigned int reserved,
               const char* variable);

  bool foundInSystemPath = false;

 private:
  bool searchesLibrary = false;
};

/* A dynamic library, loaded on construction and unloaded by the destructor. A failed load
 * leaves isLoaded false and records the system's code (errno on POSIX, GetLastError on Windows)
 * as error id, with the class RESOURCE_MISSING, in the file's error record. */
class TAV_API TavClDllFile : public TavClExeFile {
 public:
  explicit TavClDllFile(const TavClFilenameABase& name);
  explicit TavClDllFile(const char* name);
  ~TavClDllFile() override;
  TavClDllFile(const TavClDllFile&) = delete;
  TavClDllFile& operator=(const TavClDllFile&) = delete;

  bool isLoaded() const { return module != nullptr; }
  /* The system's own words for the last failed load, or "". */
  const char* getLoadFailureText() const { return loadFailure; }

  /* ".DLL" on Windows, ".so" on POSIX. */
  static const char* getDefaultFileType();

 protected:
  bool load();

  void* module = nullptr;

 private:
  char loadFailure[256] = {};
};

/* A dynamic library whose entry points are looked up by name. */
class TAV_API TavClDllProcLoaderFile : public TavClDllFile {
 public:
  explicit TavClDllProcLoaderFile(const TavClFilenameABase& name) : TavClDllFile(name) {}
  explicit TavClDllProcLoaderFile(const char* name) : TavClDllFile(name) {}

  /* The entry point's address; null when it does not exist or the library is not loaded. */
  void* getProcedure(const char* name) const;
};

#endif /* __cplusplus */

#endif /* TAV_EXEFILE_H */
