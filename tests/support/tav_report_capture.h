// tav_report_capture.h - what the library reports, caught in a temporary file for a test.
//
// While a ReportCapture lives, the library's report stream is a temporary file; take() puts the
// previous stream back and returns everything that was reported meanwhile.

#ifndef TAV_REPORT_CAPTURE_H
#define TAV_REPORT_CAPTURE_H

#include <cstdio>
#include <string>

#include "tav_error.h"

namespace tav::test {

class ReportCapture {
 public:
  ReportCapture() : file(std::tmpfile()), previous(tavSetReportStream(file)) {}
  ~ReportCapture() { take(); }
  ReportCapture(const ReportCapture&) = delete;
  ReportCapture& operator=(const ReportCapture&) = delete;

  // Ends the capture (later calls give "") and returns the reports.
  std::string take() {
    if (file == nullptr) return "";
    tavSetReportStream(previous);
    std::string text(static_cast<size_t>(std::ftell(file)), '\0');
    std::rewind(file);
    text.resize(std::fread(&text[0], 1, text.size(), file));
    std::fclose(file);
    file = nullptr;
    return text;
  }

 private:
  std::FILE* file;
  std::FILE* previous;
};

}  // namespace tav::test

#endif  // TAV_REPORT_CAPTURE_H
