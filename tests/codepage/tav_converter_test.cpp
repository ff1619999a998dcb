// tav_converter_test.cpp - how converters choose their routine, what they answer about it, and
// their size estimates.

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "../../src/codepage/tav_icu_os.h"
#include "tav_codepage.h"
#include "tav_codepage_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::routineName;

TEST(ConverterSelection, RoutinePerCCSID) {
  for (const auto& row : tav::test::readDataTable("codepage/selection.txt", 6)) {
    SCOPED_TRACE(row.where);
    if (row.flag(5) && !tav::os::icuIsAvailable()) continue;
    const auto converter = tav::test::makeConverter(row.str(0), row.str(1));
    const std::string expected = row.str(2);
    EXPECT_EQ(routineName(converter->getAlgorithm()), expected);
    EXPECT_EQ(converter->isSupported(), row.flag(3));
    // What the library cannot convert itself would need a routine from outside.
    EXPECT_EQ(converter->requiresExternalICONVRoutine(), !row.flag(3));
    EXPECT_EQ(converter->requiresExternalICUData(), row.flag(4));
    // ICU routines hold their ICU converter, table routines their table.
    bool hasData =
        expected == "icu" || expected.find("bcs-") != std::string::npos || expected == "reverse";
    EXPECT_EQ(converter->getAlgorithmData() != nullptr, hasData);
  }
  EXPECT_TRUE(TavClCodePage2UTF8Converter(TAV_CCSID_UCS2_BIG_ENDIAN).isSupported());
}

// Exposes the protected re-selection of a converter.
class ReselectingConverter : public TavClCodePage2UnicodeConverter {
 public:
  using TavClCodePage2UnicodeConverter::TavClCodePage2UnicodeConverter;
  void selectFor(const TavClCCSID& source) { initNewCodePage2Unicode(source); }
  void disable() { setConverterError(); }
};

TEST(ConverterSelection, ChoosingAgainForANewSource) {
  ReselectingConverter converter(TAV_CCSID_UCS2_BIG_ENDIAN);
  EXPECT_EQ(routineName(converter.getAlgorithm()), "swap");
  // Leaving an ICU converter behind releases it (the leak checkers of the sanitizer build see
  // one that is not). 1112 has no built-in table.
  const std::pair<uint32_t, const char*> steps[] = {
      {1112, "icu"}, {1208, "utf8toucs2"}, {1112, "icu"}, {37, "sbcs-ebcdic"}, {1112, "icu"}};
  for (const auto& [source, routine] : steps) {
    SCOPED_TRACE(source);
    converter.selectFor(static_cast<TavEnCCSID>(source));
    EXPECT_EQ(converter.getSourceCCSID().getCCSID(), static_cast<TavEnCCSID>(source));
    if (source == 1112 && !tav::os::icuIsAvailable()) continue;
    EXPECT_EQ(routineName(converter.getAlgorithm()), routine);
  }
  converter.disable();  // releases the ICU converter of the last step
  EXPECT_EQ(routineName(converter.getAlgorithm()), "unsupported");
}

TEST(ConverterSizes, EstimatesPerConverterAndSaturation) {
  for (const auto& row : tav::test::readDataTable("codepage/size_estimates.txt", 5)) {
    SCOPED_TRACE(row.where);
    auto converter = tav::test::makeConverter(row.str(0), row.str(1));
    auto n = static_cast<size_t>(row.number(2));
    EXPECT_EQ(converter->getMaximumSizeForLength(n), static_cast<size_t>(row.number(3)));
    EXPECT_EQ(converter->getMaximumSizeForSize(n), static_cast<size_t>(row.number(4)));
  }
  constexpr size_t kHuge = std::numeric_limits<size_t>::max() / 2 + 1;
  constexpr size_t kMax = std::numeric_limits<size_t>::max();
  EXPECT_EQ(TavClCodePage2UnicodeConverter(TAV_CCSID_EBCDIC_37).getMaximumSizeForSize(kHuge), kMax);
  TavClUnicode2CodePageConverter toUtf8(TAV_CCSID_UTF8);
  EXPECT_EQ(toUtf8.getMaximumSizeForLength(kHuge), kMax);
  EXPECT_EQ(toUtf8.getMaximumSizeForSize(kMax), kMax);
}

}  // namespace
