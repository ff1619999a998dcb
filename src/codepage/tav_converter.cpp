// tav_converter.cpp - what every converter shares: choosing its routine, running it, and the
// byte order marks.
//
// A converter chooses its routine once, at construction, by a fixed order of rules: the
// arithmetic routines for UCS-2 and UTF-8, then the built-in tables, then ICU, and (from
// Unicode only) the operating system's conversion for the process code pages.

#include <cstring>

#include "tav_codepage.h"
#include "tav_codepage_tables.h"
#include "tav_utf_transcode.h"

namespace {

bool isIcuRoutine(TavClConverterABase::TavPfuConverterAlgorithm routine) {
  return routine == tavConvertByAlgorithmIcuToUnicode ||
         routine == tavConvertByAlgorithmIcuFromUnicode;
}

// The CCSID whose table (or ICU converter) serves a source CCSID: aliases share one.
uint32_t tableCcsidFor(uint32_t ccsid) {
  switch (ccsid) {
    case 5026: return 930;
    case 5035: return 939;
    case 938: return 948;
    case 936: return 1386;
    case 5488:
    case 18030: return 1392;
    case 954: return 33722;
    default: return ccsid;
  }
}

bool isUCS2HostOrder(uint32_t ccsid) {
  return ccsid == 1200 || ccsid == 13488 || ccsid == 17584 || ccsid == 61955 || ccsid == 65501;
}

const char kBigEndianId[] = "\xFE\xFF";
const char kLittleEndianId[] = "\xFF\xFE";

bool startsWith(const char* bytes, const char* mark) {
  return bytes != nullptr && bytes[0] == mark[0] && bytes[0] != '\0' && bytes[1] == mark[1];
}

}  // namespace

TavClConverterABase::TavClConverterABase(const TavClCCSID& source, const TavClCCSID& target)
    : error{NO_ERROR, TAV_CLASS_UNKNOWN},
      sourceCCSID(source),
      targetCCSID(target),
      algorithmData(nullptr),
      algorithm(tavConvertError) {}

TavClConverterABase::~TavClConverterABase() { deinit(); }

const TavClCCSID& TavClConverterABase::getTargetCCSID() const { return targetCCSID; }

bool TavClConverterABase::isSupported() const { return algorithm != tavConvertError; }

bool TavClConverterABase::requiresExternalICONVRoutine() const {
  return algorithm == tavConvertError;
}

bool TavClConverterABase::requiresExternalICUData() const { return isIcuRoutine(algorithm); }

void TavClConverterABase::setError(uint32_t id, TavEnErrorClass errorClass) const {
  error = {id, errorClass};
}

size_t TavClConverterABase::convertBytes(char* out, size_t outSize, const char** in,
                                         size_t inSize) const {
  error = {NO_ERROR, TAV_CLASS_UNKNOWN};
  // Null buffers hold nothing, whatever size comes with them.
  const char* noInput = "";
  if (in == nullptr) in = &noInput;
  if (*in == nullptr) {
    in = &noInput;
    inSize = 0;
  }
  if (out == nullptr) outSize = 0;
  _TavStConverter conversion{this, out, outSize, in, inSize};
  return algorithm(conversion);
}

size_t TavClConverterABase::convertBytes(char* out, size_t outSize, const char* in,
                                         size_t inSize) const {
  return convertBytes(out, outSize, &in, inSize);
}

void TavClConverterABase::initCodePage2Unicode() {
  deinit();
  uint32_t ccsid = sourceCCSID.getCCSID();
  if (ccsid == TAV_CCSID_UCS2_BIG_ENDIAN) {
    algorithm = tavConvertByEndianSwap;
    return;
  }
  if (isUCS2HostOrder(ccsid)) {
    algorithm = tavConvertByCopying;
    return;
  }
  if (ccsid == TAV_CCSID_UTF8) {
    algorithm = tavConvertByAlgorithmUTF8toUCS2;
    return;
  }
  uint32_t tableCcsid = tableCcsidFor(ccsid);
  tav::codepage::BuiltInTable table =
      tav::codepage::findTableToUnicode(tableCcsid, sourceCCSID.isEBCDIC());
  if (table.routine != nullptr) {
    algorithm = table.routine;
    algorithmData = const_cast<void*>(table.table);
    return;
  }
  _TavStError icuError;
  if (void* icu = tavGetICUConverter(tableCcsid, icuError)) {
    algorithm = tavConvertByAlgorithmIcuToUnicode;
    algorithmData = icu;
  }
  // Deliberately no operating-system conversion in this direction: the converter stays
  // unsupported.
}

void TavClConverterABase::initUnicode2CodePage() {
  deinit();
  uint32_t ccsid = targetCCSID.getCCSID();
  if (ccsid == TAV_CCSID_ISO8859_1) {
    algorithm = tavConvertByAlgorithmUCS2to819;
    return;
  }
  if (ccsid == TAV_CCSID_EBCDIC_500 || ccsid == TAV_CCSID_PC_850) {
    tav::codepage::BuiltInTable table = tav::codepage::findTableFromUnicode(ccsid);
    if (table.routine != nullptr) {
      algorithm = table.routine;
      algorithmData = const_cast<void*>(table.table);
      return;
    }
  }
  if (isUCS2HostOrder(ccsid)) {
    algorithm = tavConvertByCopying;
    return;
  }
  if (ccsid == TAV_CCSID_UTF8) {
    algorithm = tavConvertByAlgorithmUCS2toUTF8;
    return;
  }
  if (ccsid == TAV_CCSID_UCS2_BIG_ENDIAN) {
    algorithm = tavConvertByEndianSwap;
    return;
  }
  uint32_t lookedUp = (ccsid == 5488 || ccsid == TAV_CCSID_GB18030) ? 1392 : ccsid;
  _TavStError icuError;
  if (void* icu = tavGetICUConverter(lookedUp, icuError)) {
    algorithm = tavConvertByAlgorithmIcuFromUnicode;
    algorithmData = icu;
    return;
  }
  if (lookedUp != 0 && (lookedUp == static_cast<uint32_t>(TavClCCSID::getSystemCCSID()) ||
                        lookedUp == static_cast<uint32_t>(TavClCCSID::getConsoleCCSID()))) {
    algorithm = tavConvertByWindowsCallUCS2ToWinCP;
  }
}

void TavClConverterABase::initNewCodePage2Unicode(const TavClCCSID& source) {
  deinit();
  sourceCCSID = source;
  initCodePage2Unicode();
}

void TavClConverterABase::deinit() {
  if (isIcuRoutine(algorithm)) tavDeleteICUConverter(algorithmData);
  algorithmData = nullptr;
  algorithm = tavConvertError;
}

// Dropping the routine also releases its ICU converter, which nothing would close otherwise.
void TavClConverterABase::setConverterError() { deinit(); }

const char* TavClConverterABase::getUCS2BigEndianId() { return kBigEndianId; }
const char* TavClConverterABase::getUCS2LittleEndianId() { return kLittleEndianId; }
const char* TavClConverterABase::getUCS2HostEndianId() { return kLittleEndianId; }

bool TavClConverterABase::isUCS2BigEndianId(const char* bytes) {
  return startsWith(bytes, kBigEndianId);
}

bool TavClConverterABase::isUCS2LittleEndianId(const char* bytes) {
  return startsWith(bytes, kLittleEndianId);
}

uint32_t TavClConverterABase::convertUtf8CharToUtf32(const char* text) {
  if (text == nullptr || text[0] == '\0') return 0;
  // At most one character of four bytes; a NUL ends the text (and makes a cut start ill-formed).
  size_t length = 1;
  while (length < 4 && text[length] != '\0') ++length;
  char units[4];
  tav::codepage::TranscodeResult result = tav::codepage::utf8ToUcs2(text, length, units, 4);
  if (result.written < 2) return 0xFFFD;
  uint16_t first;
  std::memcpy(&first, units, 2);
  if (first >= 0xD800 && first <= 0xDBFF && result.written == 4) {
    uint16_t second;
    std::memcpy(&second, units + 2, 2);
    return 0x10000 + ((static_cast<uint32_t>(first) - 0xD800) << 10) + (second - 0xDC00);
  }
  return first;
}
