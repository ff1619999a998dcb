/* tav_dump.h - binary data as text: one-line hexadecimal and binary dumps, pointers, and
 * functions that dump whole memory areas line by line.
 *
 * A hexadecimal line shows 16 bytes, a binary line 8, each with an optional offset column and a
 * column of the bytes as characters ("." for those that do not print, "_" past the data):
 *
 *   00000010: 41 00 7f __ __ __ __ __  __ __ __ __ __ __ __ __ | A.._____________
 *   00000000: 10100101 ________ ________ ________  ________ ________ ________ ________ | ._______
 *
 * The dump functions number the lines by their offset from the start of the data, not by
 * memory address. The tavDebugDump functions are hooks for debug builds and do nothing.
 */
#ifndef TAV_DUMP_H
#define TAV_DUMP_H

#include <stddef.h>
#include <stdint.h>

#include "tav_export.h"

TAV_EXTERN_C_BEGIN
/* To standard output. */
TAV_API void tavDumpHex(const void* data, size_t count);
TAV_API void tavDumpBin(const void* data, size_t count);
TAV_API void tavDump(const void* data, size_t count);
TAV_API void tavDebugDump(const char* title, const void* data, size_t count);
TAV_API void tavDebugDumpHex(const char* title, const void* data, size_t count);
TAV_API void tavDebugDumpBin(const char* title, const void* data, size_t count);
TAV_EXTERN_C_END

#ifdef __cplusplus
#include <iosfwd>

/* An object that renders itself as one line of text, owned by the object. */
class TAV_API TavClStringRepresentationABase {
 public:
  virtual ~TavClStringRepresentationABase();
  virtual const char* getAsCString() const = 0;
};

TAV_API std::ostream& operator<<(std::ostream& stream,
                                 const TavClStringRepresentationABase& representation);

/* One line of up to 16 bytes in hexadecimal: 77 characters with an 8-digit offset column.
 * Offsets beyond 8 digits widen the line; the buffer holds the widest, of 16 digits. */
class TAV_API TavClStrepHexDump : public TavClStringRepresentationABase {
 public:
  TavClStrepHexDump(size_t address, const void* data, size_t count);
  TavClStrepHexDump(const void* data, size_t count);
  const char* getAsCString() const override;

 private:
  char text[77 + 8 + 1];
};

/* One line of up to 8 bytes in binary: 93 characters with an 8-digit offset column. */
class TAV_API TavClStrepBinDump : public TavClStringRepresentationABase {
 public:
  TavClStrepBinDump(size_t address, const void* data, size_t count);
  TavClStrepBinDump(const void* data, size_t count);
  const char* getAsCString() const override;

 private:
  char text[93 + 8 + 1];
};

/* A pointer as the standard stream inserter writes it. */
class TAV_API TavClStrepAddress {
 public:
  explicit TavClStrepAddress(const void* pointer);
  virtual ~TavClStrepAddress();
  virtual const char* getAsCString() const;

 private:
  char text[2 + 2 * sizeof(void*) + 1 + 16];
};

/* Dumps to a stream: rows of 16 bytes in hexadecimal (tavDumpHex, tavDump) or of 8 bytes in
 * binary (tavDumpBin), each row followed by "\n". Arrays of 16-, 32- and 64-bit elements are
 * dumped as their bytes in memory order. Without a stream, the dump goes to standard output. */
#define TAV_DECLARE_DUMP_FAMILY(name)                                               \
  TAV_API void name(std::ostream& stream, const unsigned char* data, size_t count); \
  TAV_API void name(std::ostream& stream, const uint16_t* data, size_t count);      \
  TAV_API void name(std::ostream& stream, const uint32_t* data, size_t count);      \
  TAV_API void name(std::ostream& stream, const uint64_t* data, size_t count);      \
  TAV_API void name(const uint16_t* data, size_t count);                            \
  TAV_API void name(const uint32_t* data, size_t count);                            \
  TAV_API void name(const uint64_t* data, size_t count);
TAV_DECLARE_DUMP_FAMILY(tavDumpHex)
TAV_DECLARE_DUMP_FAMILY(tavDumpBin)
TAV_DECLARE_DUMP_FAMILY(tavDump)
#undef TAV_DECLARE_DUMP_FAMILY

/* Debug-build hooks; they do nothing. */
TAV_API void tavDebugDump(const char* title, const uint16_t* data, size_t count);
TAV_API void tavDebugDump(const char* title, const uint32_t* data, size_t count);
TAV_API void tavDebugDump(const char* title, const uint64_t* data, size_t count);
TAV_API void tavDebugDumpHex(const char* title, const uint16_t* data, size_t count);
TAV_API void tavDebugDumpHex(const char* title, const uint32_t* data, size_t count);
TAV_API void tavDebugDumpHex(const char* title, const uint64_t* data, size_t count);
TAV_API void tavDebugDumpBin(const char* title, const uint16_t* data, size_t count);
TAV_API void tavDebugDumpBin(const char* title, const uint32_t* data, size_t count);
TAV_API void tavDebugDumpBin(const char* title, const uint64_t* data, size_t count);

#endif /* __cplusplus */

#endif /* TAV_DUMP_H */
