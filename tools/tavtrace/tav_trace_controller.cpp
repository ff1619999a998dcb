// tav_trace_controller.cpp - the trace controller's command line, its actions and their
// failures.
//
// Every failure is one line pair on the error stream (the console's fatal header, then the
// tool's message) and one exit code, so that a script can tell the failures apart.

#include "tav_trace_controller.h"

#include <cctype>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <streambuf>

#include "tav_console.h"
#include "tav_dump.h"
#include "tav_error.h"
#include "tav_error_ids.h"
#include "tav_file.h"
#include "tav_message.h"
#include "tav_trace.h"
#include "tav_trace_environment.h"
#include "tav_trace_formatter.h"
#include "tav_trace_json.h"
#include "tav_trace_output.h"

namespace {

// The tool's messages, as numbered in the library's catalog.
constexpr unsigned long kMessageFileNotFound = 193;
constexpr unsigned long kMessageInvalidInstance = 194;
constexpr unsigned long kMessageUnknownKey = 195;
constexpr unsigned long kMessageCouldNotInitialize = 196;
constexpr unsigned long kMessageCouldNotOpen = 197;
constexpr unsigned long kMessageUnexpectedEof = 198;
constexpr unsigned long kMessageFileCorrupted = 199;
// The console's own "Invalid value specified".
constexpr unsigned long kConsoleTextInvalidValue = 30;

// The message catalog has no room for the tool's one message about shared rings: it is kept
// here, in English.
constexpr char kSharedRingRefused[] = "Shared trace buffer refused";

// Actions the usage string does not show: tagged at the end of its last line, and hidden by
// the console, yet accepted.
constexpr char kHiddenActions[] = "![-init] [-dump] [-reset]";

// The characters a resource key keeps as they are; an instance is made of these alone.
bool isValidInstance(const char* text) {
  const size_t length = std::strlen(text);
  if (length == 0 || length > 64) return false;
  for (const char* c = text; *c != '\0'; ++c) {
    const unsigned char u = static_cast<unsigned char>(*c);
    if (std::isalnum(u) == 0 && u != '_' && u != '-' && u != '@') return false;
  }
  return true;
}

// A decimal number of at most 32 bits, blanks around it allowed.
bool isProcessOrThreadId(const char* text) {
  while (*text == ' ') ++text;
  uint64_t value = 0;
  const char* digits = text;
  for (; std::isdigit(static_cast<unsigned char>(*text)) != 0; ++text) {
    value = value * 10 + static_cast<uint64_t>(*text - '0');
    if (value > UINT32_MAX) return false;
  }
  while (*text == ' ') ++text;
  return text != digits && *text == '\0';
}

bool startsWithIgnoringCase(const char* text, const char* prefix) {
  for (; *prefix != '\0'; ++text, ++prefix) {
    if (std::toupper(static_cast<unsigned char>(*text)) != *prefix) return false;
  }
  return true;
}

bool isDetailLevel(const char* text) {
  return startsWithIgnoringCase(text, "HIGH") || startsWithIgnoringCase(text, "MED") ||
         startsWithIgnoringCase(text, "LOW") || startsWithIgnoringCase(text, "OFF");
}

bool isComponentSet(const char* text) {
  return *text != '\0' && text[std::strspn(text, "0123456789.*-+, ")] == '\0';
}

// The trace file the controller works on: the key's, or the one named by -file. The rest is the
// controller environment's.
class ControllerFileEnvironment : public TavClTraceEnvironmentABase {
 public:
  ControllerFileEnvironment(const TavClTraceEnvironment& environment, const char* key,
                            const char* instance, const char* fileName)
      : TavClTraceEnvironmentABase(key, instance), environment(environment), fileName(fileName) {}
  bool isCompressionEnabled() const override { return environment.isCompressionEnabled(); }
  uint64_t getBufferSize() const override { return environment.getBufferSize(); }
  const char* getTraceFileName() const override { return fileName; }
  bool isVerbose() const override { return false; }

 private:
  const TavClTraceEnvironment& environment;
  const char* fileName;
};

}  // namespace

TavClTraceController::TavClTraceController(TavClConsoleUI& console)
    : console(console),
      output(console.getParams().getStandardOutput()),
      error(console.getParams().getStandardError()) {}

void TavClTraceController::buildUsage(const TavClConsoleUI& console, char* out, size_t outSize) {
  const TavClMessage usage(console.getCatalog(), kUsageMessage);
  std::snprintf(out, outSize, "%s%s", usage.getText(), kHiddenActions);
}

const char* TavClTraceController::text(unsigned long messageId, char* out, size_t outSize) const {
  const TavClMessage message(console.getCatalog(), messageId);
  std::snprintf(out, outSize, "%s", message.getText());
  return out;
}

int TavClTraceController::fail(int code, unsigned long messageId, const char* argument) const {
  char line[TAV_MSG_MAX_LENGTH + 1];
  console.writeHeaderLine(error, TAV_CONSOLE_TEXT_FATAL_HEADER);
  console.writeMessageLine(error, text(messageId, line, sizeof line), argument);
  return code;
}

int TavClTraceController::run() {
  char usage[TAV_MSG_MAX_LENGTH + sizeof kHiddenActions];
  buildUsage(console, usage, sizeof usage);
  const TavClMessage help(console.getCatalog(), kHelpMessage);
  console.hideTaggedLines();
  console.handleUsageHelp(usage, help.isMessageLoaded() ? help.getText() : nullptr);

  console.reqArgString("key", key);
  console.hasArgString("instance", instance);
  console.hasArgString("file", fileOption);
  if (const char* failedSwitch = findInvalidValue()) {
    char line[TAV_MSG_MAX_LENGTH + 1];
    console.getText(kConsoleTextInvalidValue, line, sizeof line);
    console.writeHeaderLine(error, TAV_CONSOLE_TEXT_FATAL_HEADER);
    const std::string switchName = std::string("-") + failedSwitch;
    console.writeMessageLine(error, line, switchName.c_str());
    return kExitInvalidValue;
  }
  if (instance != nullptr && !isValidInstance(instance)) {
    return fail(kExitInvalidInstance, kMessageInvalidInstance, instance);
  }
  if (*key == '\0') return fail(kExitUnknownKey, kMessageUnknownKey, key);

  // Never null: running out of memory ends the process in the memory manager.
  environment = &TavClTraceInstance::createControllerInstance(key, instance)->getEnvironment();
  traceFile = fileOption != nullptr ? fileOption : environment->getTraceFileName();
  return runActions();
}

// The first filter or format option whose value the tool cannot use, or null.
const char* TavClTraceController::findInvalidValue() const {
  struct ValueRule {
    const char* name;
    bool (*accepts)(const char*);
  };
  static const ValueRule kRules[] = {
      {"format", [](const char* v) { return *v != '\0'; }},
      {"fdetail", isDetailLevel},
      {"fcompids", isComponentSet},
      {"fpid", isProcessOrThreadId},
      {"ftid", isProcessOrThreadId},
  };
  for (const ValueRule& rule : kRules) {
    const char* value = nullptr;
    if (console.hasArgString(rule.name, value) && !rule.accepts(value)) return rule.name;
  }
  return nullptr;
}

int TavClTraceController::runActions() {
  const bool display = console.hasArgSwitch("display");
  const bool dump = console.hasArgSwitch("dump");
  const bool init = console.hasArgSwitch("init");
  const bool reset = console.hasArgSwitch("reset");
  const bool anyAction = display || dump || init || reset;
  if (!anyAction || console.hasArgSwitch("verbose")) displayStatus();
  int code = kExitOk;
  if (reset) code = removeTraceFile();
  if (code == kExitOk && init) code = createTraceFile();
  if (code == kExitOk && dump) code = saveSharedRing();
  if (code == kExitOk && dump) code = dumpTraceFile();
  if (code == kExitOk && display) code = formatTraceFile();
  if (output != nullptr) std::fflush(output);
  return code;
}

// Names the failure for a trace file that is not there: the one the user named, or the key's.
int TavClTraceController::locateTraceFile(bool mustExist) {
  if (!mustExist || TavClFile(traceFile.c_str()).isExistent()) return kExitOk;
  if (fileOption != nullptr) {
    return fail(kExitFileNotFound, kMessageFileNotFound, traceFile.c_str());
  }
  return fail(kExitUnknownKey, kMessageUnknownKey, key);
}

int TavClTraceController::removeTraceFile() {
  TavClFile file(traceFile.c_str());
  if (file.isExistent() && !file.remove()) {
    return fail(kExitCouldNotInitialize, kMessageCouldNotInitialize, traceFile.c_str());
  }
  return kExitOk;
}

int TavClTraceController::createTraceFile() {
  FILE* file = std::fopen(traceFile.c_str(), "wb");
  if (file == nullptr) {
    return fail(kExitCouldNotInitialize, kMessageCouldNotInitialize, traceFile.c_str());
  }
  std::fclose(file);
  return kExitOk;
}

// The flight recorder: a program that traces into a shared ring may have died with records in
// it; they go to its trace file now, and only once however often the dump runs.
int TavClTraceController::saveSharedRing() {
  if (const char* problem = environment->getSharedRingProblem()) {
    console.writeHeaderLine(error, TAV_CONSOLE_TEXT_FATAL_HEADER);
    const std::string reason =
        problem + std::string(" (") + environment->getSharedRingFileName() + ")";
    console.writeMessageLine(error, kSharedRingRefused, reason.c_str());
    return kExitSharedRingRefused;
  }
  // Saving makes the trace file when the program never wrote it; without a ring it does nothing.
  environment->saveSharedRing();
  return kExitOk;
}

int TavClTraceController::dumpTraceFile() {
  const int code = locateTraceFile(true);
  if (code != kExitOk) return code;
  FILE* file = std::fopen(traceFile.c_str(), "rb");
  if (file == nullptr) return fail(kExitCouldNotOpen, kMessageCouldNotOpen, traceFile.c_str());
  unsigned char row[16];
  size_t offset = 0;
  for (size_t count; (count = std::fread(row, 1, sizeof row, file)) > 0; offset += count) {
    if (output != nullptr) {
      std::fprintf(output, "%s\n", TavClStrepHexDump(offset, row, count).getAsCString());
    }
  }
  std::fclose(file);
  return kExitOk;
}

void TavClTraceController::configureFormatter(TavClTraceFormatter& formatter) const {
  const char* value = nullptr;
  if (console.hasArgString("format", value)) formatter.setFormatString(value);
  if (console.hasArgString("findent", value)) formatter.setDisplayIndentation(value);
  formatter.enableNesting(console.hasArgSwitch("fnest"));
  formatter.enableFunctionHeaders(!console.hasArgSwitch("fnofhd"));
  formatter.enableRepeatedOrigins(!console.hasArgSwitch("fssfhd"));
  formatter.enableHexData(console.hasArgSwitch("fhex"));
  formatter.enableBinData(console.hasArgSwitch("fbin"));

  // The filter starts from the traced program's own detail level and takes every record.
  TavClTraceFilter& filter = formatter.getFilter();
  filter.setDetail(environment->getSettings().getFilter().getDetail());
  if (console.hasArgString("fdetail", value)) filter.setDetail(value);
  if (console.hasArgString("fcompids", value)) {
    filter.disableAllComponentIds();
    filter.enableComponentIds(value);
  }
  if (console.hasArgString("fpid", value)) filter.setProcessId(value);
  if (console.hasArgString("ftid", value)) filter.setThreadId(value);
}

int TavClTraceController::formatTraceFile() {
  const int code = locateTraceFile(true);
  if (code != kExitOk) return code;
  ControllerFileEnvironment fileEnvironment(*environment, key, instance, traceFile.c_str());
  TavClTraceFormatter formatter(fileEnvironment);
  formatter.setFormatString(environment->getFormatString());
  formatter.attachTavMessageCatalog(console.getCatalog());
  configureFormatter(formatter);
  tav::tool::FileOutputBuffer buffer(output);
  std::ostream stream(&buffer);
  const char* format = nullptr;
  const bool json = console.hasArgString("format", format) && std::strcmp(format, "chrome") == 0;
  try {
    if (json) {
      TavClTraceJsonWriter(formatter).write(stream);
    } else {
      formatter.format(stream);
    }
  } catch (const TavClExceptionFatal& exception) {
    stream.flush();
    switch (exception.getId()) {
      case TRACEFORMAT_COULD_NOT_OPEN:
        return fail(kExitCouldNotOpen, kMessageCouldNotOpen, traceFile.c_str());
      case TRACEFORMAT_UNEXPECTED_EOF:
        return fail(kExitUnexpectedEof, kMessageUnexpectedEof, traceFile.c_str());
      default: return fail(kExitFileCorrupted, kMessageFileCorrupted, traceFile.c_str());
    }
  }
  stream.flush();
  return kExitOk;
}
