// tav_trace_output.h - a C stream seen as a C++ output stream, for the formatter.
//
// The console writes to FILE streams and the formatter to std::ostream; the controller's output
// goes through both, in order, so the formatter's text goes straight to the console's FILE.
// A null FILE drops the text, as the console does.

#ifndef TAV_TRACE_OUTPUT_H
#define TAV_TRACE_OUTPUT_H

#include <cstdio>
#include <streambuf>

namespace tav::tool {

class FileOutputBuffer : public std::streambuf {
 public:
  explicit FileOutputBuffer(FILE* file) : file(file) {}

 protected:
  std::streamsize xsputn(const char* text, std::streamsize count) override {
    if (file == nullptr || count <= 0) return count;
    return static_cast<std::streamsize>(std::fwrite(text, 1, static_cast<size_t>(count), file));
  }
  int_type overflow(int_type c) override {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    const char byte = traits_type::to_char_type(c);
    return xsputn(&byte, 1) == 1 ? c : traits_type::eof();
  }
  int sync() override { return file == nullptr ? 0 : std::fflush(file); }

 private:
  FILE* file;
};

}  // namespace tav::tool

#endif  // TAV_TRACE_OUTPUT_H
