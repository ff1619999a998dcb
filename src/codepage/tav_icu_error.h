// tav_icu_error.h - ICU error codes into error records without throwing, for the converters.

#ifndef TAV_ICU_ERROR_H
#define TAV_ICU_ERROR_H

#include "tav_codepage.h"

namespace tav::codepage {

// The row of the translation table for the code, or null.
const _TavStIcuErrorEntry* findIcuError(TavIcuErrorCode code);

// Fills id and class from the code's row; a code outside the table (which the public mapping
// throws for) gives ICU_UNEXPECTED_ICU_ERROR, so that a converter never throws.
void mapIcuErrorQuietly(_TavStError& error, TavIcuErrorCode code);

}  // namespace tav::codepage

#endif  // TAV_ICU_ERROR_H
