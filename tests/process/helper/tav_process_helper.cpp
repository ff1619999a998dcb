// tav_process_helper.cpp - the program that the launcher tests start.
//
// Steered through environment variables, so that its arguments stay pure data. TAV_HELPER_OUTPUT
// names a file that receives "arg LENGTH:" and the bytes of each argument after the program
// name, then "fd N" for each open descriptor above standard error (POSIX) or "handle open" when
// the handle numbered by TAV_HELPER_HANDLE is valid here (Windows), then "end". Then it sleeps
// TAV_HELPER_SLEEP seconds, raises TAV_HELPER_SIGNAL, and exits with TAV_HELPER_EXIT.

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#if defined(_WIN32)
#include <windows.h>
#else
#include <fcntl.h>
#endif

static long numberOf(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr ? std::strtol(value, nullptr, 10) : 0;
}

int main(int argc, char** argv) {
  if (const char* output = std::getenv("TAV_HELPER_OUTPUT")) {
    FILE* out = std::fopen(output, "wb");
    if (out == nullptr) return 120;
    for (int i = 1; i < argc; ++i) std::fprintf(out, "arg %zu:%s\n", std::strlen(argv[i]), argv[i]);
#if defined(_WIN32)
    DWORD flags = 0;
    if (GetHandleInformation(
            reinterpret_cast<HANDLE>(static_cast<intptr_t>(numberOf("TAV_HELPER_HANDLE"))),
            &flags)) {
      std::fputs("handle open\n", out);
    }
#else
    for (int descriptor = 3; descriptor < 1024; ++descriptor) {
      if (descriptor != fileno(out) && fcntl(descriptor, F_GETFD) != -1) {
        std::fprintf(out, "fd %d\n", descriptor);
      }
    }
#endif
    std::fputs("end\n", out);
    std::fclose(out);
  }
  std::this_thread::sleep_for(std::chrono::seconds(numberOf("TAV_HELPER_SLEEP")));
  if (const long signal = numberOf("TAV_HELPER_SIGNAL")) std::raise(static_cast<int>(signal));
  return static_cast<int>(numberOf("TAV_HELPER_EXIT"));
}
