// UTF-8 to UCS-2 and back on random text: as ICU's own UTF-8 converter converts it, cut by its
// output size, and handed in pieces. The examples are rows of the conversion edge tables.
//
// Every call runs on an input block of exactly its size and an output followed by a guard
// region, so that a read past the input (under AddressSanitizer) or a write past the output
// fails the test.

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tav_codepage_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::convert;
using tav::test::Outcome;
using tav::test::ucs2;

// The UTF-8 form of a Unicode scalar value.
std::string encodeScalar(uint32_t value) {
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

  // Scalars, unpaired surrogates and the non-characters U+FDD0..U+FDEF.
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

#if TAV_TEST_HAVE_ICU
// What the library gives ICU to encode: U+FFFF in place of each unpaired surrogate and each
// non-character, as the library writes them; ICU refuses the one and passes the other.
std::u16string withDeliberateSubstitutes(const std::u16string& units) {
  std::u16string substituted;
  for (size_t at = 0; at < units.size(); ++at) {
    const char16_t unit = units[at];
    if (unit >= 0xD800 && unit <= 0xDBFF && at + 1 < units.size() && units[at + 1] >= 0xDC00 &&
        units[at + 1] <= 0xDFFF) {
      substituted += units.substr(at++, 2);
    } else {
      const bool lone = unit >= 0xD800 && unit <= 0xDFFF;
      substituted +=
          lone || (unit >= 0xFDD0 && unit <= 0xFDEF) || unit >= 0xFFFE ? u'\xFFFF' : unit;
    }
  }
  return substituted;
}
#endif

// Random text, well-formed or not: converted whole as ICU's own UTF-8 converter converts it
// (where ICU is linked); into random output sizes, which must stop as a full output does; and,
// for UTF-8, in pieces, each time with what the last call left unconsumed in front of the next
// piece, which must give what one call over the whole text gives.
TEST(UtfTranscode, RandomTextAsIcuConvertsItCutByItsOutputOrInPieces) {
#if TAV_TEST_HAVE_ICU
  const tav::test::IcuConverter icu = tav::test::openIcu(1208);
  ASSERT_NE(icu, nullptr);
#endif
  const TavClCodePage2UnicodeConverter fromUtf8(TAV_CCSID_UTF8);
  const TavClUnicode2CodePageConverter toUtf8(TAV_CCSID_UTF8);
  TextMaker maker(18);
  for (int round = 0; round < 4000; ++round) {
    SCOPED_TRACE(::testing::Message() << "round " << round);
    const std::string utf8 = maker.utf8(round % 3 != 0);
    const std::u16string units = maker.ucs2();
    const std::string unitBytes = ucs2(units) + (round % 4 == 0 ? "x" : "");
    Outcome fromWhole = convert(fromUtf8, utf8, 2 * utf8.size() + 2);
    const Outcome toWhole = convert(toUtf8, unitBytes, 2 * unitBytes.size() + 2);
    for (int cut = 0; cut < 2; ++cut) {
      tav::test::checkOutputCut(fromUtf8, utf8, fromWhole, maker.below(2 * utf8.size() + 2));
      tav::test::checkOutputCut(toUtf8, unitBytes, toWhole, maker.below(2 * unitBytes.size() + 2));
    }
    std::string pending, out;
    for (size_t at = 0, piece; at < utf8.size(); at += piece) {
      piece = 1 + maker.below(8);
      pending += utf8.substr(at, piece);
      const Outcome part = convert(fromUtf8, pending, 2 * pending.size());
      ASSERT_NE(part.error, static_cast<uint32_t>(CPCONVERTER_TOO_BIG));
      out += part.written;
      pending.erase(0, part.consumed);
    }
    ASSERT_EQ(out, fromWhole.written);
    ASSERT_EQ(pending, utf8.substr(fromWhole.consumed));
#if TAV_TEST_HAVE_ICU
    // ICU's default substitution writes U+FFFD for each maximal ill-formed subpart, and one for
    // a sequence cut by the end of the input, where the library reports the cut instead.
    if (fromWhole.error == CPCONVERTER_INCOMPLETE) {
      ASSERT_LT(utf8.size() - fromWhole.consumed, 4u);
      fromWhole.written += ucs2(u"\xFFFD");
    }
    ASSERT_EQ(fromWhole.written, ucs2(tav::test::icuToUnicode(icu.get(), utf8)));
    ASSERT_EQ(toWhole.written,
              tav::test::icuFromUnicode(icu.get(), withDeliberateSubstitutes(units)));
#endif
    if (HasFailure()) return;
  }
}

}  // namespace
