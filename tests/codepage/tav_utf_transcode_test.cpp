// UTF-8 to UCS-2 and back: the example tables, a plain reference on random text and random
// output sizes, resuming after a cut sequence, and ICU's own UTF-8 converter on the same text.
//
// Every call runs on an input block of exactly its size and an output followed by a guard
// region, so that a read past the input (under AddressSanitizer) or a write past the output
// fails the test.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "../../src/codepage/tav_utf_transcode.h"
#include "tav_codepage_test_support.h"
#include "tav_test_data.h"

#if TAV_TEST_HAVE_ICU
#include <unicode/ucnv.h>
#endif

namespace {

using tav::codepage::TranscodeResult;
using tav::codepage::TranscodeStatus;
using tav::test::parseHex;
using Transcoder = TranscodeResult (*)(const char*, size_t, char*, size_t);

constexpr size_t kGuardSize = 32;
constexpr char kGuardByte = '\xA5';

struct Outcome {
  std::string out;  // the bytes written
  size_t consumed;
  TranscodeStatus status;
  bool operator==(const Outcome& other) const {
    return out == other.out && consumed == other.consumed && status == other.status;
  }
};

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  for (unsigned char byte : outcome.out) stream << std::hex << int{byte} << ' ';
  return stream << std::dec << "consumed " << outcome.consumed << " status "
                << static_cast<int>(outcome.status);
}

Outcome run(Transcoder transcode, const std::string& input, size_t outSize) {
  std::vector<char> in(input.begin(), input.end());  // exactly the input, nothing behind it
  std::vector<char> out(outSize + kGuardSize, kGuardByte);
  const TranscodeResult result = transcode(in.data(), in.size(), out.data(), outSize);
  EXPECT_LE(result.written, outSize);
  EXPECT_LE(result.consumed, input.size());
  EXPECT_EQ(std::string(out.begin() + outSize, out.end()), std::string(kGuardSize, kGuardByte))
      << "a byte behind the output changed";
  return {std::string(out.data(), std::min(result.written, outSize)), result.consumed,
          result.status};
}

std::string unitsToBytes(const std::u16string& units) {
  std::string bytes(units.size() * 2, '\0');
  if (!units.empty()) std::memcpy(&bytes[0], units.data(), bytes.size());
  return bytes;
}

TEST(UtfTranscode, ConvertsTheExampleTables) {
  const struct {
    const char* file;
    Transcoder transcode;
  } tables[] = {{"codepage/utf8_to_ucs2.txt", tav::codepage::utf8ToUcs2},
                {"codepage/ucs2_to_utf8.txt", tav::codepage::ucs2ToUtf8}};
  for (const auto& table : tables) {
    for (const auto& row : tav::test::readDataTable(table.file, 5)) {
      SCOPED_TRACE(row.where);
      const std::string input = parseHex(row.str(0));
      const size_t outSize = row.str(1) == "-" ? 4 * input.size() + 8 : row.number(1);
      const auto status = row.str(4) == "ok"           ? TranscodeStatus::ok
                          : row.str(4) == "incomplete" ? TranscodeStatus::incomplete
                                                       : TranscodeStatus::tooBig;
      EXPECT_EQ(run(table.transcode, input, outSize),
                (Outcome{parseHex(row.str(2)), static_cast<size_t>(row.number(3)), status}));
    }
  }
}

// ---- The reference: one character at a time, from the definition of well-formed UTF-8 ----

// A conversion as steps, each the output of one character (or one substitute) and the input it
// took, then perhaps the report that the input ends early (a cut sequence or an odd size).
struct Step {
  std::string out;
  size_t in;
};
struct Steps {
  std::vector<Step> steps;
  bool incomplete = false;
};

// What a conversion into outSize bytes gives: the steps that fit; the first that does not stops.
Outcome expectedOutcome(const Steps& steps, size_t outSize) {
  Outcome outcome{"", 0, steps.incomplete ? TranscodeStatus::incomplete : TranscodeStatus::ok};
  for (const Step& step : steps.steps) {
    if (outcome.out.size() + step.out.size() > outSize) {
      outcome.status = TranscodeStatus::tooBig;
      break;
    }
    outcome.out += step.out;
    outcome.consumed += step.in;
  }
  return outcome;
}

// The UTF-8 form of a Unicode scalar value; empty for surrogates and values above U+10FFFF.
std::string encodeScalar(uint32_t value) {
  if ((value >= 0xD800 && value <= 0xDFFF) || value > 0x10FFFF) return {};
  if (value < 0x80) return std::string(1, static_cast<char>(value));
  const int trailing = value < 0x800 ? 1 : value < 0x10000 ? 2 : 3;
  std::string bytes(1, static_cast<char>((0xFF00 >> (trailing + 1)) | (value >> (6 * trailing))));
  for (int shift = 6 * (trailing - 1); shift >= 0; shift -= 6) {
    bytes += static_cast<char>(0x80 | ((value >> shift) & 0x3F));
  }
  return bytes;
}

std::u16string utf16(uint32_t value) {
  if (value < 0x10000) return std::u16string(1, static_cast<char16_t>(value));
  return {static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10)),
          static_cast<char16_t>(0xDC00 + ((value - 0x10000) & 0x3FF))};
}

// The length that the lead byte's high bits announce; 0 for continuation bytes and the old 5-
// and 6-byte forms.
size_t announcedLength(unsigned char lead) {
  return lead < 0x80   ? 1
         : lead < 0xC0 ? 0
         : lead < 0xE0 ? 2
         : lead < 0xF0 ? 3
         : lead < 0xF8 ? 4
                       : 0;
}

// The value bits of a lead byte and its continuation bytes, put together without any check.
uint32_t naiveValue(const std::string& bytes) {
  const auto lead = static_cast<unsigned char>(bytes[0]);
  uint32_t value = bytes.size() == 1 ? lead : lead & (0x7F >> bytes.size());
  for (size_t i = 1; i < bytes.size(); ++i) value = (value << 6) | (bytes[i] & 0x3F);
  return value;
}

// Whether bytes are the UTF-8 form of a scalar value: decoding them naively and encoding the
// value again must give the same bytes, which rules out overlong forms, surrogates, values above
// U+10FFFF and bad continuation bytes at once.
bool isWellFormed(const std::string& bytes) {
  return announcedLength(static_cast<unsigned char>(bytes[0])) == bytes.size() &&
         encodeScalar(naiveValue(bytes)) == bytes;
}

// Whether bytes start a well-formed sequence. UTF-8 keeps the order of code points, and the
// forbidden values lie in ranges aligned to what one continuation byte selects, so some
// completion is well-formed exactly when the smallest (80 80 ...) or the largest (BF BF ...) is.
bool startsWellFormed(const std::string& bytes) {
  const size_t length = announcedLength(static_cast<unsigned char>(bytes[0]));
  return length >= bytes.size() &&
         (isWellFormed(bytes + std::string(length - bytes.size(), '\x80')) ||
          isWellFormed(bytes + std::string(length - bytes.size(), '\xBF')));
}

Steps referenceUtf8ToUcs2(const std::string& input) {
  Steps steps;
  for (size_t at = 0; at < input.size();) {
    size_t subpart = 0;  // the longest start of a well-formed sequence here
    while (at + subpart < input.size() && startsWellFormed(input.substr(at, subpart + 1))) {
      ++subpart;
    }
    if (subpart > 0 && isWellFormed(input.substr(at, subpart))) {
      steps.steps.push_back({unitsToBytes(utf16(naiveValue(input.substr(at, subpart)))), subpart});
    } else if (subpart > 0 && at + subpart == input.size()) {
      steps.incomplete = true;
      break;
    } else {
      subpart = std::max<size_t>(subpart, 1);
      steps.steps.push_back({unitsToBytes(u"\xFFFD"), subpart});
    }
    at += subpart;
  }
  return steps;
}

Steps referenceUcs2ToUtf8(const std::u16string& units, bool oddSize) {
  Steps steps;
  steps.incomplete = oddSize;
  for (size_t at = 0; at < units.size(); ++at) {
    const char16_t unit = units[at];
    if (unit >= 0xD800 && unit <= 0xDBFF && at + 1 < units.size() && units[at + 1] >= 0xDC00 &&
        units[at + 1] <= 0xDFFF) {
      steps.steps.push_back(
          {encodeScalar(0x10000 + ((unit - 0xD800u) << 10) + (units[++at] - 0xDC00u)), 4});
    } else if ((unit >= 0xD800 && unit <= 0xDFFF) || (unit >= 0xFDD0 && unit <= 0xFDEF) ||
               unit >= 0xFFFE) {
      steps.steps.push_back({"\xEF\xBF\xBF", 2});
    } else {
      steps.steps.push_back({encodeScalar(unit), 2});
    }
  }
  return steps;
}

// Random text: runs of ASCII of random length, so that the other characters fall on every place
// of a vector block, between characters of every length and, if asked, ill-formed pieces.
class TextMaker {
 public:
  explicit TextMaker(uint32_t seed) : random_(seed) {}

  size_t below(size_t bound) {
    return std::uniform_int_distribution<size_t>(0, bound - 1)(random_);
  }

  uint32_t scalar() {
    static const uint32_t firsts[] = {0x80, 0x800, 0xE000, 0x10000};
    static const uint32_t counts[] = {0x780, 0xD000, 0x2000, 0x100000};
    const size_t range = below(4);
    return firsts[range] + static_cast<uint32_t>(below(counts[range]));
  }

  std::string utf8(bool illFormed) {
    std::string text;
    for (size_t pieces = below(12); pieces > 0; --pieces) {
      text.append(below(40), static_cast<char>(below(0x80)));
      const std::string character = encodeScalar(scalar());
      switch (illFormed ? below(5) : 0) {
        case 0: text += character; break;
        case 1: text += static_cast<char>(0x80 + below(0x80)); break;             // stray
        case 2: text += character.substr(0, 1 + below(character.size())); break;  // cut
        case 3: text += character[0] + std::string(1, static_cast<char>(below(0x100))); break;
        default: text += static_cast<char>(0xC0 + below(0x40)) + character.substr(1); break;
      }
    }
    return text;
  }

  std::u16string ucs2() {
    std::u16string units;
    for (size_t pieces = below(12); pieces > 0; --pieces) {
      units.append(below(40), static_cast<char16_t>(below(0x80)));
      const size_t kind = below(4);
      units += kind == 0   ? std::u16string(1, static_cast<char16_t>(0xD800 + below(0x800)))
               : kind == 1 ? std::u16string(1, static_cast<char16_t>(0xFDD0 + below(0x30)))
                           : utf16(scalar());
    }
    return units;
  }

 private:
  std::mt19937 random_;
};

void compareWithReference(Transcoder transcode, const std::string& input, const Steps& steps,
                          TextMaker& maker) {
  const size_t ample = 2 * input.size() + 2;
  for (size_t outSize : {ample, maker.below(ample), maker.below(ample)}) {
    SCOPED_TRACE(::testing::Message() << "output size " << outSize);
    ASSERT_EQ(run(transcode, input, outSize), expectedOutcome(steps, outSize));
  }
}

TEST(UtfTranscode, Utf8AgreesWithTheReferenceForRandomTextAndOutputSizes) {
  TextMaker maker(18);
  for (int round = 0; round < 3000; ++round) {
    SCOPED_TRACE(::testing::Message() << "round " << round);
    const std::string input = maker.utf8(round % 3 != 0);
    compareWithReference(tav::codepage::utf8ToUcs2, input, referenceUtf8ToUcs2(input), maker);
  }
}

TEST(UtfTranscode, Ucs2AgreesWithTheReferenceForRandomTextOddSizesAndOutputSizes) {
  TextMaker maker(1208);
  for (int round = 0; round < 3000; ++round) {
    SCOPED_TRACE(::testing::Message() << "round " << round);
    const std::u16string units = maker.ucs2();
    const bool odd = round % 4 == 0;
    compareWithReference(tav::codepage::ucs2ToUtf8, unitsToBytes(units) + (odd ? "x" : ""),
                         referenceUcs2ToUtf8(units, odd), maker);
  }
}

// A caller that hands in its text in pieces, each time with what the last call left over in
// front, gets what one call over the whole text gives: the cut rule loses and doubles nothing.
TEST(UtfTranscode, Utf8InPiecesGivesWhatTheWholeGives) {
  TextMaker maker(65500);
  for (int round = 0; round < 500; ++round) {
    SCOPED_TRACE(::testing::Message() << "round " << round);
    const std::string input = maker.utf8(true);
    const Outcome whole = run(tav::codepage::utf8ToUcs2, input, 2 * input.size());
    std::string pending, out;
    for (size_t at = 0, piece; at < input.size(); at += piece) {
      piece = 1 + maker.below(8);
      pending += input.substr(at, piece);
      const Outcome part = run(tav::codepage::utf8ToUcs2, pending, 2 * pending.size());
      ASSERT_NE(part.status, TranscodeStatus::tooBig);
      out += part.out;
      pending.erase(0, part.consumed);
    }
    EXPECT_EQ(out, whole.out);
    EXPECT_EQ(pending, input.substr(whole.consumed));
  }
}

#if TAV_TEST_HAVE_ICU

UConverter* icuUtf8() {
  static UConverter* const converter = [] {
    UErrorCode error = U_ZERO_ERROR;
    return ucnv_open("UTF-8", &error);
  }();
  return converter;
}

// ICU's default substitution writes U+FFFD for each maximal ill-formed subpart, and one for a
// sequence cut by the end of the input, where the library reports the cut instead.
TEST(UtfTranscode, Utf8DecodesAsIcuDoesIncludingItsSubstitutes) {
  TextMaker maker(37);
  for (int round = 0; round < 3000; ++round) {
    SCOPED_TRACE(::testing::Message() << "round " << round);
    const std::string input = maker.utf8(round % 2 == 0);
    std::u16string icu(input.size() + 1, u'\0');
    UErrorCode error = U_ZERO_ERROR;
    icu.resize(ucnv_toUChars(icuUtf8(), &icu[0], static_cast<int32_t>(icu.size()), input.data(),
                             static_cast<int32_t>(input.size()), &error));
    ASSERT_TRUE(U_SUCCESS(error)) << u_errorName(error);
    Outcome ours = run(tav::codepage::utf8ToUcs2, input, 2 * input.size());
    if (ours.status == TranscodeStatus::incomplete) ours.out += unitsToBytes(u"\xFFFD");
    ASSERT_EQ(ours.out, unitsToBytes(icu));
  }
}

// ICU refuses unpaired surrogates and passes the non-characters; given U+FFFF in place of each,
// as the library writes them, it must write the same bytes.
TEST(UtfTranscode, Ucs2EncodesAsIcuDoesOnceTheDeliberateSubstitutesAreInPlace) {
  TextMaker maker(819);
  for (int round = 0; round < 3000; ++round) {
    SCOPED_TRACE(::testing::Message() << "round " << round);
    const std::u16string units = maker.ucs2();
    std::u16string substituted;
    for (const Step& step : referenceUcs2ToUtf8(units, false).steps) {
      substituted +=
          step.out == "\xEF\xBF\xBF" ? u"\xFFFF" : units.substr(substituted.size(), step.in / 2);
    }
    std::string icu(3 * units.size() + 1, '\0');
    UErrorCode error = U_ZERO_ERROR;
    icu.resize(ucnv_fromUChars(icuUtf8(), &icu[0], static_cast<int32_t>(icu.size()),
                               substituted.data(), static_cast<int32_t>(substituted.size()),
                               &error));
    ASSERT_TRUE(U_SUCCESS(error)) << u_errorName(error);
    ASSERT_EQ(run(tav::codepage::ucs2ToUtf8, unitsToBytes(units), 4 * units.size()).out, icu);
  }
}

#else

TEST(UtfTranscode, Utf8DecodesAsIcuDoesIncludingItsSubstitutes) {
  GTEST_SKIP() << "ICU is not linked into this test program";
}

TEST(UtfTranscode, Ucs2EncodesAsIcuDoesOnceTheDeliberateSubstitutesAreInPlace) {
  GTEST_SKIP() << "ICU is not linked into this test program";
}

#endif

}  // namespace
