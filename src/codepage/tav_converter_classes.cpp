// tav_converter_classes.cpp - the four converters: to Unicode, from Unicode, between two code
// pages through Unicode, and from a code page into UTF-8.
//
// Size estimates saturate instead of wrapping, so that an estimate for a huge input is huge
// rather than small.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

#include "tav_codepage.h"
#include "tav_memmgr.h"

namespace {

constexpr size_t kSizeMax = std::numeric_limits<size_t>::max();
// Extra room the chained buffer gets whenever it grows, so that it grows rarely.
constexpr size_t kBufferSlack = 32769;

size_t times(size_t value, size_t factor) {
  return value > kSizeMax / factor ? kSizeMax : value * factor;
}

size_t plus(size_t value, size_t addend) {
  return value > kSizeMax - addend ? kSizeMax : value + addend;
}

}  // namespace

TavClCodePage2UnicodeConverter::TavClCodePage2UnicodeConverter(const TavClCCSID& source)
    : TavClConverterABase(source, TavClCCSID(TAV_CCSID_UCS2)) {
  initCodePage2Unicode();
}

TavClCodePage2UnicodeConverter::~TavClCodePage2UnicodeConverter() = default;

size_t TavClCodePage2UnicodeConverter::getMaximumSizeForLength(size_t characters) const {
  return times(characters, getSourceCCSID() == TAV_CCSID_GB18030_1392 ? 4 : 2);
}

size_t TavClCodePage2UnicodeConverter::getMaximumSizeForSize(size_t bytes) const {
  return getSourceCCSID().isUCS2() ? bytes : times(bytes, 2);
}

TavClUnicode2CodePageConverter::TavClUnicode2CodePageConverter(const TavClCCSID& target)
    : TavClConverterABase(TavClCCSID(TAV_CCSID_UCS2), target) {
  initUnicode2CodePage();
}

TavClUnicode2CodePageConverter::~TavClUnicode2CodePageConverter() = default;

size_t TavClUnicode2CodePageConverter::getMaximumSizeForLength(size_t characters) const {
  const TavClCCSID& target = getTargetCCSID();
  if (target == TAV_CCSID_UTF8) return times(characters, 5);
  if (target == TAV_CCSID_GB18030_1392) return times(characters, 4);
  return times(characters, 2);
}

size_t TavClUnicode2CodePageConverter::getMaximumSizeForSize(size_t bytes) const {
  const TavClCCSID& target = getTargetCCSID();
  if (target == TAV_CCSID_UTF8) return times(bytes / 2, 3);
  if (target == TAV_CCSID_GB18030_1392 || target.isUCS2()) return bytes;
  if (target.isSBCS()) return bytes / 2;
  if (target.isDBCS()) return bytes & ~static_cast<size_t>(1);
  // A target of no known kind: two bytes a byte is enough for any code page's character.
  return times(bytes, 2);
}

TavClCodePage2CodePageConverter::TavClCodePage2CodePageConverter(const TavClCCSID& source,
                                                                 const TavClCCSID& target)
    : TavClCodePage2UnicodeConverter(source),
      secondStage(target),
      buffer(nullptr),
      bufferCapacity(0) {}

TavClCodePage2CodePageConverter::~TavClCodePage2CodePageConverter() { tavFree(buffer); }

const TavClCCSID& TavClCodePage2CodePageConverter::getTargetCCSID() const {
  return secondStage.getTargetCCSID();
}

bool TavClCodePage2CodePageConverter::isSupported() const {
  return TavClCodePage2UnicodeConverter::isSupported() && secondStage.isSupported();
}

bool TavClCodePage2CodePageConverter::requiresExternalICONVRoutine() const {
  return TavClCodePage2UnicodeConverter::requiresExternalICONVRoutine() ||
         secondStage.requiresExternalICONVRoutine();
}

bool TavClCodePage2CodePageConverter::requiresExternalICUData() const {
  return TavClCodePage2UnicodeConverter::requiresExternalICUData() ||
         secondStage.requiresExternalICUData();
}

size_t TavClCodePage2CodePageConverter::getMaximumSizeForLength(size_t characters) const {
  return secondStage.getMaximumSizeForLength(characters);
}

size_t TavClCodePage2CodePageConverter::getMaximumSizeForSize(size_t bytes) const {
  if (getSourceCCSID() == getTargetCCSID()) return bytes;
  size_t unicodeBytes = TavClCodePage2UnicodeConverter::getMaximumSizeForSize(bytes);
  if (getSourceCCSID() == TAV_CCSID_GB18030_1392) return unicodeBytes;
  size_t targetBytes = secondStage.getMaximumSizeForSize(unicodeBytes);
  if (getSourceCCSID().isUCS2()) return targetBytes;
  return std::min(targetBytes, secondStage.getMaximumSizeForLength(bytes));
}

size_t TavClCodePage2CodePageConverter::convertBytes(char* out, size_t outSize, const char** in,
                                                     size_t inSize) const {
  const TavClCCSID& source = getSourceCCSID();
  if (source == getTargetCCSID()) {
    setError(NO_ERROR, TAV_CLASS_UNKNOWN);
    if (in == nullptr || *in == nullptr) return 0;
    size_t count = out == nullptr ? 0 : std::min(outSize, inSize);
    if (count != 0) std::memmove(out, *in, count);
    *in += count;
    return count;
  }
  if (source.isUCS2HostEndian()) {
    size_t written = secondStage.convertBytes(out, outSize, in, inSize);
    setError(secondStage.getError().id, secondStage.getError().errorClass);
    return written;
  }
  if (getTargetCCSID().isUCS2HostEndian()) {
    return TavClCodePage2UnicodeConverter::convertBytes(out, outSize, in, inSize);
  }
  size_t needed = TavClCodePage2UnicodeConverter::getMaximumSizeForSize(inSize);
  if (plus(needed, 1) > bufferCapacity) {
    tavFree(buffer);
    buffer = nullptr;
    bufferCapacity = 0;
    buffer = static_cast<char*>(tavMalloc(plus(needed, kBufferSlack)));
    bufferCapacity = plus(needed, kBufferSlack);
  }
  size_t unicodeBytes =
      TavClCodePage2UnicodeConverter::convertBytes(buffer, bufferCapacity, in, inSize);
  if (getError().id != NO_ERROR && getError().id != CPCONVERTER_INCOMPLETE) return 0;
  size_t written = secondStage.convertBytes(out, outSize, buffer, unicodeBytes);
  setError(secondStage.getError().id, secondStage.getError().errorClass);
  return written;
}

size_t TavClCodePage2CodePageConverter::convertBytes(char* out, size_t outSize, const char* in,
                                                     size_t inSize) const {
  return convertBytes(out, outSize, &in, inSize);
}

TavClCodePage2UTF8Converter::TavClCodePage2UTF8Converter(const TavClCCSID& source)
    : TavClCodePage2CodePageConverter(source, TavClCCSID(TAV_CCSID_UTF8)) {}

TavClCodePage2UTF8Converter::~TavClCodePage2UTF8Converter() = default;
