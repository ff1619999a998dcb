// tav_system_win32.cpp - the core runtime's operating-system calls on Windows.
//
// Only code valid on every 64-bit Windows belongs here.

#include <windows.h>

#include <cstdlib>
#include <cstring>

#include "../tav_system_os.h"

namespace tav::os {

uint32_t tickCountMilliseconds() { return GetTickCount(); }

bool readPerformanceCounter(uint64_t* counts) {
  LARGE_INTEGER reading;
  if (!QueryPerformanceCounter(&reading)) return false;
  *counts = static_cast<uint64_t>(reading.QuadPart);
  return true;
}

uint64_t performanceCounterFrequency() {
  LARGE_INTEGER frequency;
  if (!QueryPerformanceFrequency(&frequency) || frequency.QuadPart <= 0) return 0;
  return static_cast<uint64_t>(frequency.QuadPart);
}

void sleepMilliseconds(uint32_t milliseconds) { Sleep(milliseconds); }

uint32_t operatingSystemId() {
  OSVERSIONINFOA version{};
  version.dwOSVersionInfoSize = sizeof(version);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  const BOOL known = GetVersionExA(&version);
#pragma GCC diagnostic pop
  if (!known) return 0;
  switch (version.dwPlatformId) {
    case VER_PLATFORM_WIN32_NT: return 512;
    case VER_PLATFORM_WIN32_WINDOWS: return 513;
    case VER_PLATFORM_WIN32s: return 514;
    default: return 0;
  }
}

namespace {

using Allocator = void* (*)(size_t);

// Each module reaches an imported function through a stub of its own, "jmp [import slot]", so
// the same malloc has a different address in every module. The import slot holds the real one.
Allocator resolveImportStub(Allocator function) {
  const auto* code = reinterpret_cast<const unsigned char*>(function);
  if (code[0] != 0xFF || code[1] != 0x25) return function;
  int32_t displacement;
  std::memcpy(&displacement, code + 2, sizeof(displacement));
  Allocator target;
  std::memcpy(&target, code + 6 + displacement, sizeof(target));
  return target;
}

}  // namespace

bool isRuntimeMalloc(Allocator allocator) {
  if (allocator == nullptr) return false;
  return allocator == &::malloc || resolveImportStub(allocator) == resolveImportStub(&::malloc);
}

void showAssertionPopup(const char* report) {
  MessageBoxA(nullptr, report, "Internal error occured: Assertion failed!", MB_ICONSTOP | MB_OK);
}

// The C runtime keeps no table it hands out; toupper answers.
const int32_t* upperCaseTable() { return nullptr; }

}  // namespace tav::os
