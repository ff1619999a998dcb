// tav_trace_test_support.h - a trace environment whose settings a test chooses, scratch files,
// the test data files, and a reader that turns a trace file back into records.

#ifndef TAV_TRACE_TEST_SUPPORT_H
#define TAV_TRACE_TEST_SUPPORT_H

#include <cstdint>
#include <string>
#include <vector>

#include "tav_test_data.h"
#include "tav_trace_entry.h"
#include "tav_trace_environment_base.h"

namespace tav::test {

class TestTraceEnvironment : public TavClTraceEnvironmentABase {
 public:
  explicit TestTraceEnvironment(bool compress = false, uint64_t bufferSize = 65535 - 48,
                                const char* key = "test", const char* instance = nullptr)
      : TavClTraceEnvironmentABase(key, instance), compress(compress), bufferSize(bufferSize) {}

  bool isCompressionEnabled() const override { return compress; }
  uint64_t getBufferSize() const override { return bufferSize; }
  const char* getTraceFileName() const override { return fileName.c_str(); }
  bool isVerbose() const override { return false; }

  bool compress;
  uint64_t bufferSize;
  std::string fileName;
};

// A file name in the temporary directory that no other test uses; the file is removed first.
std::string scratchFileName(const char* stem);
std::string readFileBytes(const std::string& fileName);

// The bytes of a file under tests/data/trace.
std::string readTestData(const char* name);

// The rows of a table under tests/data/trace, read as tav_test_data.h says, each field's C
// escapes replaced: \n, \t, \xHH ("|" is \x7C) and a backslash before any other character for
// that character.
std::vector<DataRow> readTable(const char* name, size_t fieldCount);

// value as width bytes, least significant first, as trace records store numbers.
std::string littleEndian(uint64_t value, unsigned width);

// The bytes of a record as the buffer stores them: header, texts and data.
std::string recordBytes(const TavClTraceEntry& entry);

// A record written byte by byte as the library writes it, with a fixed time stamp and ids
// unless a test names others, so that what the formatters make of it is the same on every host.
struct HandRecord {
  TavEnTraceDataType type = TAV_TRACE_TYPE_NO_DATA;
  std::string origin = "fn";
  std::string data = "";
  std::string message = "msg";
  uint32_t timeStamp = 1000;
  uint32_t threadId = 7;
  TavEnTraceDetail detail = TAV_TRACE_DETAIL_LOW;
  uint8_t componentId = 1;
  uint32_t processId = 42;
  int64_t claimedSize = -1;  // the size field when it is to differ from the data written
};

std::string bytesOf(const std::vector<HandRecord>& records);

struct RecordRead {
  TavEnTraceDataType type;
  TavEnTraceDetail detail;
  uint16_t componentId;
  uint32_t timeStamp;
  uint32_t processId;
  uint32_t threadId;
  std::string message;
  std::string origin;
  std::string data;
};

// Records compare field by field, so that a test can expect whole records.
bool operator==(const RecordRead& left, const RecordRead& right);

// Reads every record of a trace file's bytes. *endsOnRecord tells whether the bytes end exactly
// behind the last record's data (rather than inside a record).
std::vector<RecordRead> readRecords(TavClTraceEnvironmentABase& environment,
                                    const std::string& bytes, bool* endsOnRecord);

// What a run of the trace controller tool gave: its exit code, output and errors.
struct ToolRun {
  int code;
  std::string out, err;
};

// Runs the trace controller tool in this process on "prog -key <key>" and the arguments. Its
// output and errors are caught in temporary files. The trace instance the tool makes is deleted
// afterwards, so that the next run makes its own.
ToolRun runTraceTool(const std::string& key, std::vector<std::string> arguments);

// Clears the twelve trace variables of a key for the lifetime of the object, and sets the ones
// a test names; all are removed again at the end.
class ScopedTraceVariables {
 public:
  explicit ScopedTraceVariables(std::string upperCaseKey);
  ~ScopedTraceVariables();
  ScopedTraceVariables(const ScopedTraceVariables&) = delete;
  ScopedTraceVariables& operator=(const ScopedTraceVariables&) = delete;

  // Sets key + suffix to value; null removes it.
  void set(const char* suffix, const char* value);

 private:
  std::string key;
};

}  // namespace tav::test

#endif  // TAV_TRACE_TEST_SUPPORT_H
