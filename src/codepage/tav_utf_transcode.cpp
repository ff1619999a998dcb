// tav_utf_transcode.cpp - UTF-8 to UCS-2 and back, one character at a time.
//
// The decoder checks each lead byte's trailing bytes against the ranges of well-formed UTF-8
// (the second byte's range depends on the lead byte: E0 needs A0..BF, ED 80..9F, F0 90..BF,
// F4 80..8F), so that the first byte that breaks the pattern ends a maximal ill-formed subpart.

#include "tav_utf_transcode.h"

#include <cstring>

namespace tav::codepage {
namespace {

constexpr uint32_t kReplacementCharacter = 0xFFFD;
constexpr uint32_t kNonCharacterSubstitute = 0xFFFF;

void storeUnit(char* out, uint16_t unit) { std::memcpy(out, &unit, sizeof unit); }

uint16_t loadUnit(const char* in) {
  uint16_t unit;
  std::memcpy(&unit, in, sizeof unit);
  return unit;
}

// What a lead byte promises: how many trailing bytes follow, the range of the first of them,
// and the value bits the lead byte carries. trailing == 0 with a byte >= 0x80 is no lead byte.
struct LeadByte {
  uint8_t trailing;
  uint8_t firstLow;
  uint8_t firstHigh;
  uint8_t valueMask;
};

LeadByte describeLeadByte(uint8_t byte) {
  if (byte >= 0xC2 && byte <= 0xDF) return {1, 0x80, 0xBF, 0x1F};
  if (byte == 0xE0) return {2, 0xA0, 0xBF, 0x0F};
  if (byte == 0xED) return {2, 0x80, 0x9F, 0x0F};
  if (byte >= 0xE1 && byte <= 0xEF) return {2, 0x80, 0xBF, 0x0F};
  if (byte == 0xF0) return {3, 0x90, 0xBF, 0x07};
  if (byte >= 0xF1 && byte <= 0xF3) return {3, 0x80, 0xBF, 0x07};
  if (byte == 0xF4) return {3, 0x80, 0x8F, 0x07};
  return {0, 0, 0, 0};
}

}  // namespace

TranscodeResult utf8ToUcs2(const char* in, size_t inSize, char* out, size_t outSize) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(in);
  size_t read = 0;
  size_t written = 0;
  while (read < inSize) {
    const uint8_t lead = bytes[read];
    uint32_t value = lead;
    size_t length = 1;
    if (lead >= 0x80) {
      const LeadByte rule = describeLeadByte(lead);
      if (rule.trailing == 0) {
        value = kReplacementCharacter;
      } else {
        value = lead & rule.valueMask;
        for (size_t k = 1; k <= rule.trailing; ++k) {
          if (read + k >= inSize) return {written, read, TranscodeStatus::incomplete};
          const uint8_t next = bytes[read + k];
          const uint8_t low = k == 1 ? rule.firstLow : 0x80;
          const uint8_t high = k == 1 ? rule.firstHigh : 0xBF;
          if (next < low || next > high) {
            value = kReplacementCharacter;
            break;
          }
          value = (value << 6) | (next & 0x3F);
          length = k + 1;
        }
      }
    }
    const size_t units = value >= 0x10000 ? 2 : 1;
    if (outSize - written < 2 * units) return {written, read, TranscodeStatus::tooBig};
    if (units == 1) {
      storeUnit(out + written, static_cast<uint16_t>(value));
    } else {
      const uint32_t offset = value - 0x10000;
      storeUnit(out + written, static_cast<uint16_t>(0xD800 + (offset >> 10)));
      storeUnit(out + written + 2, static_cast<uint16_t>(0xDC00 + (offset & 0x3FF)));
    }
    written += 2 * units;
    read += length;
  }
  return {written, read, TranscodeStatus::ok};
}

TranscodeResult ucs2ToUtf8(const char* in, size_t inSize, char* out, size_t outSize) {
  auto* bytes = reinterpret_cast<uint8_t*>(out);
  const size_t wholeSize = inSize & ~size_t{1};
  size_t read = 0;
  size_t written = 0;
  while (read < wholeSize) {
    const uint16_t unit = loadUnit(in + read);
    uint32_t value = unit;
    size_t unitsRead = 1;
    if (unit >= 0xD800 && unit <= 0xDBFF) {
      const bool paired = wholeSize - read >= 4 && (loadUnit(in + read + 2) & 0xFC00) == 0xDC00;
      if (paired) {
        value = 0x10000 + ((unit - 0xD800u) << 10) + (loadUnit(in + read + 2) - 0xDC00u);
        unitsRead = 2;
      } else {
        value = kNonCharacterSubstitute;
      }
    } else if ((unit >= 0xDC00 && unit <= 0xDFFF) || (unit >= 0xFDD0 && unit <= 0xFDEF) ||
               unit >= 0xFFFE) {
      value = kNonCharacterSubstitute;
    }
    const size_t length = value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
    if (outSize - written < length) return {written, read, TranscodeStatus::tooBig};
    uint8_t* at = bytes + written;
    switch (length) {
      case 1: at[0] = static_cast<uint8_t>(value); break;
      case 2:
        at[0] = static_cast<uint8_t>(0xC0 | (value >> 6));
        at[1] = static_cast<uint8_t>(0x80 | (value & 0x3F));
        break;
      case 3:
        at[0] = static_cast<uint8_t>(0xE0 | (value >> 12));
        at[1] = static_cast<uint8_t>(0x80 | ((value >> 6) & 0x3F));
        at[2] = static_cast<uint8_t>(0x80 | (value & 0x3F));
        break;
      default:
        at[0] = static_cast<uint8_t>(0xF0 | (value >> 18));
        at[1] = static_cast<uint8_t>(0x80 | ((value >> 12) & 0x3F));
        at[2] = static_cast<uint8_t>(0x80 | ((value >> 6) & 0x3F));
        at[3] = static_cast<uint8_t>(0x80 | (value & 0x3F));
        break;
    }
    written += length;
    read += 2 * unitsRead;
  }
  const TranscodeStatus status =
      wholeSize != inSize ? TranscodeStatus::incomplete : TranscodeStatus::ok;
  return {written, read, status};
}

}  // namespace tav::codepage
