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
#include <sstream>
#include <string>
#include <vector>

#include "../../src/codepage/tav_utf_transcode.h"
#include "tav_test_data.h"

#if TAV_TEST_HAVE_ICU
#include <unicode/ucnv.h>
#endif

namespace {

using tav::codepage::TranscodeResult;
using tav::codepage::TranscodeStatus;
using Transcoder = TranscodeResult (*)(const char*, size_t, char*, size_t);

constexpr size_t kGuardSize = 32;
constexpr unsigned char kGuardByte = 0xA5;

struct Outcome {
  std::string out;  // the bytes written
  size_t consumed;
  TranscodeStatus status;
  bool operator==(const Outcome& other) const {
    return out == other.out && consumed == other.consumed && status == other.status;
  }
};

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  static const char* const names[] = {"ok", "incomplete", "tooBig"};
  stream << '{';
  for (unsigned char byte : outcome.out) stream << std::hex << int{byte} << ' ';
  return stream << std::dec << "consumed " << outcome.consumed << ' '
                << names[static_cast<int>(outcome.status)] << '}';
}

Outcome run(Transcoder transcode, const std::string& input, size_t outSize) {
  std::vector<char> in(input.begin(), input.end());  // exactly the input, nothing behind it
  std::vector<char> out(outSize + kGuardSize, static_cast<char>(kGuardByte));
  const TranscodeResult result = transcode(in.data(), in.size(), out.data(), outSize);
  EXPECT_LE(result.written, outSize);
  EXPECT_LE(result.consumed, input.size());
  for (size_t i = outSize; i < out.size(); ++i) {
    if (static_cast<unsigned char>(out[i]) != kGuardByte) {
      ADD_FAILURE() << "byte " << i - outSize << " behind an output of " << outSize << " changed";
      break;
    }
  }
  return {std::string(out.data(), std::min(result.written, outSize)), result.consumed,
          result.status};
}

std::string unitsToBytes(const std::u16string& units) {
  std::string bytes(units.size() * 2, '\0');
  if (!units.empty()) std::memcpy(&bytes[0], units.data(), bytes.size());
  return bytes;
}

// "C3 A9" as bytes; with unitTokens, "D83D DE00" as units in host order (and "43" as a byte).
std::string parseHex(const std::string& text, bool unitTokens = false) {
  std::istringstream tokens(text);
  std::string bytes;
  for (std::string token; tokens >> token;) {
    const auto value = static_cast<char16_t>(std::stoul(token, nullptr, 16));
    if (unitTokens && token.size() == 4) {
      bytes += unitsToBytes(std::u16string(1, value));
    } else {
      bytes += static_cast<char>(value);
    }
  }
  return bytes;
}

TranscodeStatus parseStatus(const std::string& name) {
  if (name == "incomplete") return TranscodeStatus::incomplete;
  if (name == "tooBig") return TranscodeStatus::tooBig;
  EXPECT_EQ(name, "ok");
  return TranscodeStatus::ok;
}

void checkExampleTable(const char* file, Transcoder transcode, bool unitInput) {
  for (const auto& row : tav::test::readDataTable(file, 5)) {
    SCOPED_TRACE(row.where);
    const std::string input = parseHex(row.str(0), unitInput);
    const size_t outSize = row.str(1) == "-" ? 4 * input.size() + 8 : row.number(1);
    const Outcome expected{parseHex(row.str(2), !unitInput), static_cast<size_t>(row.number(3)),
                           parseStatus(row.str(4))};
    EXPECT_EQ(run(transcode, input, outSize), expected);
  }
}

TEST(UtfTranscode, ConvertsTheExampleTables) {
  checkExampleTable("codepage/utf8_to_ucs2.txt", tav::codepage::utf8ToUcs2, false);
  checkExampleTable("codepage/ucs2_to_utf8.txt", tav::codepage::ucs2ToUtf8, true);
}

// ---- The reference: one character at a time, from the definition of well-formed UTF-8 ----

// One step of a conversion: the output of one character (or one substitute) and the input it
// took. A conversion is a list of steps, possibly followed by an input left over at the end.
struct Step {
  std::string out;
  size_t in;
};
struct Steps {
  std::vector<Step> steps;
  bool cut = false;  // the input ends in a sequence that waits for more bytes
};

// What a conversion with that output size gives: the steps that fit, then the first that does
// not stops it.
Outcome expectedOutcome(const Steps& steps, size_t outSize, bool oddInput = false) {
  Outcome outcome{"", 0, TranscodeStatus::ok};
  for (const Step& step : steps.steps) {
    if (outcome.out.size() + step.out.size() > outSize) {
      outcome.status = TranscodeStatus::tooBig;
      return outcome;
    }
    outcome.out += step.out;
    outcome.consumed += step.in;
  }
  if (steps.cut || oddInput) outcome.status = TranscodeStatus::incomplete;
  return outcome;
}

// The UTF-8 form of a Unicode scalar value; empty for surrogates and values above U+10FFFF.
std::string encodeScalar(uint32_t value) {
  if ((value >= 0xD800 && value <= 0xDFFF) || value > 0x10FFFF) return {};
  if (value < 0x80) return std::string(1, static_cast<char>(value));
  std::string bytes;
  const int trailing = value < 0x800 ? 1 : value < 0x10000 ? 2 : 3;
  const uint32_t leadMarks[] = {0, 0xC0, 0xE0, 0xF0};
  bytes += static_cast<char>(leadMarks[trailing] | (value >> (6 * trailing)));
  for (int shift = 6 * (trailing - 1); shift >= 0; shift -= 6) {
    bytes += static_cast<char>(0x80 | ((value >> shift) & 0x3F));
  }
  return bytes;
}

// The length that the lead byte's high bits announce (5- and 6-byte forms and continuation
// bytes announce nothing usable: 0).
size_t announcedLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC0 && lead < 0xE0) return 2;
  if (lead >= 0xE0 && lead < 0xF0) return 3;
  if (lead >= 0xF0 && lead < 0xF8) return 4;
  return 0;
}

// The value bits of a lead byte and its continuation bytes, put together without any check.
uint32_t naiveValue(const std::string& bytes) {
  const unsigned char lead = static_cast<unsigned char>(bytes[0]);
  uint32_t value = bytes.size() == 1 ? lead : lead & (0x7F >> bytes.size());
  for (size_t i = 1; i < bytes.size(); ++i) value = (value << 6) | (bytes[i] & 0x3F);
  return value;
}

// Whether bytes of the announced length are the UTF-8 form of a scalar value: decode them
// naively and demand that encoding the value again gives the same bytes. That one comparison
// rules out overlong forms, surrogates, values above U+10FFFF and bad continuation bytes.
bool isWellFormed(const std::string& bytes) {
  const size_t length = announcedLength(static_cast<unsigned char>(bytes[0]));
  return length != 0 && length == bytes.size() && encodeScalar(naiveValue(bytes)) == bytes;
}

// Whether bytes start a well-formed sequence. UTF-8 keeps the order of code points, and the
// forbidden values (overlong, surrogates, above U+10FFFF) lie in ranges aligned to what one
// continuation byte selects, so some completion is well-formed exactly when the smallest
// (80 80 ...) or the largest (BF BF ...) one is.
bool startsWellFormed(const std::string& bytes) {
  const size_t length = announcedLength(static_cast<unsigned char>(bytes[0]));
  if (length < bytes.size()) return false;
  return isWellFormed(bytes + std::string(length - bytes.size(), '\x80')) ||
         isWellFormed(bytes + std::string(length - bytes.size(), '\xBF'));
}

Steps referenceUtf8ToUcs2(const std::string& input) {
  Steps steps;
  for (size_t at = 0; at < input.size();) {
    size_t subpart = 0;  // the longest start of a well-formed sequence here
    while (at + subpart < input.size() && startsWellFormed(input.substr(at, subpart + 1))) {
      ++subpart;
    }
    const std::string sequence = input.substr(at, subpart);
    if (subpart > 0 && isWellFormed(sequence)) {
      const uint32_t value = naiveValue(sequence);
      std::u16string units;
      if (value < 0x10000) {
        units += static_cast<char16_t>(value);
      } else {
        units += static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10));
        units += static_cast<char16_t>(0xDC00 + ((value - 0x10000) & 0x3FF));
      }
      steps.steps.push_back({unitsToBytes(units), subpart});
      at += subpart;
    } else if (subpart > 0 && at + subpart == input.size()) {
      steps.cut = true;
      break;
    } else {
      steps.steps.push_back({unitsToBytes(u"\xFFFD"), std::max<size_t>(subpart, 1)});
      at += std::max<size_t>(subpart, 1);
    }
  }
  return steps;
}

bool isSubstitutedUnit(char16_t unit) {
  return (unit >= 0xD800 && unit <= 0xDFFF) || (unit >= 0xFDD0 && unit <= 0xFDEF) || unit >= 0xFFFE;
}

Steps referenceUcs2ToUtf8(const std::u16string& units) {
  Steps steps;
  for (size_t at = 0; at < units.size();) {
    const char16_t unit = units[at];
    const bool pair = unit >= 0xD800 && unit <= 0xDBFF && at + 1 < units.size() &&
                      units[at + 1] >= 0xDC00 && units[at + 1] <= 0xDFFF;
    if (pair) {
      const uint32_t value = 0x10000 + ((unit - 0xD800u) << 10) + (units[at + 1] - 0xDC00u);
      steps.steps.push_back({encodeScalar(value), 4});
    } else {
      steps.steps.push_back({isSubstitutedUnit(unit) ? "\xEF\xBF\xBF" : encodeScalar(unit), 2});
    }
    at += pair ? 2 : 1;
  }
  return steps;
}

// ---- Random text, with runs of ASCII of every length between the other characters ----

class TextMaker {
 public:
  explicit TextMaker(uint32_t seed) : random_(seed) {}

  size_t below(size_t bound) {
    return std::uniform_int_distribution<size_t>(0, bound - 1)(random_);
  }

  std::string asciiRun() {
    std::string run(below(40), 'a');
    for (char& c : run) c = static_cast<char>(below(0x80));
    return run;
  }

  uint32_t scalar() {
    static const uint32_t limits[][2] = {
        {0x80, 0x7FF}, {0x800, 0xD7FF}, {0xE000, 0xFFFF}, {0x10000, 0x10FFFF}};
    const auto& range = limits[below(4)];
    return range[0] + static_cast<uint32_t>(below(range[1] - range[0] + 1));
  }

  // Valid UTF-8 only, or valid and ill-formed pieces mixed.
  std::string utf8(bool illFormed) {
    std::string text;
    for (size_t pieces = below(12); pieces > 0; --pieces) {
      text += asciiRun();
      const std::string character = encodeScalar(scalar());
      switch (illFormed ? below(5) : 0) {
        case 0: text += character; break;
        case 1: text += static_cast<char>(0x80 + below(0x80)); break;
        case 2: text += character.substr(0, 1 + below(character.size())); break;
        case 3: text += character.substr(0, 1) + static_cast<char>(below(0x100)); break;
        default: text += static_cast<char>(0xC0 + below(0x40)) + character.substr(1); break;
      }
    }
    return text;
  }

  std::u16string ucs2() {
    std::u16string units;
    for (size_t pieces = below(12); pieces > 0; --pieces) {
      for (char c : asciiRun()) units += static_cast<char16_t>(c);
      switch (below(4)) {
        case 0: units += static_cast<char16_t>(0x80 + below(0xFF80)); break;
        case 1: units += static_cast<char16_t>(0xD800 + below(0x800)); break;
        case 2: units += static_cast<char16_t>(0xFDD0 + below(0x30)); break;
        default:
          units += static_cast<char16_t>(0xD800 + below(0x400));
          units += static_cast<char16_t>(0xDC00 + below(0x400));
          break;
      }
    }
    return units;
  }

 private:
  std::mt19937 random_;
};

TEST(UtfTranscode, Utf8AgreesWithTheReferenceForRandomTextAndOutputSizes) {
  TextMaker maker(18);
  for (int round = 0; round < 3000; ++round) {
    const std::string input = maker.utf8(round % 3 != 0);
    const Steps steps = referenceUtf8ToUcs2(input);
    const size_t fullSize = 2 * input.size() + 2;
    for (size_t outSize : {fullSize, maker.below(fullSize), maker.below(fullSize)}) {
      SCOPED_TRACE(::testing::Message() << "round " << round << ", output size " << outSize);
      ASSERT_EQ(run(tav::codepage::utf8ToUcs2, input, outSize), expectedOutcome(steps, outSize));
    }
  }
}

TEST(UtfTranscode, Ucs2AgreesWithTheReferenceForRandomTextOddSizesAndOutputSizes) {
  TextMaker maker(1208);
  for (int round = 0; round < 3000; ++round) {
    const std::u16string units = maker.ucs2();
    const bool odd = round % 4 == 0;
    const std::string input = unitsToBytes(units) + (odd ? "x" : "");
    const Steps steps = referenceUcs2ToUtf8(units);
    const size_t fullSize = 2 * input.size() + 2;
    for (size_t outSize : {fullSize, maker.below(fullSize), maker.below(fullSize)}) {
      SCOPED_TRACE(::testing::Message() << "round " << round << ", output size " << outSize);
      ASSERT_EQ(run(tav::codepage::ucs2ToUtf8, input, outSize),
                expectedOutcome(steps, outSize, odd));
    }
  }
}

// Every input size and every output size around a text that holds each kind of character.
TEST(UtfTranscode, EveryInputAndOutputSizeOfAMixedText) {
  const std::string utf8 = "ab\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xED\xA0\x80z\xF4\x8F\xBF";
  const std::u16string ucs2 = u"a\u00E9\u20AC\U0001F600\xD800z\xFFFF\xDC00";
  const std::string ucs2Bytes = unitsToBytes(ucs2);
  for (size_t inSize = 0; inSize <= utf8.size(); ++inSize) {
    const std::string input = utf8.substr(0, inSize);
    for (size_t outSize = 0; outSize <= 2 * inSize + 2; ++outSize) {
      SCOPED_TRACE(::testing::Message() << "UTF-8 " << inSize << " into " << outSize);
      ASSERT_EQ(run(tav::codepage::utf8ToUcs2, input, outSize),
                expectedOutcome(referenceUtf8ToUcs2(input), outSize));
    }
  }
  for (size_t inSize = 0; inSize <= ucs2Bytes.size(); ++inSize) {
    const std::string input = ucs2Bytes.substr(0, inSize);
    for (size_t outSize = 0; outSize <= 2 * inSize + 2; ++outSize) {
      SCOPED_TRACE(::testing::Message() << "UCS-2 " << inSize << " into " << outSize);
      ASSERT_EQ(run(tav::codepage::ucs2ToUtf8, input, outSize),
                expectedOutcome(referenceUcs2ToUtf8(ucs2.substr(0, inSize / 2)), outSize,
                                inSize % 2 != 0));
    }
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
    std::string pending;
    std::string out;
    for (size_t at = 0; at < input.size();) {
      const size_t piece = 1 + maker.below(8);
      pending += input.substr(at, piece);
      at += piece;
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

std::u16string bytesToUnits(const std::string& bytes) {
  std::u16string units(bytes.size() / 2, u'\0');
  if (!units.empty()) std::memcpy(&units[0], bytes.data(), units.size() * 2);
  return units;
}

class IcuUtf8 {
 public:
  IcuUtf8() {
    UErrorCode error = U_ZERO_ERROR;
    converter_ = ucnv_open("UTF-8", &error);
    EXPECT_TRUE(U_SUCCESS(error)) << u_errorName(error);
  }
  ~IcuUtf8() { ucnv_close(converter_); }

  // ICU's default substitution writes U+FFFD for ill-formed input, and one U+FFFD for a
  // sequence that the end of the input cuts.
  std::u16string toUnicode(const std::string& input) {
    std::u16string out(input.size() + 1, u'\0');
    UErrorCode error = U_ZERO_ERROR;
    const int32_t length = ucnv_toUChars(converter_, &out[0], static_cast<int32_t>(out.size()),
                                         input.data(), static_cast<int32_t>(input.size()), &error);
    EXPECT_TRUE(U_SUCCESS(error)) << u_errorName(error);
    out.resize(static_cast<size_t>(length));
    return out;
  }

  std::string fromUnicode(const std::u16string& input) {
    std::string out(3 * input.size() + 1, '\0');
    UErrorCode error = U_ZERO_ERROR;
    const int32_t length =
        ucnv_fromUChars(converter_, &out[0], static_cast<int32_t>(out.size()), input.data(),
                        static_cast<int32_t>(input.size()), &error);
    EXPECT_TRUE(U_SUCCESS(error)) << u_errorName(error);
    out.resize(static_cast<size_t>(length));
    return out;
  }

 private:
  UConverter* converter_ = nullptr;
};

TEST(UtfTranscode, Utf8DecodesAsIcuDoesIncludingItsSubstitutes) {
  IcuUtf8 icu;
  TextMaker maker(37);
  for (int round = 0; round < 3000; ++round) {
    const std::string input = maker.utf8(round % 2 == 0);
    SCOPED_TRACE(::testing::Message() << "round " << round);
    const Outcome ours = run(tav::codepage::utf8ToUcs2, input, 2 * input.size());
    std::u16string units = bytesToUnits(ours.out);
    if (ours.status == TranscodeStatus::incomplete) units += u'\xFFFD';
    ASSERT_EQ(units, icu.toUnicode(input));
  }
}

TEST(UtfTranscode, Ucs2EncodesAsIcuDoesOnceTheDeliberateSubstitutesAreInPlace) {
  IcuUtf8 icu;
  TextMaker maker(819);
  for (int round = 0; round < 3000; ++round) {
    const std::u16string units = maker.ucs2();
    SCOPED_TRACE(::testing::Message() << "round " << round);
    // ICU refuses unpaired surrogates and passes the non-characters; give it U+FFFF for each.
    std::u16string substituted;
    for (const Step& step : referenceUcs2ToUtf8(units).steps) {
      const size_t at = substituted.size();
      substituted += step.out == "\xEF\xBF\xBF" ? u"\xFFFF" : units.substr(at, step.in / 2);
    }
    ASSERT_EQ(run(tav::codepage::ucs2ToUtf8, unitsToBytes(units), 4 * units.size()).out,
              icu.fromUnicode(substituted));
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
