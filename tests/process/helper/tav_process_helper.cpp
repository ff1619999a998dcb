// tav_process_helper.cpp - the program that the launcher tests start.
//
// It tells the test what it received and holds, then ends as told, all steered through
// environment variables so that its arguments stay pure data:
// - TAV_HELPER_OUTPUT names a file that receives "argc N", then "arg LENGTH:" and the argument's
//   bytes for each argument after the program name, then on POSIX "fd N" for each descriptor
//   above standard error that is open, and on Windows "handle open" when the handle whose
//   number TAV_HELPER_HANDLE holds is valid here;
// - TAV_HELPER_SLEEP holds seconds to wait before ending;
// - TAV_HELPER_SIGNAL holds a signal to end by (POSIX);
// - TAV_HELPER_EXIT holds the exit code (0 when unset).

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

long numberOf(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr ? std::strtol(value, nullptr, 10) : 0;
}

void reportHeldResources(FILE* out) {
#if defined(_WIN32)
  if (const char* value = std::getenv("TAV_HELPER_HANDLE")) {
    DWORD flags = 0;
    HANDLE handle =
        reinterpret_cast<HANDLE>(static_cast<uintptr_t>(std::strtoull(value, nullptr, 10)));
    if (GetHandleInformation(handle, &flags)) std::fputs("handle open\n", out);
  }
#else
  // The output file itself is the one descriptor this program opened.
  const int own = fileno(out);
  for (int descriptor = 3; descriptor < 1024; ++descriptor) {
    if (descriptor != own && fcntl(descriptor, F_GETFD) != -1) {
      std::fprintf(out, "fd %d\n", descriptor);
    }
  }
#endif
}

void sleepSeconds(long seconds) {
#if defined(_WIN32)
  Sleep(static_cast<DWORD>(seconds * 1000));
#else
  sleep(static_cast<unsigned>(seconds));
#endif
}

}  // namespace

int main(int argc, char** argv) {
  if (const char* output = std::getenv("TAV_HELPER_OUTPUT")) {
    FILE* out = std::fopen(output, "wb");
    if (out == nullptr) return 120;
    std::fprintf(out, "argc %d\n", argc);
    for (int i = 1; i < argc; ++i) {
      std::fprintf(out, "arg %zu:", std::strlen(argv[i]));
      std::fwrite(argv[i], 1, std::strlen(argv[i]), out);
      std::fputc('\n', out);
    }
    reportHeldResources(out);
    std::fputs("end\n", out);
    std::fclose(out);
  }
  if (const long seconds = numberOf("TAV_HELPER_SLEEP")) sleepSeconds(seconds);
  if (const long signal = numberOf("TAV_HELPER_SIGNAL")) std::raise(static_cast<int>(signal));
  return static_cast<int>(numberOf("TAV_HELPER_EXIT"));
}
