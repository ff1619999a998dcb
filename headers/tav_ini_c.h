/* tav_ini_c.h - configuration files for C programs.
 *
 * An opaque handle owns one configuration model and the name of its file. Look-ups name the
 * section and the option (both ignoring case) and find the first match. Saving writes the
 * model so that loading it again gives back the same values, and replaces the file whole
 * through a temporary file, so a crash leaves either the old file or the new one. No function
 * lets an exception escape; failures are reported by the result.
 */
#ifndef TAV_INI_C_H
#define TAV_INI_C_H

#include <stddef.h>

#include "tav_export.h"

TAV_EXTERN_C_BEGIN

typedef struct TavStIniFile TavStIniFile;

/* A new, empty model for the file of that name (".INI" is added when the name has no
 * extension); NULL when the name is not valid. Nothing is read yet. */
TAV_API TavStIniFile* tavIniFileCreate(const char* fileName);
/* Frees the model; NULL is allowed. */
TAV_API void tavIniFileDestroy(TavStIniFile* file);

/* Reads the file into the model (continuation lines allowed). 1 on success, 0 when the file
 * cannot be opened. Parse errors skip the line in question. */
TAV_API int tavIniFileLoad(TavStIniFile* file);
/* Reads length bytes of memory, lines ending at line feeds, continuation lines allowed. */
TAV_API int tavIniFileLoadFromBuffer(TavStIniFile* file, const char* buffer, size_t length);

/* The value text, valid until the option is changed or the model destroyed; NULL when the
 * section or option is absent. */
TAV_API const char* tavIniFileGetText(const TavStIniFile* file, const char* section,
                                      const char* option);
/* The value as a decimal number; 1 when found, 0 (and *value untouched) when absent. */
TAV_API int tavIniFileGetInteger(const TavStIniFile* file, const char* section, const char* option,
                                 long* value);
/* 1 into *value for ON, TRUE, YES, 1 or OK (any case), else 0; returns 1 when found. */
TAV_API int tavIniFileGetBool(const TavStIniFile* file, const char* section, const char* option,
                              int* value);

/* Sets the option's value, adding the section and the option when absent. 1 on success. */
TAV_API int tavIniFileSetText(TavStIniFile* file, const char* section, const char* option,
                              const char* value);

/* Writes the model to its file, replacing the file whole. 1 on success, 0 when the file could
 * not be written (it is then unchanged) or holds a name the format cannot express. */
TAV_API int tavIniFileSave(TavStIniFile* file);

TAV_EXTERN_C_END

#endif /* TAV_INI_C_H */
