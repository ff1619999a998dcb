// tav_codepage_c_api.cpp - the C interface to converters: an opaque handle over a converter
// between two code pages.
//
// Every entry point catches the library's exceptions (running out of memory is the only one a
// converter throws), since none may cross into C code.

#include "tav_codepage.h"
#include "tav_codepage_c.h"

struct TavStConverter : public TavClMemoryManagedObject {
  TavStConverter(uint32_t source, uint32_t target)
      : converter(TavClCCSID(static_cast<TavEnCCSID>(source)),
                  TavClCCSID(static_cast<TavEnCCSID>(target))) {}
  TavClCodePage2CodePageConverter converter;
};

extern "C" {

TavStConverter* tavConverterOpen(uint32_t sourceCcsid, uint32_t targetCcsid) {
  try {
    return new TavStConverter(sourceCcsid, targetCcsid);
  } catch (const TavClExceptionABase&) {
    return nullptr;
  }
}

void tavConverterClose(TavStConverter* converter) { delete converter; }

int tavConverterIsSupported(const TavStConverter* converter) {
  return converter != nullptr && converter->converter.isSupported() ? 1 : 0;
}

size_t tavConverterGetMaximumSize(const TavStConverter* converter, size_t inSize) {
  return converter != nullptr ? converter->converter.getMaximumSizeForSize(inSize) : 0;
}

size_t tavConverterConvert(TavStConverter* converter, char* out, size_t outSize, const char** in,
                           size_t inSize) {
  if (converter == nullptr) return 0;
  try {
    return converter->converter.convertBytes(out, outSize, in, inSize);
  } catch (const TavClExceptionABase&) {
    converter->converter.setError(CPCONVERTER_NO_TMP_BUFFER, TAV_CLASS_OUT_OF_MEMORY);
    return 0;
  }
}

uint32_t tavConverterGetError(const TavStConverter* converter, TavEnErrorClass* errorClass) {
  _TavStError error = {NO_ERROR, TAV_CLASS_UNKNOWN};
  if (converter != nullptr) error = converter->converter.getError();
  if (errorClass != nullptr) *errorClass = error.errorClass;
  return error.id;
}

}  // extern "C"
