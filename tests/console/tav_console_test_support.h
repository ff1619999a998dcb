// tav_console_test_support.h - consoles over argument lists written in a test, with their
// output and error streams caught in temporary files.

#ifndef TAV_CONSOLE_TEST_SUPPORT_H
#define TAV_CONSOLE_TEST_SUPPORT_H

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tav_console.h"

namespace tav::test {

// An argument vector "tool" + the given arguments, owning its texts.
class ArgumentList {
 public:
  explicit ArgumentList(const std::vector<std::string>& arguments) : texts{"tool"} {
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    for (const std::string& text : texts) pointers.push_back(text.c_str());
  }
  ArgumentList(const ArgumentList&) = delete;
  ArgumentList& operator=(const ArgumentList&) = delete;
  int count() const { return static_cast<int>(pointers.size()); }
  const char* const* vector() const { return pointers.data(); }

 private:
  std::vector<std::string> texts;
  std::vector<const char*> pointers;
};

// A temporary file standing in for a stream; text() reads what was written so far.
class CapturedStream {
 public:
  CapturedStream() : file(std::tmpfile()) {}
  ~CapturedStream() { std::fclose(file); }
  CapturedStream(const CapturedStream&) = delete;
  CapturedStream& operator=(const CapturedStream&) = delete;
  FILE* get() const { return file; }
  std::string text() const {
    std::fflush(file);
    const long end = std::ftell(file);
    std::string result(static_cast<size_t>(end), '\0');
    std::rewind(file);
    result.resize(std::fread(&result[0], 1, result.size(), file));
    std::fseek(file, 0, SEEK_END);
    return result;
  }

 private:
  FILE* file;
};

// A console over arguments, created without title or copyright (so construction writes
// nothing), whose streams are the captured ones.
class CapturedConsole {
 public:
  explicit CapturedConsole(const std::vector<std::string>& arguments,
                           const char* copyright = nullptr)
      : arguments(arguments),
        console(this->arguments.count(), this->arguments.vector(), nullptr, nullptr, copyright) {
    console.getParams().redirectStreams(output.get(), error.get());
  }
  TavClConsoleUI* operator->() { return &console; }
  TavClConsoleUI& get() { return console; }
  std::string out() const { return output.text(); }
  std::string err() const { return error.text(); }

 private:
  ArgumentList arguments;
  TavClConsoleUI console;
  CapturedStream output;
  CapturedStream error;
};

}  // namespace tav::test

#endif  // TAV_CONSOLE_TEST_SUPPORT_H
