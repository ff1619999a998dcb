// tav_console_test_support.h - consoles over argument lists written in a test, with their
// output and error streams caught in temporary files, and the escapes of the case tables.

#ifndef TAV_CONSOLE_TEST_SUPPORT_H
#define TAV_CONSOLE_TEST_SUPPORT_H

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "tav_console.h"

namespace tav::test {

// A table text with \n (line feed), \a (beep), \v (vertical bar, the tables' field separator)
// and \" put in; a null field stays null.
inline std::string unescape(const char* text) {
  std::string result;
  for (const char* c = text; c != nullptr && *c != '\0'; ++c) {
    if (*c != '\\' || c[1] == '\0') {
      result += *c;
      continue;
    }
    ++c;
    result += *c == 'n' ? '\n' : *c == 'a' ? '\a' : *c == 'v' ? '|' : *c;
  }
  return result;
}

// The words of a blank-separated list.
inline std::vector<std::string> words(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> result;
  for (std::string word; stream >> word;) result.push_back(word);
  return result;
}

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
    std::string result(static_cast<size_t>(std::ftell(file)), '\0');
    std::rewind(file);
    result.resize(std::fread(&result[0], 1, result.size(), file));
    std::fseek(file, 0, SEEK_END);
    return result;
  }

 private:
  FILE* file;
};

// A console over arguments, created without title (so construction writes nothing), whose
// streams are the captured ones.
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
