// Trace settings: the detail text, component set texts, ids, and everything the
// trace environment reads from its eleven variables.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tav_filename.h"
#include "tav_report_capture.h"
#include "tav_test_allocator.h"
#include "tav_trace_environment.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::ScopedTraceVariables;

// The ids from 0 to 255 that a filter lets through, as a list.
std::vector<uint32_t> matchingIds(const TavClTraceFilter& filter) {
  std::vector<uint32_t> ids;
  for (uint32_t id = 0; id <= 255; ++id) {
    if (filter.matchesCompId(id)) ids.push_back(id);
  }
  return ids;
}

// The ids of a text of numbers and ranges ("0 3-7").
std::vector<uint32_t> idsOf(const std::string& text) {
  std::vector<uint32_t> ids;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const size_t dash = word.find('-');
    const auto last = static_cast<uint32_t>(std::stoul(word.substr(dash + 1)));
    for (auto id = static_cast<uint32_t>(std::stoul(word)); id <= last; ++id) ids.push_back(id);
  }
  return ids;
}

TEST(TraceFilter, TextsOfTheVariables) {
  const char* const details[] = {"OFF", "LOW", "MED", "HIGH"};
  for (const auto& row : tav::test::readTable("settings_texts.txt", 3)) {
    SCOPED_TRACE(row.where);
    const std::string& kind = row.fields.at(0);
    const char* text = row.fields.at(1).c_str();
    const std::string& expected = row.fields.at(2);
    TavClTraceFilter filter;
    if (kind == "detail") {
      filter.setDetail(text);
      EXPECT_EQ(details[filter.getDetail()], expected);
    } else if (kind == "components") {
      filter.disableAllComponentIds();
      filter.enableComponentIds(text);
      EXPECT_EQ(matchingIds(filter), idsOf(expected));
      EXPECT_TRUE(filter.usesCompIdFilter());
    } else if (kind == "id") {
      filter.setProcessId(text);
      filter.setThreadId(text);
      EXPECT_EQ(filter.getProcessId(), std::stoul(expected));
      EXPECT_EQ(filter.getThreadId(), std::stoul(expected));
    } else {
      ASSERT_EQ(kind, "kilobytes");
      EXPECT_EQ(TavClTraceEnvironment::bufferSizeFromText(text), std::stoul(expected));
    }
  }
  TavClTraceFilter none;  // no texts at all
  none.setDetail(nullptr);
  none.setProcessId(nullptr);
  none.setThreadId(nullptr);
  EXPECT_EQ(none.getDetail() + none.getProcessId() + none.getThreadId(), 0u);
  EXPECT_STREQ(TavClTraceFilter::getDetailAsCString(2), "MED");
  EXPECT_EQ(TavClTraceFilter::getDetailAsCString(4), nullptr);
}

// Each flag variable: switched on by an enabled value, left as it was by any other value or
// when it is not set. Autoclear deletes the old trace file.
TEST(TraceEnvironment, FlagVariablesCanOnlySwitchOn) {
  const char* const suffixes[] = {"_TRACE_ACTIVE", "_TRACE_AUTOSAVE", "_TRACE_AUTOFLUSH",
                                  "_TRACE_AUTOCLEAR", "_TRACE_COMPRESS"};
  const std::vector<bool> initial{false, true, false, false, true};
  for (size_t flag = 0; flag < initial.size(); ++flag) {
    for (const char* value :
         {"on", "Yes", "1", "off", "no", "", "0", static_cast<const char*>(nullptr)}) {
      SCOPED_TRACE(std::string(suffixes[flag]) + "=" + (value ? value : "(not set)"));
      ScopedTraceVariables variables("TSFLAGS");
      variables.set(suffixes[flag], value);
      const std::string file = tav::test::scratchFileName("flags");
      variables.set("_TRACE_FILE", file.c_str());
      std::ofstream(file) << "old records";
      const TavClTraceEnvironment environment("tsflags", nullptr, false);
      const TavClTraceSettings& settings = environment.getSettings();
      std::vector<bool> expected = initial;
      expected[flag] = initial[flag] || (value && *value &&
                                         std::string("on Yes 1").find(value) != std::string::npos);
      EXPECT_EQ((std::vector<bool>{environment.isActive(), settings.isAutosaveEnabled(),
                                   settings.isAutoflushEnabled(), settings.isAutoclearEnabled(),
                                   settings.isCompressionEnabled()}),
                expected);
      EXPECT_EQ(std::ifstream(file).good(), !expected[3]);  // autoclear deletes the file
      std::remove(file.c_str());
    }
  }
}

// Verbose reports every setting first, in order, then the failure to open the file; tracing
// goes on without it. The key has more than 24 characters: names cut short would run the
// suffixes together into one variable.
TEST(TraceEnvironment, VerboseReportsTheSettingsAndAFileThatCannotBeWritten) {
  ScopedTraceVariables variables("TSVALUES_ABCDEFGHIJKLMNOPQRSTUVWXYZ");
  const std::string file = tav::test::scratchFileName("missing") + "/no/such/dir/x.trc";
  const std::string longFormat(600, 'f');
  variables.set("_TRACE_ACTIVE", "on");
  variables.set("_TRACE_DETAIL", "high");
  variables.set("_TRACE_FILE", file.c_str());
  variables.set("_TRACE_FORMAT", longFormat.c_str());
  variables.set("_TRACE_VERBOSE", "on");
  variables.set("_TRACE_BUFSIZE", "4");
  tav::test::ReportCapture reports;
  {
    TavClTraceEnvironment environment("tsvalues_abcdefghijklmnopqrstuvwxyz", "second", false);
    const std::string message(200, 'm');
    for (int record = 0; record < 100; ++record) {  // fills the ring several times
      environment.add(TavClTraceEntry(environment, TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_NO_DATA,
                                      "origin", message.c_str(), nullptr, 0));
    }
  }
  const std::string output = reports.take();
  size_t position = 0;
  for (const std::string& label : std::vector<std::string>{
           "key: tsvalues_abcdefghijklmnopqrstuvwxyz]", "active: on]",
           "resource key: SEM32:tsvalues_abcdefghijklmnopqrstuvwxyz:second]", "compression: on]",
           "autosave: on]", "autoflush: off]", "autoclear: off]", "detail: HIGH]",
           "buffersize: 4096]", "process id: ", "format: " + longFormat.substr(0, 512) + "]",
           "file: " + file + "]", "sharedMemory: off]",
           "could not open: " + file + " (errno: " + std::to_string(ENOENT) + ")]"}) {
    SCOPED_TRACE(label);
    position = output.find("[TAV: TRACE: " + label, position);
    ASSERT_NE(position, std::string::npos) << output;
  }
}

TEST(TraceEnvironment, OutOfMemoryWhileBuildingLeaksNothing) {
  ScopedTraceVariables variables("TSMEMORY");
  tav::test::forEachAllocationFailure(
      [] { TavClTraceEnvironment environment("tsmemory", nullptr, false); });
}

}  // namespace
