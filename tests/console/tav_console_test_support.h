// tav_console_test_support.h - a console over the arguments of a table field, with its output
// and error streams caught in temporary files.

#ifndef TAV_CONSOLE_TEST_SUPPORT_H
#define TAV_CONSOLE_TEST_SUPPORT_H

#include <cstdio>
#include <string>

#include "tav_console.h"
#include "tav_console_test_text.h"

namespace tav::test {

// A temporary file standing in for a stream; text() reads what was written so far.
class CapturedStream {
 public:
  CapturedStream() : file(std::tmpfile()) {}
  ~CapturedStream() { std::fclose(file); }
  FILE* get() const { return file; }
  std::string text() const {
    std::fflush(file);
    std::string result(static_cast<size_t>(std::ftell(file)), '\0');
    std::rewind(file);
    result.resize(std::fread(&result[0], 1, result.size(), file));
    return result;
  }

 private:
  FILE* file;
};

// A console over "prog" and the blank-separated arguments, created without title (so
// construction writes nothing), writing to captured streams.
class CapturedConsole {
 public:
  explicit CapturedConsole(const std::string& arguments, const char* copyright = nullptr)
      : arguments(arguments),
        console(this->arguments.argc(), this->arguments.argv(), nullptr, nullptr, copyright) {
    console.getParams().redirectStreams(output.get(), error.get());
  }
  TavClConsoleUI* operator->() { return &console; }
  TavClConsoleUI& get() { return console; }
  std::string out() const { return output.text(); }
  std::string err() const { return error.text(); }

 private:
  TestArgv arguments;
  TavClConsoleUI console;
  CapturedStream output;
  CapturedStream error;
};

}  // namespace tav::test

#endif  // TAV_CONSOLE_TEST_SUPPORT_H
