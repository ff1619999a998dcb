// tav_trace_test_support.cpp - scratch files and a trace file reader for the trace tests.

#include "tav_trace_test_support.h"

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <tuple>
#include <utility>

#include "tav_console.h"
#include "tav_environment.h"
#include "tav_process.h"
#include "tav_trace.h"
#include "tav_trace_controller.h"

namespace tav::test {

std::string scratchFileName(const char* stem) {
  static std::atomic<int> counter{0};
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() /
      (std::string("tav_") + stem + "_" + std::to_string(TavClProcessProperty().getId()) + "_" +
       std::to_string(counter++) + ".trc");
  std::error_code ignored;
  std::filesystem::remove(path, ignored);
  return path.string();
}

std::string readFileBytes(const std::string& fileName) {
  std::ifstream file(fileName, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::string readTestData(const char* name) {
  const std::string path = std::string(TAV_TRACE_TEST_DATA) + "/" + name;
  if (!std::ifstream(path)) throw std::runtime_error("missing test data: " + path);
  return readFileBytes(path);
}

std::vector<DataRow> readTable(const char* name, size_t fieldCount) {
  std::vector<DataRow> rows = readDataTable(std::string("trace/") + name, fieldCount);
  for (DataRow& row : rows) {
    for (std::string& field : row.fields) {
      std::string text;
      for (size_t position = 0; position < field.size(); ++position) {
        char character = field[position];
        if (character == '\\' && ++position < field.size()) {
          character = field[position];
          if (character == 'n') character = '\n';
          if (character == 't') character = '\t';
          if (character == 'x') {
            character = static_cast<char>(std::stoi(field.substr(position + 1, 2), nullptr, 16));
            position += 2;
          }
        }
        text += character;
      }
      field = text;
    }
  }
  return rows;
}

std::string littleEndian(uint64_t value, unsigned width) {
  std::string bytes;
  for (unsigned i = 0; i < width; ++i) bytes += static_cast<char>(value >> (8 * i));
  return bytes;
}

std::string recordBytes(const TavClTraceEntry& entry) {
  std::string bytes(reinterpret_cast<const char*>(entry.getHeader()), entry.getHeaderSize());
  if (entry.getDumpData() != nullptr) {
    bytes.append(static_cast<const char*>(entry.getDumpData()), entry.getSizeOfDumpData());
  }
  return bytes;
}

std::string bytesOf(const std::vector<HandRecord>& records) {
  std::string bytes;
  for (const HandRecord& record : records) {
    bytes +=
        {static_cast<char>(record.type | record.detail << 6), static_cast<char>(record.componentId),
         static_cast<char>(record.message.size()), static_cast<char>(record.origin.size())};
    bytes += littleEndian(record.timeStamp, 4) + littleEndian(record.processId, 4) +
             littleEndian(record.threadId, 4) +
             littleEndian(record.claimedSize >= 0 ? record.claimedSize : record.data.size(), 4);
    bytes += record.message + record.origin + record.data;
  }
  return bytes;
}

bool operator==(const RecordRead& left, const RecordRead& right) {
  auto fields = [](const RecordRead& r) {
    return std::tie(r.type, r.detail, r.componentId, r.timeStamp, r.processId, r.threadId,
                    r.message, r.origin, r.data);
  };
  return fields(left) == fields(right);
}

std::vector<RecordRead> readRecords(TavClTraceEnvironmentABase& environment,
                                    const std::string& bytes, bool* endsOnRecord) {
  std::istringstream input(bytes);
  TavClTraceFileEntry entry(environment);
  std::vector<RecordRead> records;
  std::streamoff recordEnd = 0;
  while (entry.read(input)) {
    if (entry.getSizeOfDumpData() > bytes.size()) break;  // cut short: no need to allocate
    RecordRead record{entry.getType(),
                      entry.getDetail(),
                      entry.getComponentId(),
                      entry.getTimeStamp(),
                      entry.getProcessId(),
                      entry.getThreadId(),
                      std::string(entry.getMessage(), entry.getMessageLength()),
                      std::string(entry.getOrigin(), entry.getOriginLength()),
                      std::string(entry.getSizeOfDumpData(), '\0')};
    input.read(record.data.data(), static_cast<std::streamsize>(record.data.size()));
    if (!input) break;
    records.push_back(record);
    recordEnd = input.tellg();
  }
  *endsOnRecord = recordEnd == static_cast<std::streamoff>(bytes.size());
  return records;
}

namespace {

std::string readBack(FILE* file) {
  std::fflush(file);
  std::string text(static_cast<size_t>(std::ftell(file)), '\0');
  std::rewind(file);
  text.resize(std::fread(&text[0], 1, text.size(), file));
  return text;
}

}  // namespace

ToolRun runTraceTool(const std::string& key, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"prog", "-key", key});
  std::vector<const char*> argv;
  for (const std::string& argument : arguments) argv.push_back(argument.c_str());
  std::unique_ptr<FILE, int (*)(FILE*)> output(std::tmpfile(), std::fclose);
  std::unique_ptr<FILE, int (*)(FILE*)> error(std::tmpfile(), std::fclose);
  TavClConsoleUI console(static_cast<int>(argv.size()), argv.data());
  console.getParams().redirectStreams(output.get(), error.get());
  const int code = TavClTraceController(console).run();
  TavClTraceInstance::deleteInstance();
  return {code, readBack(output.get()), readBack(error.get())};
}

namespace {

const char* const kTraceSuffixes[] = {"_TRACE_ACTIVE",    "_TRACE_DETAIL",    "_TRACE_AUTOSAVE",
                                      "_TRACE_AUTOFLUSH", "_TRACE_AUTOCLEAR", "_TRACE_COMPRESS",
                                      "_TRACE_COMPSET",   "_TRACE_BUFSIZE",   "_TRACE_FILE",
                                      "_TRACE_FORMAT",    "_TRACE_VERBOSE",   "_TRACE_SHARED"};

}  // namespace

ScopedTraceVariables::ScopedTraceVariables(std::string upperCaseKey)
    : key(std::move(upperCaseKey)) {
  for (const char* suffix : kTraceSuffixes) set(suffix, nullptr);
}

ScopedTraceVariables::~ScopedTraceVariables() {
  for (const char* suffix : kTraceSuffixes) set(suffix, nullptr);
}

void ScopedTraceVariables::set(const char* suffix, const char* value) {
  TavClEnvironmentVariable variable((key + suffix).c_str(), value);
}

}  // namespace tav::test
