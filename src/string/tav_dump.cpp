// tav_dump.cpp - hexadecimal and binary dump lines, pointer text, and whole-area dumps.

#include "tav_dump.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <sstream>

namespace {

constexpr size_t kHexBytesPerLine = 16;
constexpr size_t kBinBytesPerLine = 8;
constexpr char kHexDigits[] = "0123456789abcdef";

// Appends to a fixed buffer; the layouts below are sized so that a line always fits.
class LineWriter {
 public:
  LineWriter(char* buffer, size_t capacity) : buffer(buffer), capacity(capacity) {
    buffer[0] = '\0';
  }
  void put(char c) {
    if (length + 1 < capacity) {
      buffer[length++] = c;
      buffer[length] = '\0';
    }
  }
  void put(const char* text) {
    while (*text != '\0') put(*text++);
  }

 private:
  char* buffer;
  size_t capacity;
  size_t length = 0;
};

// The offset in lowercase hexadecimal, at least 8 digits, then ": ".
void addAddress(LineWriter& line, size_t address) {
  char digits[2 * sizeof(size_t)];
  size_t count = 0;
  do {
    digits[count++] = kHexDigits[address & 0xF];
    address >>= 4;
  } while (address != 0);
  for (size_t pad = count; pad < 8; ++pad) line.put('0');
  while (count > 0) line.put(digits[--count]);
  line.put(": ");
}

char characterColumnOf(unsigned char byte) {
  return std::isprint(byte) && !std::iscntrl(byte) ? static_cast<char>(byte) : '.';
}

void addHexData(LineWriter& line, const unsigned char* bytes, size_t count) {
  char column[kHexBytesPerLine + 1] = {};
  for (size_t position = 0; position < kHexBytesPerLine; ++position) {
    if (position < count) {
      line.put(kHexDigits[bytes[position] >> 4]);
      line.put(kHexDigits[bytes[position] & 0xF]);
      column[position] = characterColumnOf(bytes[position]);
    } else {
      line.put("__");
      column[position] = '_';
    }
    line.put(' ');
    if (position == 7) line.put(' ');
  }
  line.put("| ");
  line.put(column);
}

void addBinData(LineWriter& line, const unsigned char* bytes, size_t count) {
  char column[kBinBytesPerLine + 1] = {};
  for (size_t position = 0; position < kBinBytesPerLine; ++position) {
    if (position < count) {
      for (int bit = 7; bit >= 0; --bit) line.put((bytes[position] >> bit) & 1 ? '1' : '0');
      column[position] = characterColumnOf(bytes[position]);
    } else {
      line.put("________");
      column[position] = '_';
    }
    line.put(' ');
    if (position == 3) line.put(' ');
  }
  line.put("| ");
  line.put(column);
}

template <typename Line, size_t kBytesPerLine>
void dumpLines(std::ostream& stream, const unsigned char* data, size_t count) {
  for (size_t offset = 0; offset < count; offset += kBytesPerLine) {
    const size_t rowBytes = count - offset < kBytesPerLine ? count - offset : kBytesPerLine;
    stream << Line(offset, data + offset, rowBytes).getAsCString() << '\n';
  }
}

void dumpHex(std::ostream& stream, const void* data, size_t count) {
  dumpLines<TavClStrepHexDump, kHexBytesPerLine>(stream, static_cast<const unsigned char*>(data),
                                                 count);
}

void dumpBin(std::ostream& stream, const void* data, size_t count) {
  dumpLines<TavClStrepBinDump, kBinBytesPerLine>(stream, static_cast<const unsigned char*>(data),
                                                 count);
}

}  // namespace

TavClStringRepresentationABase::~TavClStringRepresentationABase() = default;

std::ostream& operator<<(std::ostream& stream,
                         const TavClStringRepresentationABase& representation) {
  return stream << representation.getAsCString();
}

TavClStrepHexDump::TavClStrepHexDump(size_t address, const void* data, size_t count) {
  LineWriter line(text, sizeof(text));
  addAddress(line, address);
  addHexData(line, static_cast<const unsigned char*>(data), count);
}

TavClStrepHexDump::TavClStrepHexDump(const void* data, size_t count) {
  LineWriter line(text, sizeof(text));
  addHexData(line, static_cast<const unsigned char*>(data), count);
}

const char* TavClStrepHexDump::getAsCString() const { return text; }

TavClStrepBinDump::TavClStrepBinDump(size_t address, const void* data, size_t count) {
  LineWriter line(text, sizeof(text));
  addAddress(line, address);
  addBinData(line, static_cast<const unsigned char*>(data), count);
}

TavClStrepBinDump::TavClStrepBinDump(const void* data, size_t count) {
  LineWriter line(text, sizeof(text));
  addBinData(line, static_cast<const unsigned char*>(data), count);
}

const char* TavClStrepBinDump::getAsCString() const { return text; }

TavClStrepAddress::TavClStrepAddress(const void* pointer) {
  std::ostringstream formatted;
  formatted << pointer;
  const std::string rendered = formatted.str();
  const size_t length = rendered.size() < sizeof(text) - 1 ? rendered.size() : sizeof(text) - 1;
  std::memcpy(text, rendered.data(), length);
  text[length] = '\0';
}

TavClStrepAddress::~TavClStrepAddress() = default;

const char* TavClStrepAddress::getAsCString() const { return text; }

#define TAV_DEFINE_DUMP_FAMILY(name, dump)                                            \
  void name(std::ostream& stream, const unsigned char* data, size_t count) {          \
    dump(stream, data, count);                                                        \
  }                                                                                   \
  void name(std::ostream& stream, const uint16_t* data, size_t count) {               \
    dump(stream, data, count * 2);                                                    \
  }                                                                                   \
  void name(std::ostream& stream, const uint32_t* data, size_t count) {               \
    dump(stream, data, count * 4);                                                    \
  }                                                                                   \
  void name(std::ostream& stream, const uint64_t* data, size_t count) {               \
    dump(stream, data, count * 8);                                                    \
  }                                                                                   \
  void name(const uint16_t* data, size_t count) { dump(std::cout, data, count * 2); } \
  void name(const uint32_t* data, size_t count) { dump(std::cout, data, count * 4); } \
  void name(const uint64_t* data, size_t count) { dump(std::cout, data, count * 8); } \
  void name(const void* data, size_t count) { dump(std::cout, data, count); }

TAV_DEFINE_DUMP_FAMILY(tavDumpHex, dumpHex)
TAV_DEFINE_DUMP_FAMILY(tavDumpBin, dumpBin)
TAV_DEFINE_DUMP_FAMILY(tavDump, dumpHex)
#undef TAV_DEFINE_DUMP_FAMILY

// Hooks for debug builds: present so that callers link, and empty.
void tavDebugDump(const char*, const void*, size_t) {}
void tavDebugDumpHex(const char*, const void*, size_t) {}
void tavDebugDumpBin(const char*, const void*, size_t) {}
void tavDebugDump(const char*, const uint16_t*, size_t) {}
void tavDebugDump(const char*, const uint32_t*, size_t) {}
void tavDebugDump(const char*, const uint64_t*, size_t) {}
void tavDebugDumpHex(const char*, const uint16_t*, size_t) {}
void tavDebugDumpHex(const char*, const uint32_t*, size_t) {}
void tavDebugDumpHex(const char*, const uint64_t*, size_t) {}
void tavDebugDumpBin(const char*, const uint16_t*, size_t) {}
void tavDebugDumpBin(const char*, const uint32_t*, size_t) {}
void tavDebugDumpBin(const char*, const uint64_t*, size_t) {}
