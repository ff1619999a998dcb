// Fuzzes reading trace files: any byte stream, read record by record as a formatter does, must
// give well-formed entries or the end, never a read or write outside the entry's buffers. The
// data block of each record is skipped by its size, as the caller of read must.
// Input layout: the whole input is the file.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>

#include "../src/trace/tav_trace_record_layout.h"
#include "fuzz_trace_environment.h"
#include "tav_trace_entry.h"

namespace {

constexpr std::size_t kMaxInputSize = 1 << 16;

void fail(const char* what, std::size_t record) {
  std::fprintf(stderr, "record %zu: %s\n", record, what);
  std::abort();
}

// A text must end at its length; a compressed text expands to at most 255 * 8 / 6 characters.
void checkText(const char* text, std::uint64_t length, std::size_t record) {
  if (length > 340) fail("text longer than 255 stored bytes can hold", record);
  if (text[length] != '\0') fail("text not terminated at its length", record);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kMaxInputSize) return 0;
  static tav_fuzz::TraceEnvironment environment;
  std::istringstream input(std::string(reinterpret_cast<const char*>(data), size));
  // On the heap, so that a write past the entry's end is caught.
  std::unique_ptr<TavClTraceFileEntry> entry(new TavClTraceFileEntry(environment));
  std::size_t record = 0;
  while (entry->read(input)) {
    namespace layout = tav::trace_record;
    const std::uint8_t* header = entry->getHeader();
    const unsigned messageLength = header[layout::kMessageLengthOffset];
    const unsigned originLength = header[layout::kOriginLengthOffset];
    if (entry->getHeaderSize() != layout::kHeaderSize + messageLength + originLength) {
      fail("header size", record);
    }
    if (entry->getType() > 31 || entry->getDetail() > 3) fail("field out of its bits", record);
    checkText(entry->getMessage(), entry->getMessageLength(), record);
    checkText(entry->getOrigin(), entry->getOriginLength(), record);
    if ((header[layout::kFlagsOffset] & layout::kCompressedBit) == 0 &&
        (entry->getMessageLength() != messageLength || entry->getOriginLength() != originLength)) {
      fail("plain text lengths differ from the stored ones", record);
    }
    input.ignore(static_cast<std::streamsize>(entry->getSizeOfDumpData()));
    ++record;
    if (record > size / layout::kHeaderSize) fail("more records than the input can hold", record);
  }
  if (entry->getHeaderSize() != 0 || entry->getMessage()[0] != '\0') {
    fail("entry not emptied after the end", record);
  }
  return 0;
}
