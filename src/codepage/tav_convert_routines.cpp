// tav_convert_routines.cpp - the conversion routines that need neither tables nor ICU.
//
// Each routine stays inside its sizes: it reads no input byte at or after inputSize and writes
// no output byte at or after outputSize. UCS-2 is in host byte order; an odd UCS-2 input size
// leaves the last byte unconsumed and reports CPCONVERTER_INCOMPLETE, unless the output filled
// first, which reports CPCONVERTER_TOO_BIG.

#include <algorithm>
#include <cstring>

#include "tav_codepage.h"
#include "tav_codepage_os.h"
#include "tav_utf_transcode.h"

namespace {

using Conversion = TavClConverterABase::_TavStConverter;

void setTooBig(const Conversion& conversion) {
  conversion.converter->setError(CPCONVERTER_TOO_BIG, TAV_CLASS_DATA_OUT_OF_BOUNDS);
}

void setIncomplete(const Conversion& conversion) {
  conversion.converter->setError(CPCONVERTER_INCOMPLETE, TAV_CLASS_USER_DATA_ERROR);
}

// For routines that turn one UCS-2 unit into outputBytesPerUnit bytes: how many units fit, with
// the error that tells why the rest of the input was left.
size_t unitsToConvert(const Conversion& conversion, size_t outputBytesPerUnit) {
  size_t inputUnits = conversion.inputSize / 2;
  size_t outputUnits = conversion.outputSize / outputBytesPerUnit;
  if (outputUnits < inputUnits) {
    setTooBig(conversion);
    return outputUnits;
  }
  if (conversion.inputSize % 2 != 0) setIncomplete(conversion);
  return inputUnits;
}

size_t finishTranscode(Conversion& conversion, tav::codepage::TranscodeResult result) {
  *conversion.input += result.consumed;
  if (result.status == tav::codepage::TranscodeStatus::tooBig) setTooBig(conversion);
  if (result.status == tav::codepage::TranscodeStatus::incomplete) setIncomplete(conversion);
  return result.written;
}

}  // namespace

size_t tavConvertByCopying(Conversion& conversion) {
  size_t units = unitsToConvert(conversion, 2);
  size_t bytes = units * 2;
  if (bytes != 0) std::memmove(conversion.output, *conversion.input, bytes);
  *conversion.input += bytes;
  return bytes;
}

size_t tavConvertByEndianSwap(Conversion& conversion) {
  size_t units = unitsToConvert(conversion, 2);
  const char* in = *conversion.input;
  char* out = conversion.output;
  for (size_t i = 0; i < units; ++i) {
    // Read both bytes before writing, so that converting in place works too.
    char first = in[2 * i];
    char second = in[2 * i + 1];
    out[2 * i] = second;
    out[2 * i + 1] = first;
  }
  *conversion.input += units * 2;
  return units * 2;
}

size_t tavConvertByAlgorithmUCS2to819(Conversion& conversion) {
  size_t units = unitsToConvert(conversion, 1);
  const char* in = *conversion.input;
  for (size_t i = 0; i < units; ++i) {
    uint16_t unit;
    std::memcpy(&unit, in + 2 * i, 2);
    // Code points above U+00FF keep only their low byte, deliberately.
    conversion.output[i] = static_cast<char>(unit & 0xFF);
  }
  *conversion.input += units * 2;
  return units;
}

size_t tavConvertByAlgorithmUTF8toUCS2(Conversion& conversion) {
  return finishTranscode(conversion,
                         tav::codepage::utf8ToUcs2(*conversion.input, conversion.inputSize,
                                                   conversion.output, conversion.outputSize));
}

size_t tavConvertByAlgorithmUCS2toUTF8(Conversion& conversion) {
  return finishTranscode(conversion,
                         tav::codepage::ucs2ToUtf8(*conversion.input, conversion.inputSize,
                                                   conversion.output, conversion.outputSize));
}

size_t tavConvertByWindowsCallUCS2ToWinCP(Conversion& conversion) {
  size_t units = conversion.inputSize / 2;
  if (conversion.inputSize % 2 != 0) setIncomplete(conversion);
  if (units == 0) return 0;
  size_t written = tav::os::convertUcs2ToProcessCodePage(
      conversion.converter->getTargetCCSID().getCCSID(), *conversion.input, units * 2,
      conversion.output, conversion.outputSize);
  if (written == 0) {
    setTooBig(conversion);
    return 0;
  }
  *conversion.input += units * 2;
  return written;
}

size_t tavConvertError(Conversion& conversion) {
  conversion.converter->setError(CPCONVERTER_UNSUPPORTED, TAV_CLASS_INCONSISTENT_SITUATION);
  return 0;
}
