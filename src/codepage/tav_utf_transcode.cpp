// tav_utf_transcode.cpp - UTF-8 to UCS-2 and back.
//
// Each direction alternates three loops: runs of ASCII many characters at a time
// (tav_ascii_runs.h); runs of other well-formed characters with a fast check, as long as the
// longest character fits in what is left of both buffers; and one careful step for everything
// else: ill-formed input, unpaired surrogates, and characters near the end of either buffer.
// The careful step alone decides every substitute and every stop, so the fast loops only ever
// take characters that it would have taken the same way.
//
// The careful decoder checks each lead byte's trailing bytes against the ranges of well-formed
// UTF-8 (the second byte's range depends on the lead byte: E0 needs A0..BF, ED 80..9F, F0 90..BF,
// F4 80..8F), so that the first byte that breaks the pattern ends a maximal ill-formed subpart.

#include "tav_utf_transcode.h"

#include <cstring>

#include "tav_ascii_runs.h"

namespace tav::codepage {
namespace {

constexpr uint32_t kReplacementCharacter = 0xFFFD;
constexpr uint32_t kNonCharacterSubstitute = 0xFFFF;

void storeUnit(void* out, uint16_t unit) { std::memcpy(out, &unit, sizeof unit); }

uint16_t loadUnit(const void* in) {
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

// One character decoded by the careful step: its value (U+FFFD for an ill-formed subpart) and
// its length in bytes; length 0 means that a well-formed start runs into the end of the input.
struct DecodedCharacter {
  uint32_t value;
  size_t length;
};

DecodedCharacter decodeCarefully(const uint8_t* bytes, size_t available) {
  const uint8_t lead = bytes[0];
  if (lead < 0x80) return {lead, 1};
  const LeadByte rule = describeLeadByte(lead);
  if (rule.trailing == 0) return {kReplacementCharacter, 1};
  uint32_t value = lead & rule.valueMask;
  for (size_t k = 1; k <= rule.trailing; ++k) {
    if (k >= available) return {0, 0};
    const uint8_t next = bytes[k];
    const uint8_t low = k == 1 ? rule.firstLow : 0x80;
    const uint8_t high = k == 1 ? rule.firstHigh : 0xBF;
    if (next < low || next > high) return {kReplacementCharacter, k};
    value = (value << 6) | (next & 0x3F);
  }
  return {value, size_t{rule.trailing} + 1};
}

// Writes a value as one unit, or above U+FFFF as a surrogate pair; returns the bytes written.
size_t storeCharacter(uint8_t* out, uint32_t value) {
  if (value < 0x10000) {
    storeUnit(out, static_cast<uint16_t>(value));
    return 2;
  }
  const uint32_t offset = value - 0x10000;
  storeUnit(out, static_cast<uint16_t>(0xD800 + (offset >> 10)));
  storeUnit(out + 2, static_cast<uint16_t>(0xDC00 + (offset & 0x3FF)));
  return 4;
}

bool isContinuation(uint8_t byte) { return (byte & 0xC0) == 0x80; }

// Decodes well-formed characters other than ASCII while the longest one (4 bytes in, 4 bytes
// out) fits; stops at two ASCII bytes in a row (a run worth the vector loop), at anything the
// careful step must judge, and near either end. A lone ASCII byte between other characters, a
// blank or a comma, is taken here.
void decodeNonAsciiRun(const uint8_t*& in, const uint8_t* inEnd, uint8_t*& out,
                       const uint8_t* outEnd) {
  while (inEnd - in >= 4 && outEnd - out >= 4) {
    const uint32_t lead = in[0];
    if (lead < 0x80) {
      if (in[1] < 0x80) return;
      storeUnit(out, static_cast<uint16_t>(lead));
      in += 1;
      out += 2;
    } else if (lead >= 0xC2 && lead <= 0xDF && isContinuation(in[1])) {
      storeUnit(out, static_cast<uint16_t>(((lead & 0x1F) << 6) | (in[1] & 0x3F)));
      in += 2;
      out += 2;
    } else if ((lead & 0xF0) == 0xE0 && isContinuation(in[1]) && isContinuation(in[2])) {
      const uint32_t value = ((lead & 0x0F) << 12) | ((in[1] & 0x3Fu) << 6) | (in[2] & 0x3F);
      if (value < 0x800 || (value & 0xF800) == 0xD800) return;  // overlong or a surrogate
      storeUnit(out, static_cast<uint16_t>(value));
      in += 3;
      out += 2;
    } else if ((lead & 0xF8) == 0xF0 && isContinuation(in[1]) && isContinuation(in[2]) &&
               isContinuation(in[3])) {
      const uint32_t value =
          ((lead & 0x07) << 18) | ((in[1] & 0x3Fu) << 12) | ((in[2] & 0x3Fu) << 6) | (in[3] & 0x3F);
      if (value < 0x10000 || value > 0x10FFFF) return;
      out += storeCharacter(out, value);
      in += 4;
    } else {
      return;
    }
  }
}

// The UTF-8 form of a unit of UCS-2 or of a combined pair: 1 to 4 bytes.
size_t encodeValue(uint32_t value, uint8_t* at) {
  if (value < 0x80) {
    at[0] = static_cast<uint8_t>(value);
    return 1;
  }
  if (value < 0x800) {
    at[0] = static_cast<uint8_t>(0xC0 | (value >> 6));
    at[1] = static_cast<uint8_t>(0x80 | (value & 0x3F));
    return 2;
  }
  if (value < 0x10000) {
    at[0] = static_cast<uint8_t>(0xE0 | (value >> 12));
    at[1] = static_cast<uint8_t>(0x80 | ((value >> 6) & 0x3F));
    at[2] = static_cast<uint8_t>(0x80 | (value & 0x3F));
    return 3;
  }
  at[0] = static_cast<uint8_t>(0xF0 | (value >> 18));
  at[1] = static_cast<uint8_t>(0x80 | ((value >> 12) & 0x3F));
  at[2] = static_cast<uint8_t>(0x80 | ((value >> 6) & 0x3F));
  at[3] = static_cast<uint8_t>(0x80 | (value & 0x3F));
  return 4;
}

size_t encodedLength(uint32_t value) {
  return value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
}

bool isHighSurrogate(uint32_t unit) { return (unit & 0xFC00) == 0xD800; }
bool isLowSurrogate(uint32_t unit) { return (unit & 0xFC00) == 0xDC00; }

// Units that are written as U+FFFF when they stand alone: surrogates and the non-characters.
bool isSubstituted(uint32_t unit) {
  return (unit & 0xF800) == 0xD800 || (unit >= 0xFDD0 && unit <= 0xFDEF) || unit >= 0xFFFE;
}

// Encodes units other than ASCII and surrogate pairs while the longest result (two units in,
// 4 bytes out) fits; stops at two ASCII units in a row (a run worth the vector loop), at units
// that the careful step must judge (unpaired surrogates, non-characters) and near either end.
void encodeNonAsciiRun(const uint8_t*& in, const uint8_t* inEnd, uint8_t*& out,
                       const uint8_t* outEnd) {
  while (inEnd - in >= 4 && outEnd - out >= 4) {
    const uint32_t unit = loadUnit(in);
    const uint32_t next = loadUnit(in + 2);
    if (unit < 0x80 && next < 0x80) return;
    if (!isSubstituted(unit)) {
      out += encodeValue(unit, out);
      in += 2;
    } else if (isHighSurrogate(unit) && isLowSurrogate(next)) {
      out += encodeValue(0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00), out);
      in += 4;
    } else {
      return;
    }
  }
}

}  // namespace

TranscodeResult utf8ToUcs2(const char* inBytes, size_t inSize, char* outBytes, size_t outSize) {
  const auto* const inBegin = reinterpret_cast<const uint8_t*>(inBytes);
  const uint8_t* const inEnd = inBegin + inSize;
  auto* const outBegin = reinterpret_cast<uint8_t*>(outBytes);
  const uint8_t* const outEnd = outBegin + outSize;
  const uint8_t* in = inBegin;
  uint8_t* out = outBegin;
  const auto result = [&](TranscodeStatus status) {
    return TranscodeResult{static_cast<size_t>(out - outBegin), static_cast<size_t>(in - inBegin),
                           status};
  };
  while (in != inEnd) {
    const size_t ascii = widenAsciiRun(in, inEnd - in, out, outEnd - out);
    in += ascii;
    out += 2 * ascii;
    decodeNonAsciiRun(in, inEnd, out, outEnd);
    if (in == inEnd) break;
    if (*in < 0x80 && outEnd - out >= 2) continue;  // another run of ASCII
    // The careful step: the character the loops above left, whatever it is.
    const DecodedCharacter character = decodeCarefully(in, inEnd - in);
    if (character.length == 0) return result(TranscodeStatus::incomplete);
    const size_t units = character.value >= 0x10000 ? 2 : 1;
    if (static_cast<size_t>(outEnd - out) < 2 * units) return result(TranscodeStatus::tooBig);
    out += storeCharacter(out, character.value);
    in += character.length;
  }
  return result(TranscodeStatus::ok);
}

TranscodeResult ucs2ToUtf8(const char* inBytes, size_t inSize, char* outBytes, size_t outSize) {
  const auto* const inBegin = reinterpret_cast<const uint8_t*>(inBytes);
  const uint8_t* const inEnd = inBegin + (inSize & ~size_t{1});
  auto* const outBegin = reinterpret_cast<uint8_t*>(outBytes);
  const uint8_t* const outEnd = outBegin + outSize;
  const uint8_t* in = inBegin;
  uint8_t* out = outBegin;
  const auto result = [&](TranscodeStatus status) {
    return TranscodeResult{static_cast<size_t>(out - outBegin), static_cast<size_t>(in - inBegin),
                           status};
  };
  while (in != inEnd) {
    const size_t ascii = narrowAsciiRun(in, (inEnd - in) / 2, out, outEnd - out);
    in += 2 * ascii;
    out += ascii;
    encodeNonAsciiRun(in, inEnd, out, outEnd);
    if (in == inEnd) break;
    if (loadUnit(in) < 0x80 && out != outEnd) continue;  // another run of ASCII
    // The careful step: pairs, unpaired surrogates, non-characters, and a full output.
    const uint32_t unit = loadUnit(in);
    uint32_t value = unit;
    size_t unitsRead = 1;
    if (isHighSurrogate(unit) && inEnd - in >= 4 && isLowSurrogate(loadUnit(in + 2))) {
      value = 0x10000 + ((unit - 0xD800u) << 10) + (loadUnit(in + 2) - 0xDC00u);
      unitsRead = 2;
    } else if (isSubstituted(unit)) {
      value = kNonCharacterSubstitute;
    }
    if (static_cast<size_t>(outEnd - out) < encodedLength(value)) {
      return result(TranscodeStatus::tooBig);
    }
    out += encodeValue(value, out);
    in += 2 * unitsRead;
  }
  return result(inSize % 2 != 0 ? TranscodeStatus::incomplete : TranscodeStatus::ok);
}

}  // namespace tav::codepage
