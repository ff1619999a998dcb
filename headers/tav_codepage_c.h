/* tav_codepage_c.h - code page conversion for C programs.
 *
 * An opaque handle owns one converter from a source CCSID to a target CCSID (a code page
 * number: 1208 UTF-8, 13488 UCS-2 in host byte order, 37 EBCDIC, ...), chained through UCS-2
 * when neither side is UCS-2. A handle for a pair the library cannot convert is still opened;
 * it answers tavConverterIsSupported with 0 and every conversion reports
 * CPCONVERTER_UNSUPPORTED. Conversions never read or write outside the sizes given. No function
 * lets an exception escape.
 */
#ifndef TAV_CODEPAGE_C_H
#define TAV_CODEPAGE_C_H

#include <stddef.h>
#include <stdint.h>

#include "tav_error.h"
#include "tav_export.h"

TAV_EXTERN_C_BEGIN

typedef struct TavStConverter TavStConverter;

/* A converter from sourceCcsid to targetCcsid; NULL only when memory runs out. */
TAV_API TavStConverter* tavConverterOpen(uint32_t sourceCcsid, uint32_t targetCcsid);
/* Frees the converter; NULL is allowed. */
TAV_API void tavConverterClose(TavStConverter* converter);

/* 1 when the library has a way to convert the pair, else 0 (also for NULL). */
TAV_API int tavConverterIsSupported(const TavStConverter* converter);
/* Output bytes enough for inSize bytes of input. */
TAV_API size_t tavConverterGetMaximumSize(const TavStConverter* converter, size_t inSize);

/* Converts inSize bytes at *in into out (outSize bytes), advances *in past the input consumed
 * and returns the bytes written. tavConverterGetError tells why it stopped early. */
TAV_API size_t tavConverterConvert(TavStConverter* converter, char* out, size_t outSize,
                                   const char** in, size_t inSize);

/* The error id of the last conversion (0 for success, CPCONVERTER_TOO_BIG when the output
 * filled, CPCONVERTER_INCOMPLETE for input cut inside a character, ...); its error class into
 * *errorClass when that is not NULL. */
TAV_API uint32_t tavConverterGetError(const TavStConverter* converter, TavEnErrorClass* errorClass);

TAV_EXTERN_C_END

#endif /* TAV_CODEPAGE_C_H */
