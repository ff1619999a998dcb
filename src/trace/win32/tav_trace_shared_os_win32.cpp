// tav_trace_shared_os_win32.cpp - the shared ring on Windows: a file mapping of a file in the
// temporary directory and a named mutex.
//
// A mutex whose holder ended without releasing it is reported as abandoned to the next waiter,
// who then holds it like any other; that is the robust lock of this system. Handles are not
// inheritable, so child processes get none of them.

#include <windows.h>

#include "../tav_trace_shared_os.h"

namespace tav::trace {

SharedRingMapping::SharedRingMapping() = default;

SharedRingMapping::~SharedRingMapping() { close(); }

SharedRingMapping::Status SharedRingMapping::open(const char* path, const char* lockName,
                                                  uint64_t ringSize, bool mayCreate) {
  close();
  // Other processes may open, grow and even delete the file while this one has it open.
  const HANDLE file = CreateFileA(
      path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
      nullptr, mayCreate ? OPEN_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    errorNumber = GetLastError();
    const bool missing = errorNumber == ERROR_FILE_NOT_FOUND || errorNumber == ERROR_PATH_NOT_FOUND;
    return !mayCreate && missing ? Status::kMissing : Status::kFailed;
  }
  LARGE_INTEGER fileSize;
  if (!GetFileSizeEx(file, &fileSize)) {
    errorNumber = GetLastError();
    CloseHandle(file);
    return Status::kFailed;
  }
  uint64_t size = static_cast<uint64_t>(fileSize.QuadPart);
  // A mapping larger than its file grows the file, with zeros.
  if (mayCreate && size < kLockAreaSize + ringSize) size = kLockAreaSize + ringSize;
  if (size <= kLockAreaSize) {
    CloseHandle(file);
    return Status::kTooSmall;
  }
  const HANDLE section =
      CreateFileMappingA(file, nullptr, PAGE_READWRITE, static_cast<DWORD>(size >> 32),
                         static_cast<DWORD>(size & 0xFFFFFFFFu), nullptr);
  errorNumber = GetLastError();
  // The mapping object keeps the file open for as long as it is needed.
  CloseHandle(file);
  if (section == nullptr) return Status::kFailed;
  void* memory = MapViewOfFile(section, FILE_MAP_ALL_ACCESS, 0, 0, static_cast<SIZE_T>(size));
  if (memory == nullptr) {
    errorNumber = GetLastError();
    CloseHandle(section);
    return Status::kFailed;
  }
  const HANDLE mutex = CreateMutexA(nullptr, FALSE, lockName);
  if (mutex == nullptr) {
    errorNumber = GetLastError();
    UnmapViewOfFile(memory);
    CloseHandle(section);
    return Status::kFailed;
  }
  mapping = static_cast<uint8_t*>(memory);
  mappingSize = size;
  fileHandle = section;
  lockHandle = mutex;
  errorNumber = 0;
  return Status::kOk;
}

void SharedRingMapping::close() {
  if (mapping != nullptr) UnmapViewOfFile(mapping);
  if (fileHandle != nullptr) CloseHandle(static_cast<HANDLE>(fileHandle));
  if (lockHandle != nullptr) CloseHandle(static_cast<HANDLE>(lockHandle));
  mapping = nullptr;
  mappingSize = 0;
  fileHandle = nullptr;
  lockHandle = nullptr;
}

void SharedRingMapping::lock() {
  // An abandoned mutex belongs to the waiter that is told so: the ring is taken as it stands,
  // since its positions move only after the bytes they cover are written.
  const DWORD result = WaitForSingleObject(static_cast<HANDLE>(lockHandle), INFINITE);
  recovered = result == WAIT_ABANDONED;
}

void SharedRingMapping::unlock() { ReleaseMutex(static_cast<HANDLE>(lockHandle)); }

bool SharedRingMapping::removeFile(const char* path) {
  return DeleteFileA(path) != 0 || GetLastError() == ERROR_FILE_NOT_FOUND;
}

}  // namespace tav::trace
