// bench_ini_text.h - the configuration text both parsers read: 2,000 sections of 100 options
// each (200,000 options, about 8 MiB), built the same way on every run.
//
// The lines mix what real configuration files hold: comment lines, numbers, quoted paths,
// truth values with an inline comment, and free text of varying length. Every line stays well
// under 200 characters, the line limit the packaged peer parser is built with, so both sides see
// every option.

#ifndef BENCH_INI_TEXT_H
#define BENCH_INI_TEXT_H

#include <cstdint>
#include <cstdio>
#include <string>

namespace tav::bench {

constexpr int kIniSections = 2000;
constexpr int kIniOptionsPerSection = 100;
constexpr int kIniOptions = kIniSections * kIniOptionsPerSection;

// A small linear congruential generator: the same sequence on every platform and run.
class BenchRandom {
 public:
  std::uint32_t next(std::uint32_t bound) {
    state = state * 1664525u + 1013904223u;
    return (state >> 8) % bound;
  }

 private:
  std::uint32_t state = 20261124u;
};

inline std::string makeIniText() {
  static const char* const words[] = {"alpha", "network", "cache",   "retry", "window",
                                      "log",   "primary", "standby", "queue", "segment"};
  BenchRandom random;
  std::string text;
  text.reserve(9u << 20);
  char line[256];
  for (int section = 0; section < kIniSections; ++section) {
    std::snprintf(line, sizeof line, "\n; settings of service %d\n[service_%04d]\n", section,
                  section);
    text += line;
    for (int option = 0; option < kIniOptionsPerSection; ++option) {
      if (option % 10 == 0) {
        std::snprintf(line, sizeof line, "; options %d to %d\n", option, option + 9);
        text += line;
      }
      switch (option % 5) {
        case 0:
          std::snprintf(line, sizeof line, "connection_count_%02d = %u\n", option,
                        random.next(1000000));
          break;
        case 1:
          std::snprintf(line, sizeof line,
                        "path_%02d = \"/var/lib/service %04d/storage/data_%02d.db\"\n", option,
                        section, option);
          break;
        case 2:
          std::snprintf(line, sizeof line, "enabled_%02d = %s ; %s by default\n", option,
                        random.next(2) ? "on" : "off", random.next(2) ? "set" : "cleared");
          break;
        case 3: {
          std::snprintf(line, sizeof line, "label_%02d =", option);
          std::string label = line;
          for (std::uint32_t word = 0, count = 4 + random.next(9); word < count; ++word)
            (label += ' ') += words[random.next(10)];
          text += label;
          text += '\n';
          continue;  // the line is complete
        }
        default:
          std::snprintf(line, sizeof line, "timeout_%02d=%u\n", option, random.next(100000));
          break;
      }
      text += line;
    }
  }
  return text;
}

}  // namespace tav::bench

#endif  // BENCH_INI_TEXT_H
