// Fuzzes the 6-bit text compression of trace records. For any text and capacity, expanding
// what compression wrote must give back the characters it kept, with 0xFF read as a blank, and
// compression must stay within capacity + 1 bytes. The raw input is also expanded as if it were
// stored bytes, which must never read past them.
// Input layout: byte 0 is the capacity (0 stands for 255, the capacity of a record's texts),
// the rest is the text up to the first NUL.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "fuzz_input.h"
#include "tav_trace_entry.h"

namespace {

constexpr std::size_t kMaxInputSize = 2048;

bool isShortCode(unsigned char character) {
  return character == 0xFF ||
         (character != 0 && std::strchr(TavClTraceEntry::kTraceAlphabet, character) != nullptr);
}

// The characters compression keeps: every one that starts at or below bit (capacity - 1) * 8.
std::string expectedRoundTrip(const char* text, std::size_t capacity) {
  std::string kept;
  std::uint64_t bits = 0;
  for (const unsigned char* next = reinterpret_cast<const unsigned char*>(text); *next != 0;
       ++next) {
    bits += isShortCode(*next) ? 6 : 14;
    kept += *next == 0xFF ? ' ' : static_cast<char>(*next);
    if (bits > (capacity - 1) * 8) break;
  }
  return kept;
}

// Expands stored bytes from a heap block of exactly their length into a block of exactly the
// documented size, so that AddressSanitizer sees any access beyond either.
std::string expandExactly(const std::uint8_t* stored, std::size_t length) {
  std::unique_ptr<std::uint8_t[]> source(new std::uint8_t[length == 0 ? 1 : length]);
  if (length != 0) std::memcpy(source.get(), stored, length);
  const std::size_t room = length * 8 / 6 + 1;
  std::unique_ptr<char[]> text(new char[room]);
  const std::size_t count = TavClTraceEntry::deCompressCString(text.get(), source.get(), length);
  if (count >= room || text[count] != '\0') {
    std::fprintf(stderr, "expansion of %zu bytes gave %zu characters\n", length, count);
    std::abort();
  }
  return std::string(text.get(), count);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > kMaxInputSize) return 0;
  expandExactly(data, size);

  const std::size_t capacity = data[0] == 0 ? 255 : data[0];
  const std::unique_ptr<char[]> text = tav_fuzz::CopyString(data + 1, size - 1);
  std::unique_ptr<std::uint8_t[]> stored(new std::uint8_t[capacity + 1]);
  const std::size_t length = TavClTraceEntry::compressCString(stored.get(), text.get(), capacity);
  if (length > capacity + 1) {
    std::fprintf(stderr, "compression wrote %zu bytes with capacity %zu\n", length, capacity);
    std::abort();
  }
  const std::string expanded = expandExactly(stored.get(), length);
  const std::string expected = expectedRoundTrip(text.get(), capacity);
  if (expanded != expected) {
    std::fprintf(stderr, "round trip with capacity %zu differs\n", capacity);
    tav_fuzz::PrintQuoted("text:    ", text.get());
    tav_fuzz::PrintQuoted("expanded:", expanded.c_str());
    tav_fuzz::PrintQuoted("expected:", expected.c_str());
    std::abort();
  }
  return 0;
}
