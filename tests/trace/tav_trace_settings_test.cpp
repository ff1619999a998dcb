// Trace settings: the detail text, component set texts, ids, and everything the
// trace environment reads from its eleven variables.

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
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

std::vector<uint32_t> allIdsBut(std::vector<uint32_t> excluded) {
  std::vector<uint32_t> ids;
  for (uint32_t id = 0; id <= 255; ++id) {
    bool skip = false;
    for (const uint32_t other : excluded) skip = skip || other == id;
    if (!skip) ids.push_back(id);
  }
  return ids;
}

TEST(TraceFilter, DetailTextComparesPrefixesIgnoringCase) {
  const struct {
    const char* text;
    TavEnTraceDetail expected;
  } cases[] = {{"high", TAV_TRACE_DETAIL_HIGH},  {"HIGHEST", TAV_TRACE_DETAIL_HIGH},
               {"Medium", TAV_TRACE_DETAIL_MED}, {"med", TAV_TRACE_DETAIL_MED},
               {"LOW", TAV_TRACE_DETAIL_LOW},    {"lowish", TAV_TRACE_DETAIL_LOW},
               {"none", TAV_TRACE_DETAIL_OFF},   {"HIG", TAV_TRACE_DETAIL_OFF},
               {" high", TAV_TRACE_DETAIL_OFF},  {"", TAV_TRACE_DETAIL_OFF},
               {nullptr, TAV_TRACE_DETAIL_OFF}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.text != nullptr ? test.text : "(null)");
    TavClTraceFilter filter;
    filter.setDetail(test.text);
    EXPECT_EQ(filter.getDetail(), test.expected);
  }
  EXPECT_STREQ(TavClTraceFilter::getDetailAsCString(2), "MED");
  EXPECT_EQ(TavClTraceFilter::getDetailAsCString(4), nullptr);
}

TEST(TraceFilter, DetailMatchesUpToTheLevel) {
  TavClTraceFilter filter;
  filter.setDetail("MED");
  EXPECT_TRUE(filter.matchesDetail(TAV_TRACE_DETAIL_OFF));
  EXPECT_TRUE(filter.matchesDetail(TAV_TRACE_DETAIL_MED));
  EXPECT_FALSE(filter.matchesDetail(TAV_TRACE_DETAIL_HIGH));
}

TEST(TraceFilter, ComponentSetTexts) {
  const struct {
    const char* text;
    std::vector<uint32_t> expected;
  } cases[] = {
      {"*,-7", allIdsBut({7})},
      {"10.12", {0, 10, 11, 12}},
      {"3..7", {0, 3, 4, 5, 6, 7}},
      {"", {0}},
      {"1-10", {0}},  // "-" is no range: the target becomes 10 and 10 is cleared
      {"5,1-10", {0, 5}},
      {"-5", {0}},
      {"5+", {0, 5}},
      {"x5y,;9", {0, 5, 9}},
      {"0", {0}},
      {"0.3", {0}},  // a range that starts at 0 changes nothing
      {"250.300", {0, 250, 251, 252, 253, 254, 255}},
      {"300", {0}},
      {"99999999999999999999", {0}},  // no wrap-round into a valid id
      {"7.5", {0}},
      {"*,-3.250", {0, 1, 2, 251, 252, 253, 254, 255}},
      {"2,4,", {0, 2, 4}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.text);
    TavClTraceFilter filter;
    filter.disableAllComponentIds();
    filter.enableComponentIds(test.text);
    EXPECT_EQ(matchingIds(filter), test.expected);
    EXPECT_TRUE(filter.usesCompIdFilter());
  }
}

TEST(TraceFilter, SingleIdsAndTheFilterFlag) {
  TavClTraceFilter filter;
  EXPECT_FALSE(filter.usesCompIdFilter());
  filter.disableComponentId(255);
  EXPECT_TRUE(filter.usesCompIdFilter());
  EXPECT_FALSE(filter.matchesCompId(255));
  filter.enableComponentId(255);
  filter.disableComponentId(256);  // outside the set: ignored
  filter.disableComponentId(0);    // id 0 always matches
  EXPECT_FALSE(filter.usesCompIdFilter());
  EXPECT_TRUE(filter.matchesCompId(0));
  filter.disableComponentId(3);
  EXPECT_FALSE(filter.matchesCompId(3 + 256));  // the record keeps the low eight bits
}

TEST(TraceFilter, ProcessAndThreadIdsFromText) {
  const struct {
    const char* text;
    uint32_t expected;
  } cases[] = {{"123", 123}, {"123abc", 123}, {"  42", 42},     {"abc", 0},
               {"", 0},      {nullptr, 0},    {"4294967297", 1}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.text != nullptr ? test.text : "(null)");
    TavClTraceFilter filter;
    filter.setProcessId(test.text);
    filter.setThreadId(test.text);
    EXPECT_EQ(filter.getProcessId(), test.expected);
    EXPECT_EQ(filter.getThreadId(), test.expected);
  }
  TavClTraceFilter filter;
  EXPECT_TRUE(filter.matchesProcessId(77));
  filter.setProcessId("77");
  EXPECT_TRUE(filter.matchesProcessId(77));
  EXPECT_FALSE(filter.matchesProcessId(78));
}

TEST(TraceSettings, SettingsInForeignMemoryStartLikeOwnOnes) {
  alignas(8) unsigned char memory[sizeof(_TavStTraceSettingsBlock)];
  std::fill(std::begin(memory), std::end(memory), static_cast<unsigned char>(0xAB));
  TavClTraceSettings settings(memory);
  const auto* block = reinterpret_cast<const _TavStTraceSettingsBlock*>(memory);
  EXPECT_EQ(&settings.getBlock(), block);
  EXPECT_EQ(block->flags, uint32_t{TavClTraceSettings::kInitialFlags});
  EXPECT_EQ(block->signature, uint32_t{TavClTraceSettings::kSignature});
  EXPECT_EQ(block->filter.getDetail(), TAV_TRACE_DETAIL_LOW);
  settings.enableCompression(false);
  settings.enableAutoflush(true);
  EXPECT_EQ(block->flags, TavClTraceSettings::kAutosave | TavClTraceSettings::kAutoflush);
  settings.initComponentIds("4");
  EXPECT_EQ(matchingIds(settings.getFilter()), (std::vector<uint32_t>{0, 4}));
}

TEST(TraceEnvironment, DefaultsWithoutVariables) {
  ScopedTraceVariables variables("TSDEFAULT");
  TavClTraceEnvironment environment("tsDefault", nullptr, false);
  const TavClTraceSettings& settings = environment.getSettings();
  EXPECT_FALSE(environment.isActive());
  EXPECT_EQ(settings.getFilter().getDetail(), TAV_TRACE_DETAIL_LOW);
  EXPECT_TRUE(settings.isCompressionEnabled());
  EXPECT_TRUE(settings.isAutosaveEnabled());
  EXPECT_FALSE(settings.isAutoflushEnabled());
  EXPECT_FALSE(settings.isAutoclearEnabled());
  EXPECT_FALSE(settings.isVerboseEnabled());
  EXPECT_FALSE(settings.getFilter().usesCompIdFilter());
  EXPECT_EQ(environment.getTotalBufferSize(), 65535u);
  EXPECT_EQ(environment.getBufferSize(), 65535u - 48);
  // The key as given, not upper-cased, in the temporary directory.
  EXPECT_STREQ(environment.getTraceFileName(),
               TavClFilename(tavGetTmpDirectory(), "tsDefaulttrace.trc", nullptr).getAsCString());
  EXPECT_STREQ(environment.getFormatString(), TavClTraceEnvironment::kDefaultFormat);
  EXPECT_STREQ(environment.getKey(), "SEM32:tsDefault:TAVTRACEINSTANCE0");
  EXPECT_FALSE(environment.usesSharedMemory());
  EXPECT_FALSE(environment.isController());
}

// Each flag variable: switched on by an enabled value, left as it was by any other value.
TEST(TraceEnvironment, FlagVariablesCanOnlySwitchOn) {
  using Getter = bool (*)(const TavClTraceEnvironment&);
  const struct {
    const char* suffix;
    Getter get;
    bool initial;
  } flags[] = {
      {"_TRACE_ACTIVE", [](const TavClTraceEnvironment& e) { return e.isActive(); }, false},
      {"_TRACE_AUTOSAVE",
       [](const TavClTraceEnvironment& e) { return e.getSettings().isAutosaveEnabled(); }, true},
      {"_TRACE_AUTOFLUSH",
       [](const TavClTraceEnvironment& e) { return e.getSettings().isAutoflushEnabled(); }, false},
      {"_TRACE_AUTOCLEAR",
       [](const TavClTraceEnvironment& e) { return e.getSettings().isAutoclearEnabled(); }, false},
      {"_TRACE_COMPRESS",
       [](const TavClTraceEnvironment& e) { return e.getSettings().isCompressionEnabled(); }, true},
  };
  for (const auto& flag : flags) {
    for (const char* value : {"on", "Yes", "1", "off", "no", "", "0"}) {
      SCOPED_TRACE(std::string(flag.suffix) + "=" + value);
      ScopedTraceVariables variables("TSFLAGS");
      variables.set(flag.suffix, value);
      const std::string file = tav::test::scratchFileName("flags");
      variables.set("_TRACE_FILE", file.c_str());
      TavClTraceEnvironment environment("tsflags", nullptr, false);
      const bool enabled = std::string("on Yes 1").find(value) != std::string::npos && *value;
      EXPECT_EQ(flag.get(environment), enabled || flag.initial);
    }
  }
}

TEST(TraceEnvironment, BufferSizeInKilobytesWithinLimits) {
  const struct {
    const char* text;
    uint32_t expected;
  } cases[] = {{"4", 4096},
               {"5", 5120},
               {"20000", 16777216},
               {"16384", 16777216},
               {"16383", 16776192},
               {"0", 4096},
               {"-3", 4096},
               {"abc", 4096},
               {"", 4096},
               {"64kB", 65536},
               {" +8", 8192},
               {"99999999999999999999", 16777216},
               {"-99999999999999", 4096}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.text);
    EXPECT_EQ(TavClTraceEnvironment::bufferSizeFromText(test.text), test.expected);
  }
  ScopedTraceVariables variables("TSBUF");
  variables.set("_TRACE_BUFSIZE", "5");
  TavClTraceEnvironment environment("tsbuf", nullptr, false);
  EXPECT_EQ(environment.getTotalBufferSize(), 5120u);
  EXPECT_EQ(environment.getBufferSize(), 5120u - 48);
}

TEST(TraceEnvironment, DetailSetFileAndFormatVariables) {
  ScopedTraceVariables variables("TSVALUES");
  variables.set("_TRACE_DETAIL", "high");
  variables.set("_TRACE_COMPSET", "*,-7");
  variables.set("_TRACE_FILE", "some/where.trc");
  const std::string longFormat(600, 'f');
  variables.set("_TRACE_FORMAT", longFormat.c_str());
  TavClTraceEnvironment environment("tsvalues", "second", false);
  EXPECT_EQ(environment.getSettings().getFilter().getDetail(), TAV_TRACE_DETAIL_HIGH);
  EXPECT_EQ(matchingIds(environment.getSettings().getFilter()), allIdsBut({7}));
  EXPECT_STREQ(environment.getTraceFileName(), "some/where.trc");
  EXPECT_EQ(std::string(environment.getFormatString()), longFormat.substr(0, 512));
  EXPECT_STREQ(environment.getKey(), "SEM32:tsvalues:second");

  // A set component set without a single id leaves only id 0. (An empty value would do the
  // same, but on Windows setting a variable empty removes it.)
  ScopedTraceVariables empty("TSEMPTY");
  empty.set("_TRACE_COMPSET", "none");
  TavClTraceEnvironment emptySet("tsempty", nullptr, false);
  EXPECT_EQ(matchingIds(emptySet.getSettings().getFilter()), (std::vector<uint32_t>{0}));
}

TEST(TraceEnvironment, VerboseReportsEverySettingInOrder) {
  ScopedTraceVariables variables("TSVERBOSE");
  variables.set("_TRACE_VERBOSE", "on");
  variables.set("_TRACE_FILE", "report.trc");
  variables.set("_TRACE_AUTOSAVE", "off");
  tav::test::ReportCapture reports;
  {
    TavClTraceEnvironment environment("tsverbose", nullptr, false);
    EXPECT_TRUE(environment.isVerbose());
  }
  const std::string output = reports.take();
  const char* labels[] = {
      "key:",       "active:",    "resource key:", "compression:", "autosave:",
      "autoflush:", "autoclear:", "detail:",       "buffersize:",  "process id:",
      "format:",    "file:",      "sharedMemory:"};
  size_t position = 0;
  for (const char* label : labels) {
    SCOPED_TRACE(label);
    const size_t found = output.find(std::string("[TAV: TRACE: ") + label + " ", position);
    ASSERT_NE(found, std::string::npos) << output;
    position = found + 1;
  }
  EXPECT_NE(output.find("[TAV: TRACE: key: tsverbose]\n"), std::string::npos);
  EXPECT_NE(output.find("[TAV: TRACE: buffersize: 65535]\n"), std::string::npos);
  EXPECT_NE(output.find("[TAV: TRACE: file: report.trc]\n"), std::string::npos);
}

TEST(TraceEnvironment, AutoclearDeletesTheFileUnlessController) {
  const struct {
    const char* autoclear;
    bool controller;
    bool deleted;
  } cases[] = {{"on", false, true}, {"on", true, false}, {nullptr, false, false}};
  for (const auto& test : cases) {
    SCOPED_TRACE(testing::Message() << (test.autoclear ? "autoclear" : "no autoclear")
                                    << (test.controller ? ", controller" : ""));
    const std::string file = tav::test::scratchFileName("autoclear");
    std::ofstream(file) << "old records";
    ScopedTraceVariables variables("TSCLEAR");
    variables.set("_TRACE_AUTOCLEAR", test.autoclear);
    variables.set("_TRACE_FILE", file.c_str());
    {
      TavClTraceEnvironment environment("tsclear", nullptr, test.controller);
      EXPECT_EQ(!std::ifstream(file).good(), test.deleted);
    }
    std::remove(file.c_str());
  }
}

TEST(TraceEnvironment, AFileThatCannotBeWrittenIsReportedAndTracingGoesOn) {
  ScopedTraceVariables variables("TSBADFILE");
  const std::string file = tav::test::scratchFileName("missing") + "/no/such/dir/x.trc";
  variables.set("_TRACE_FILE", file.c_str());
  variables.set("_TRACE_VERBOSE", "on");
  variables.set("_TRACE_BUFSIZE", "4");
  tav::test::ReportCapture reports;
  {
    TavClTraceEnvironment environment("tsbadfile", nullptr, false);
    const std::string message(200, 'm');
    for (int record = 0; record < 100; ++record) {  // fills the ring several times
      environment.add(TavClTraceEntry(environment, TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_NO_DATA,
                                      "origin", message.c_str(), nullptr, 0));
    }
  }
  const std::string output = reports.take();
  EXPECT_NE(output.find("[TAV: TRACE: could not open: " + file), std::string::npos) << output;
}

TEST(TraceEnvironment, OutOfMemoryWhileBuildingLeaksNothing) {
  ScopedTraceVariables variables("TSMEMORY");
  tav::test::forEachAllocationFailure(
      [] { TavClTraceEnvironment environment("tsmemory", nullptr, false); });
}

// A key of more than 24 characters names its variables and the default trace file in full:
// with names cut short, the suffixes would run together into one variable.
TEST(TraceEnvironment, LongKeysKeepEveryVariableApart) {
  const std::string key = "ABCDEFGHIJKLMNOPQRSTUVWXYZ_LONGKEY";
  ScopedTraceVariables variables(key);
  variables.set("_TRACE_ACTIVE", "on");
  variables.set("_TRACE_DETAIL", "HIGH");
  variables.set("_TRACE_FORMAT", "%m");
  TavClTraceEnvironment environment(key.c_str(), nullptr, false);
  EXPECT_TRUE(environment.isActive());
  EXPECT_EQ(environment.getSettings().getFilter().getDetail(), TAV_TRACE_DETAIL_HIGH);
  EXPECT_STREQ(environment.getFormatString(), "%m");
  EXPECT_STREQ(
      environment.getTraceFileName(),
      TavClFilename(tavGetTmpDirectory(), (key + "trace.trc").c_str(), nullptr).getAsCString());
}

}  // namespace
