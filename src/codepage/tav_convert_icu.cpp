// tav_convert_icu.cpp - conversion through ICU converters, and opening them by CCSID.
//
// Each routine makes one ICU conversion call over the whole input, flushing at its end, and
// maps ICU's error into the converter's record. ICU reads and writes UTF-16 units through
// aligned pointers; a caller's buffer that is not aligned for them is converted through an
// aligned copy, so that the routine stays inside the caller's sizes whatever their alignment.

#include <algorithm>
#include <cstring>

#include "tav_codepage.h"
#include "tav_icu_error.h"
#include "tav_icu_os.h"
#include "tav_memmgr.h"

namespace {

using Conversion = TavClConverterABase::_TavStConverter;

// ICU refuses a single call over more than this many bytes on either side.
constexpr size_t kIcuLimit = 0x3FFFFFFF;

bool isAligned(const void* pointer) {
  return reinterpret_cast<uintptr_t>(pointer) % alignof(char16_t) == 0;
}

// An aligned block of the memory manager, or the caller's own buffer when that is aligned.
class AlignedUnits {
 public:
  AlignedUnits(char* buffer, size_t bytes) : owned(nullptr), units(nullptr) {
    if (bytes == 0) {
      units = &empty;
    } else if (isAligned(buffer)) {
      units = reinterpret_cast<char16_t*>(buffer);
    } else {
      owned = tavMalloc(bytes);
      units = static_cast<char16_t*>(owned);
    }
  }
  ~AlignedUnits() { tavFree(owned); }
  AlignedUnits(const AlignedUnits&) = delete;
  AlignedUnits& operator=(const AlignedUnits&) = delete;

  char16_t* get() const { return units; }
  bool isCopy() const { return owned != nullptr; }

 private:
  void* owned;
  char16_t* units;
  char16_t empty = 0;
};

// Sets the converter's error from ICU's status; success and warnings leave it clear.
void reportIcuStatus(const Conversion& conversion, int32_t status) {
  if (status <= 0) return;
  _TavStError error;
  tav::codepage::mapIcuErrorQuietly(error, status);
  conversion.converter->setError(error.id, error.errorClass);
}

}  // namespace

size_t tavConvertByAlgorithmIcuToUnicode(Conversion& conversion) {
  size_t inSize = std::min(conversion.inputSize, kIcuLimit);
  size_t outBytes = std::min(conversion.outputSize, kIcuLimit) & ~static_cast<size_t>(1);
  AlignedUnits target(conversion.output, outBytes);
  char16_t* targetNext = target.get();
  const char16_t* targetLimit = target.get() + outBytes / 2;
  static const char noInput = 0;
  const char* source = inSize != 0 ? *conversion.input : &noInput;
  const char* sourceStart = source;
  int32_t status = 0;
  tav::os::icuToUnicode(conversion.converter->getAlgorithmData(), &targetNext, targetLimit, &source,
                        source + inSize, inSize == conversion.inputSize, &status);
  size_t written = static_cast<size_t>(targetNext - target.get()) * 2;
  if (target.isCopy() && written != 0) std::memcpy(conversion.output, target.get(), written);
  if (inSize != 0) *conversion.input += source - sourceStart;
  reportIcuStatus(conversion, status);
  if (status <= 0 && inSize != conversion.inputSize) {
    conversion.converter->setError(CPCONVERTER_TOO_BIG, TAV_CLASS_DATA_OUT_OF_BOUNDS);
  }
  return written;
}

size_t tavConvertByAlgorithmIcuFromUnicode(Conversion& conversion) {
  size_t inBytes = std::min(conversion.inputSize, kIcuLimit) & ~static_cast<size_t>(1);
  size_t outSize = std::min(conversion.outputSize, kIcuLimit);
  AlignedUnits source(const_cast<char*>(*conversion.input), inBytes);
  if (source.isCopy()) std::memcpy(source.get(), *conversion.input, inBytes);
  const char16_t* sourceNext = source.get();
  static char noOutput = 0;
  char* target = outSize != 0 ? conversion.output : &noOutput;
  char* targetStart = target;
  bool wholeInput = inBytes + 1 >= conversion.inputSize;
  int32_t status = 0;
  tav::os::icuFromUnicode(conversion.converter->getAlgorithmData(), &target, target + outSize,
                          &sourceNext, source.get() + inBytes / 2, wholeInput, &status);
  *conversion.input += (sourceNext - source.get()) * 2;
  reportIcuStatus(conversion, status);
  if (status <= 0) {
    if (!wholeInput) {
      conversion.converter->setError(CPCONVERTER_TOO_BIG, TAV_CLASS_DATA_OUT_OF_BOUNDS);
    } else if (conversion.inputSize % 2 != 0) {
      conversion.converter->setError(CPCONVERTER_INCOMPLETE, TAV_CLASS_USER_DATA_ERROR);
    }
  }
  return static_cast<size_t>(target - targetStart);
}

void* tavGetICUConverter(unsigned int ccsid, _TavStError& error) {
  error = {NO_ERROR, TAV_CLASS_UNKNOWN};
  int32_t status = 0;
  void* converter = nullptr;
  switch (ccsid) {
    case 932:
    case 942: converter = tav::os::icuOpenByName("ibm-942_VSUB_VPUA", &status); break;
    case 943: converter = tav::os::icuOpenByName("ibm-943_VSUB_VPUA", &status); break;
    case 1392: converter = tav::os::icuOpenByName("gb18030", &status); break;
    case 65502: converter = tav::os::icuOpenByName("LMBCS", &status); break;
    default:
      // ICU takes the CCSID as a signed number; larger ones name nothing it knows.
      converter =
          tav::os::icuOpenByCCSID(ccsid <= INT32_MAX ? static_cast<int32_t>(ccsid) : 0, &status);
      break;
  }
  if (converter == nullptr) {
    tav::codepage::mapIcuErrorQuietly(error, status > 0 ? status : tav::os::kIcuUnsupportedError);
    return nullptr;
  }
  tav::os::icuSetFallback(converter, true);
  return converter;
}

void tavDeleteICUConverter(void* converter) {
  if (converter != nullptr) tav::os::icuClose(converter);
}
