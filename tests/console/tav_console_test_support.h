// tav_console_test_support.h - table fields turned into usage strings and argument vectors, and
// a console over them with its output and error streams caught in temporary files.
//
// Usage strings need line feeds, tabs, double quotes and vertical bars, which a table line cannot
// hold as they are; the tables write them as \n, \t and \xHH (see tav_test_escapes.h). Texts are
// copied into heap blocks of exactly their length plus the terminator, so a read past the end is
// a read outside the block, where AddressSanitizer sees it.

#ifndef TAV_CONSOLE_TEST_SUPPORT_H
#define TAV_CONSOLE_TEST_SUPPORT_H

#include <cstdio>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "../ini/tav_test_escapes.h"
#include "tav_console.h"

namespace tav::test {

// A NUL-terminated copy in a block of exactly its size.
inline std::unique_ptr<char[]> exactCopy(const std::string& text) {
  std::unique_ptr<char[]> copy(new char[text.size() + 1]);
  std::memcpy(copy.get(), text.c_str(), text.size() + 1);
  return copy;
}

// An argument vector "prog" plus the blank-separated words of a field, each in its own block.
class TestArgv {
 public:
  explicit TestArgv(const std::string& words) {
    std::istringstream in("prog " + unescape(words));
    for (std::string word; in >> word;) texts.push_back(exactCopy(word));
    for (const auto& text : texts) pointers.push_back(text.get());
    pointers.push_back(nullptr);
  }
  int argc() const { return static_cast<int>(texts.size()); }
  const char* const* argv() const { return pointers.data(); }

 private:
  std::vector<std::unique_ptr<char[]>> texts;
  std::vector<const char*> pointers;
};

// A console over "prog" and the blank-separated arguments, created without title (so
// construction writes nothing), writing to temporary files that out() and err() read back.
class CapturedConsole {
 public:
  explicit CapturedConsole(const std::string& arguments, const char* copyright = nullptr)
      : arguments(arguments),
        console(this->arguments.argc(), this->arguments.argv(), nullptr, nullptr, copyright) {
    console.getParams().redirectStreams(output.get(), error.get());
  }
  TavClConsoleUI* operator->() { return &console; }
  TavClConsoleUI& get() { return console; }
  std::string out() const { return readBack(output.get()); }
  std::string err() const { return readBack(error.get()); }

 private:
  static std::string readBack(FILE* file) {
    std::fflush(file);
    std::string text(static_cast<size_t>(std::ftell(file)), '\0');
    std::rewind(file);
    text.resize(std::fread(&text[0], 1, text.size(), file));
    return text;
  }
  TestArgv arguments;
  TavClConsoleUI console;
  std::unique_ptr<FILE, int (*)(FILE*)> output{std::tmpfile(), std::fclose};
  std::unique_ptr<FILE, int (*)(FILE*)> error{std::tmpfile(), std::fclose};
};

}  // namespace tav::test

#endif  // TAV_CONSOLE_TEST_SUPPORT_H
