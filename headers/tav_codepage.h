// tav_codepage.h - coded character sets by number (CCSID), their properties, and the converters
// between them.
//
// TavClCCSID names a coded character set by its CCSID and answers from a built-in table of 430
// known CCSIDs whether it is known, its name, and whether it is ASCII-based, EBCDIC-based,
// single-byte, double-byte or UCS-2. Every conversion passes through UCS-2 in host byte order
// (CCSID 13488): a code-page-to-Unicode converter, a Unicode-to-code-page converter, and a
// code-page-to-code-page converter chaining the two through a buffer of its own. Each converter
// chooses one routine at construction; a converter for which no routine fits is still built,
// answers isSupported() false and reports CPCONVERTER_UNSUPPORTED on use. Converters never
// throw (except when memory runs out): each conversion clears the converter's error record and
// the routine sets it; the result is the number of bytes written.
//
// Every routine stays inside the sizes it is given, for any sizes including 0, 1 and odd ones:
// it reads no input byte at or after inSize and writes no output byte at or after outSize. Where
// the plain rule would not, the routine is made safe as follows:
// - UCS-2 to 819 stops at the end of the output with CPCONVERTER_TOO_BIG, like every other
//   routine, rather than writing one byte per unit whatever the output size;
// - UTF-8 to UCS-2 (and convertUtf8CharToUtf32) decode only well-formed UTF-8: overlong forms,
//   encoded surrogates, values above U+10FFFF, 5- and 6-byte forms, stray and missing
//   continuation bytes each become one U+FFFD per maximal ill-formed subpart, so a text cannot
//   decode to characters its bytes do not name. Well-formed input converts as before, and a
//   well-formed start cut by the end of the input still reports CPCONVERTER_INCOMPLETE with the
//   input pointer left on its first byte.
// - Copying and byte swapping report CPCONVERTER_TOO_BIG, not CPCONVERTER_INCOMPLETE, when an
//   odd output size rather than the input ends them.
// - The table routines write a character whole or not at all and stop with
//   CPCONVERTER_TOO_BIG before one that does not fit; UCS-2 to a single-byte code page stops at
//   the end of the output like every other routine.
// - A double-byte character cut by the end of the input (a lead byte, half a pair in
//   double-byte mode, a cut three- or four-byte code) is left unconsumed with
//   CPCONVERTER_INCOMPLETE instead of being read past the end; an EBCDIC input that ends in
//   double-byte mode reports CPCONVERTER_INCOMPLETE. The shift state is not kept between calls:
//   a text continued after CPCONVERTER_TOO_BIG in double-byte mode needs its shift-out again.
// - A lead byte followed by a byte that cannot follow it gives one substitute (U+001A, U+FFFD
//   for GB18030) for the lead byte alone, and the next byte is read again, as ICU does, instead
//   of both bytes being swallowed.
// - Codes that stand for two UCS-2 units (characters beyond U+FFFF, letters with a combining
//   mark in 1390 and 1399) write both units; GB18030 (1392) reads its four-byte codes and EUC-JP
//   (33722) its three-byte codes whole rather than as pairs.
//
// Built-in tables, generated from the IBM mappings (ICU reaches the other code pages):
// - to UCS-2, single-byte: EBCDIC 37, 273, 277, 278, 280, 284, 285, 297, 500, 870, 871, 875,
//   1025, 1026, 1047, 1140-1149, 1153; PC 437, 850, 852, 855, 857, 858, 860, 861, 863, 865,
//   866, 869; Windows 1250-1258; ISO 8859-1 (819) and 8859-15 (923);
// - to UCS-2, double-byte: EBCDIC 930, 933, 935, 937, 939, 1390, 1399 (with their aliases 5026
//   and 5035); 950, 1386 (with 936), 1392 (GB18030, with 5488 and 18030), 33722 (EUC-JP, with
//   954);
// - from UCS-2: 500 and 850.
// Every table answers what ICU answers for the same bytes, except that EBCDIC next line (U+0085)
// is written as line feed (U+000A), each UCS-2 unit gives exactly one byte (ICU drops some
// ignorable code points and substitutes a surrogate pair once), and the cut characters above.
//
// ICU serves the code pages without a built-in routine. The library links it on Linux and loads
// the system's icu.dll at run time on Windows; where that is absent every ICU open fails and
// such converters are unsupported. Users of this header need no ICU headers.

#ifndef TAV_CODEPAGE_H
#define TAV_CODEPAGE_H

#include <stddef.h>
#include <stdint.h>

#include "tav_error.h"
#include "tav_export.h"
#include "tav_memmgr.h"

#ifdef __cplusplus

// A CCSID: the values are the numbers themselves, so any number may be cast to it. The named
// ones are those the converters treat specially.
enum TavEnCCSID : uint32_t {
  TAV_CCSID_UNKNOWN = 0,
  TAV_CCSID_EBCDIC_37 = 37,
  TAV_CCSID_EBCDIC_500 = 500,
  TAV_CCSID_ISO8859_1 = 819,
  TAV_CCSID_PC_850 = 850,
  TAV_CCSID_UCS2_ISO10646 = 1200,
  TAV_CCSID_UTF8 = 1208,
  TAV_CCSID_WINDOWS_1252 = 1252,
  TAV_CCSID_GB18030_1392 = 1392,
  TAV_CCSID_GB18030 = 18030,
  TAV_CCSID_UCS2 = 13488,  // the library's internal UCS-2, host byte order
  TAV_CCSID_UCS2_17584 = 17584,
  TAV_CCSID_UCS2_61955 = 61955,
  TAV_CCSID_UCS2_BIG_ENDIAN = 65500,
  TAV_CCSID_UCS2_LITTLE_ENDIAN = 65501
};

// One row of the property table (defined inside the library).
struct _TavStCCSIDRow;

// A CCSID with its properties. The row of the property table is looked up on first use; that
// lazy look-up writes the same value from any thread, so concurrent first use is harmless.
class TAV_API TavClCCSID {
 public:
  // Property bits of a row.
  enum : uint32_t {
    FLAG_ASCII = 0x01,
    FLAG_EBCDIC = 0x02,
    FLAG_DBCS = 0x04,
    FLAG_SBCS = 0x08,
    FLAG_UCS2 = 0x40
  };

  TavClCCSID(TavEnCCSID value = TAV_CCSID_UNKNOWN) : ccsid(value), row(nullptr) {}  // NOLINT
  // Text beginning with a decimal digit is the number itself (atoi). Other text is compared with
  // the names of the table ignoring case and the first match wins. Text matching no name gives
  // the number from its first digit on (0 without one) but is deliberately not valid: "CP1252"
  // has the number 1252 and no properties. A null text gives CCSID 0.
  explicit TavClCCSID(const char* text);

  TavEnCCSID getCCSID() const { return ccsid; }

  // Finds the row if it is not known yet; an unknown number gets the sentinel row.
  void determineProperties() const;

  bool isValid() const;  // a number other than 0 with a row of its own
  bool isASCII() const;
  bool isEBCDIC() const;
  bool isSBCS() const;
  bool isDBCS() const;
  bool isUCS2() const;
  bool isUCS2BigEndian() const;     // 65500
  bool isUCS2LittleEndian() const;  // 65501, 13488, 17584, 1200, 61955
  bool isUCS2HostEndian() const;    // the same set: every supported host is little-endian
  // The row's name: the number as text, the base code page's number, or a character set name
  // ("UTF-8", "ISO8859-1"); "???" when unknown.
  const char* getName() const;
  // The row's property bits (FLAG_*); 0 when unknown.
  uint32_t getFlags() const;

  // Equal numbers, where 65501 counts as 13488.
  bool operator==(TavEnCCSID other) const;
  bool operator!=(TavEnCCSID other) const { return !(*this == other); }
  bool operator==(const TavClCCSID& other) const { return *this == other.ccsid; }
  bool operator!=(const TavClCCSID& other) const { return !(*this == other.ccsid); }

  // The process's ANSI code page, asked on every call. On POSIX this is the CCSID of the
  // environment's locale codeset (UTF-8 gives 1208); the process locale is never changed.
  static TavEnCCSID getSystemCCSID();
  // The process's console (OEM) code page, asked once and kept. On POSIX the same as above.
  static TavEnCCSID getConsoleCCSID();
  // 65500 for the bytes FE FF, 65501 for FF FE, otherwise 0. Reads two bytes; null gives 0.
  static TavEnCCSID getCCSIDForUCS2EndianId(const char* bytes);

  // The number of rows of the property table, and the row at an index (0 is the sentinel
  // {0, "???", no flags}); for programs listing the known CCSIDs.
  static size_t getKnownCount();
  static TavClCCSID getKnownAt(size_t index);

 private:
  TavEnCCSID ccsid;
  mutable const _TavStCCSIDRow* row;
};

// ICU's error code (a UErrorCode value: 0 success, negative warnings, positive errors), kept as
// a plain integer so that this header needs no ICU header.
typedef int32_t TavIcuErrorCode;

// One row of the ICU error translation table.
struct _TavStIcuErrorEntry {
  TavIcuErrorCode icuCode;
  uint32_t id;
  TavEnErrorClass errorClass;
  TavEnErrorAction action;
  TavEnErrorSeverity severity;
};

// Translates ICU's error codes into the library's error records through a fixed table of 22
// rows (success, ICU's errors 1 to 20 and its error limit 66568).
class TAV_API TavClIcuInterface {
 public:
  // The row of the code. A code outside the table (ICU's warnings among them) throws a
  // TavClException with ICU_UNEXPECTED_ICU_ERROR and the cause "Unexpected ICU error".
  static const _TavStIcuErrorEntry& getTavEntryForIcuError(TavIcuErrorCode code);
  static uint32_t getTavErrorIdForIcuError(TavIcuErrorCode code);
  static TavEnErrorClass getTavErrorClassForIcuError(TavIcuErrorCode code);
  static TavEnErrorAction getTavErrorActionForIcuError(TavIcuErrorCode code);
  static TavEnErrorSeverity getTavErrorSeverityForIcuError(TavIcuErrorCode code);

  // Fill a record from the code's row (throwing like getTavEntryForIcuError).
  static void mapIcuError(_TavStError& error, TavIcuErrorCode code);
  static void mapIcuError(_TavStUserError& error, TavIcuErrorCode code);

  // Nothing for success and warnings (codes of 0 or below); any other code is thrown as a
  // TavClException carrying its mapped record.
  static void handleIcuErrorCode(TavIcuErrorCode code);

  // The table itself, for programs that list it.
  static size_t getEntryCount();
  static const _TavStIcuErrorEntry& getEntryAt(size_t index);
};

// The base of every converter: source and target CCSID, the chosen routine and its data, and
// the error record of the last conversion. Not for concurrent use: one converter per thread.
class TAV_API TavClConverterABase : public TavClMemoryManagedObject {
 public:
  // What a routine works on. The routine reads the converter's routine data, sets its error,
  // converts from *input (inputSize bytes) into output (outputSize bytes), advances *input past
  // what it consumed and returns the bytes written.
  struct _TavStConverter {
    const TavClConverterABase* converter;
    char* output;
    size_t outputSize;
    const char** input;
    size_t inputSize;
  };
  typedef size_t (*TavPfuConverterAlgorithm)(_TavStConverter& conversion);

  virtual ~TavClConverterABase();

  virtual const TavClCCSID& getTargetCCSID() const;
  // A routine was found.
  virtual bool isSupported() const;
  // No routine was found: only a conversion routine outside the library could serve.
  virtual bool requiresExternalICONVRoutine() const;
  // The routine is one of the two ICU ones.
  virtual bool requiresExternalICUData() const;
  // Output bytes needed for that many input characters, and for that many input bytes.
  virtual size_t getMaximumSizeForLength(size_t characters) const = 0;
  virtual size_t getMaximumSizeForSize(size_t bytes) const = 0;
  // Converts, advances *in past what was consumed, returns the bytes written; getError() tells
  // why a conversion stopped early (CPCONVERTER_TOO_BIG, CPCONVERTER_INCOMPLETE, ...).
  virtual size_t convertBytes(char* out, size_t outSize, const char** in, size_t inSize) const;
  // The same on a copy of the input pointer.
  virtual size_t convertBytes(char* out, size_t outSize, const char* in, size_t inSize) const;

  const TavClCCSID& getSourceCCSID() const { return sourceCCSID; }
  // The error record of the last conversion; id NO_ERROR after success.
  const _TavStError& getError() const { return error; }
  // For routines: their data (an ICU converter for the ICU routines, else null) and the error.
  void* getAlgorithmData() const { return algorithmData; }
  TavPfuConverterAlgorithm getAlgorithm() const { return algorithm; }
  void setError(uint32_t id, TavEnErrorClass errorClass) const;

  // The byte order marks of UCS-2: FE FF big-endian, FF FE little-endian (the host's order).
  static const char* getUCS2BigEndianId();
  static const char* getUCS2LittleEndianId();
  static const char* getUCS2HostEndianId();
  // Whether the first two bytes of the buffer are that mark; null is neither.
  static bool isUCS2BigEndianId(const char* bytes);
  static bool isUCS2LittleEndianId(const char* bytes);
  // Decodes the UTF-8 character at the start of a NUL-terminated text: its code point, 0 for
  // the empty text, U+FFFD for an ill-formed start. Reads nothing after a NUL byte.
  static uint32_t convertUtf8CharToUtf32(const char* text);

 protected:
  TavClConverterABase(const TavClCCSID& source, const TavClCCSID& target);

  // Choose the routine for the source (to UCS-2), or for the target (from UCS-2).
  void initCodePage2Unicode();
  void initUnicode2CodePage();
  // Releases the current routine, takes a new source and chooses again.
  void initNewCodePage2Unicode(const TavClCCSID& source);
  // Close an ICU converter and fall back to tavConvertError.
  void deinit();
  void setConverterError();

 private:
  TavClConverterABase(const TavClConverterABase&) = delete;
  TavClConverterABase& operator=(const TavClConverterABase&) = delete;

  mutable _TavStError error;
  TavClCCSID sourceCCSID;
  TavClCCSID targetCCSID;
  void* algorithmData;
  TavPfuConverterAlgorithm algorithm;
};

// From a code page into UCS-2 in host byte order (target 13488).
class TAV_API TavClCodePage2UnicodeConverter : public TavClConverterABase {
 public:
  explicit TavClCodePage2UnicodeConverter(const TavClCCSID& source);
  ~TavClCodePage2UnicodeConverter() override;

  // 4n for source 1392, else 2n.
  size_t getMaximumSizeForLength(size_t characters) const override;
  // n for a UCS-2 source, else 2n.
  size_t getMaximumSizeForSize(size_t bytes) const override;
};

// From UCS-2 in host byte order (source 13488) into a code page.
class TAV_API TavClUnicode2CodePageConverter : public TavClConverterABase {
 public:
  explicit TavClUnicode2CodePageConverter(const TavClCCSID& target);
  ~TavClUnicode2CodePageConverter() override;

  // 5n for 1208, 4n for 1392, else 2n.
  size_t getMaximumSizeForLength(size_t characters) const override;
  // (n/2)*3 for 1208; n for 1392 and UCS-2; n/2 single-byte; n rounded down to even double-byte;
  // 2n for a target of none of these kinds.
  size_t getMaximumSizeForSize(size_t bytes) const override;
};

// From one code page into another: itself the first stage (source to UCS-2), with a second
// stage (UCS-2 to target) and a buffer between them that grows as needed and is kept. The first
// stage consumes the whole input into the buffer, so after CPCONVERTER_TOO_BIG from the second
// stage the input pointer is past text that was not written: size the output with
// getMaximumSizeForSize. A character cut by the end of the input stays unconsumed.
class TAV_API TavClCodePage2CodePageConverter : public TavClCodePage2UnicodeConverter {
 public:
  TavClCodePage2CodePageConverter(const TavClCCSID& source, const TavClCCSID& target);
  ~TavClCodePage2CodePageConverter() override;

  const TavClCCSID& getTargetCCSID() const override;
  bool isSupported() const override;                   // both stages are
  bool requiresExternalICONVRoutine() const override;  // either stage does
  bool requiresExternalICUData() const override;       // either stage does
  size_t getMaximumSizeForLength(size_t characters) const override;
  size_t getMaximumSizeForSize(size_t bytes) const override;
  size_t convertBytes(char* out, size_t outSize, const char** in, size_t inSize) const override;
  size_t convertBytes(char* out, size_t outSize, const char* in, size_t inSize) const override;

  const TavClUnicode2CodePageConverter& getSecondStage() const { return secondStage; }

 private:
  TavClUnicode2CodePageConverter secondStage;
  mutable char* buffer;
  mutable size_t bufferCapacity;
};

// From a code page into UTF-8.
class TAV_API TavClCodePage2UTF8Converter : public TavClCodePage2CodePageConverter {
 public:
  explicit TavClCodePage2UTF8Converter(const TavClCCSID& source);
  ~TavClCodePage2UTF8Converter() override;
};

// The conversion routines. Each converts conversion.inputSize bytes at *conversion.input into
// conversion.output, advances *conversion.input, returns the bytes written and sets the
// converter's error: CPCONVERTER_TOO_BIG when the output fills before the input is consumed,
// CPCONVERTER_INCOMPLETE for an odd UCS-2 size or a character cut by the end of the input.

// Copies the whole UCS-2 units that fit: TOO_BIG when the output is the limit, INCOMPLETE for an
// odd input size that fits (its last byte is left).
TAV_API size_t tavConvertByCopying(TavClConverterABase::_TavStConverter& conversion);
// As copying, swapping the two bytes of every unit.
TAV_API size_t tavConvertByEndianSwap(TavClConverterABase::_TavStConverter& conversion);
// The low byte of every unit: code points above 255 are cut, not substituted. Stops at the end
// of the output with TOO_BIG.
TAV_API size_t tavConvertByAlgorithmUCS2to819(TavClConverterABase::_TavStConverter& conversion);
// Well-formed UTF-8 into UCS-2; ill-formed input becomes U+FFFD (see the top of this header).
// Characters above U+FFFF become surrogate pairs.
TAV_API size_t tavConvertByAlgorithmUTF8toUCS2(TavClConverterABase::_TavStConverter& conversion);
// UCS-2 into UTF-8; surrogate pairs become 4 bytes; lone surrogates, U+FDD0-U+FDEF, U+FFFE and
// U+FFFF are each written as EF BF BF.
TAV_API size_t tavConvertByAlgorithmUCS2toUTF8(TavClConverterABase::_TavStConverter& conversion);
// One ICU conversion over the whole input (flushing), with the converter's ICU converter; the
// ICU error is mapped by TavClIcuInterface.
TAV_API size_t tavConvertByAlgorithmIcuToUnicode(TavClConverterABase::_TavStConverter& conversion);
TAV_API size_t
tavConvertByAlgorithmIcuFromUnicode(TavClConverterABase::_TavStConverter& conversion);
// The operating system's conversion from UCS-2 into the target CCSID, a process code page;
// failure (including a full output) sets TOO_BIG and writes nothing.
TAV_API size_t tavConvertByWindowsCallUCS2ToWinCP(TavClConverterABase::_TavStConverter& conversion);
// Through a built-in single-byte table; the EBCDIC variant writes U+0085 as U+000A.
TAV_API size_t
tavConvertByTablesSBCS_EBCDICtoUCS2(TavClConverterABase::_TavStConverter& conversion);
TAV_API size_t tavConvertByTablesSBCS_ASCIItoUCS2(TavClConverterABase::_TavStConverter& conversion);
// Through a built-in double-byte table: EBCDIC with shift-out (0x0E) and shift-in (0x0F), or
// ASCII-based with lead bytes; see the top of this header for cut and illegal characters.
TAV_API size_t
tavConvertByTablesDBCS_EBCDICtoUCS2(TavClConverterABase::_TavStConverter& conversion);
TAV_API size_t tavConvertByTablesDBCS_ASCIItoUCS2(TavClConverterABase::_TavStConverter& conversion);
// Through a reverse table into a single-byte code page (500 or 850), one byte a unit.
TAV_API size_t tavConvertByTablesUCS2toSBCS(TavClConverterABase::_TavStConverter& conversion);
// A placeholder that no converter chooses: converts nothing and returns 0.
TAV_API size_t tavConvertByTablesEUCtoUCS2(TavClConverterABase::_TavStConverter& conversion);
// Converts nothing and sets CPCONVERTER_UNSUPPORTED.
TAV_API size_t tavConvertError(TavClConverterABase::_TavStConverter& conversion);

// Opens ICU's converter for a CCSID, with fallback mappings on: 932 and 942 give ICU's 942
// variant with vendor substitution and the private use area, 943 that variant for 943, 1392
// ICU's "gb18030", 65502 "LMBCS", others ICU's converter for the CCSID. Null, with the mapped
// ICU error in error, when ICU has none (or is not present).
TAV_API void* tavGetICUConverter(unsigned int ccsid, _TavStError& error);
// Closes one; null is ignored.
TAV_API void tavDeleteICUConverter(void* converter);

#endif /* __cplusplus */

#endif /* TAV_CODEPAGE_H */
