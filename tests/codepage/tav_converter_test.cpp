// tav_converter_test.cpp - how converters choose their routine, what they answer about it, and
// their size estimates.

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "../../src/codepage/tav_icu_os.h"
#include "tav_codepage.h"
#include "tav_codepage_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::makeConverter;
using tav::test::routineName;

TEST(ConverterSelection, RoutinePerCCSID) {
  for (const auto& row : tav::test::readDataTable("codepage/selection.txt", 4)) {
    SCOPED_TRACE(row.where);
    if (row.flag(3) && !tav::os::icuIsAvailable()) continue;
    auto converter = makeConverter(row.str(0), row.str(1));
    const std::string expected = row.str(2);
    EXPECT_EQ(routineName(converter->getAlgorithm()), expected);
    EXPECT_EQ(converter->isSupported(), expected != "unsupported");
    EXPECT_EQ(converter->requiresExternalICUData(), expected == "icu");
    // ICU routines hold their ICU converter, table routines their table.
    bool hasData =
        expected == "icu" || expected.find("bcs-") != std::string::npos || expected == "reverse";
    EXPECT_EQ(converter->getAlgorithmData() != nullptr, hasData);
  }
}

TEST(ConverterSelection, UnsupportedReportsOnUse) {
  TavClUnicode2CodePageConverter converter(TavClCCSID(static_cast<TavEnCCSID>(12345)));
  ASSERT_FALSE(converter.isSupported());
  char out[8] = {};
  const std::string in = tav::test::ucs2({'A'});
  const char* cursor = in.data();
  EXPECT_EQ(converter.convertBytes(out, sizeof out, &cursor, in.size()), 0u);
  EXPECT_EQ(converter.getError().id, static_cast<uint32_t>(CPCONVERTER_UNSUPPORTED));
  EXPECT_EQ(cursor, in.data());
}

TEST(ConverterSelection, ChainCombinesItsStages) {
  struct Case {
    uint32_t source, target;
    bool supported, external;
  };
  const Case cases[] = {{1208, 13488, true, false},
                        {12345, 1208, false, true},
                        {1208, 12345, false, true},
                        {65500, 819, true, false}};
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.source) + ">" + std::to_string(c.target));
    TavClCodePage2CodePageConverter chain(TavClCCSID(static_cast<TavEnCCSID>(c.source)),
                                          TavClCCSID(static_cast<TavEnCCSID>(c.target)));
    EXPECT_EQ(chain.isSupported(), c.supported);
    EXPECT_EQ(chain.requiresExternalICONVRoutine(), c.external);
    EXPECT_EQ(chain.getSecondStage().getTargetCCSID().getCCSID(),
              static_cast<TavEnCCSID>(c.target));
  }
  EXPECT_TRUE(TavClCodePage2UTF8Converter(TAV_CCSID_UCS2_BIG_ENDIAN).isSupported());
}

TEST(ConverterSelection, IcuStagesNeedIcuData) {
  if (!tav::os::icuIsAvailable()) GTEST_SKIP() << "ICU is not present";
  // 1112 has no built-in table; 37 has one only into UCS-2.
  const TavClCCSID icuOnly(static_cast<TavEnCCSID>(1112));
  EXPECT_TRUE(TavClCodePage2CodePageConverter(icuOnly, TAV_CCSID_UTF8).requiresExternalICUData());
  EXPECT_TRUE(TavClCodePage2CodePageConverter(TAV_CCSID_UTF8, TAV_CCSID_EBCDIC_37)
                  .requiresExternalICUData());
  EXPECT_FALSE(TavClCodePage2CodePageConverter(TAV_CCSID_EBCDIC_37, TAV_CCSID_PC_850)
                   .requiresExternalICUData());
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
  // one that is not).
  const TavEnCCSID icuOnly = static_cast<TavEnCCSID>(1112);
  struct Step {
    TavEnCCSID source;
    const char* routine;
  };
  const Step steps[] = {{icuOnly, "icu"},
                        {TAV_CCSID_UTF8, "utf8toucs2"},
                        {icuOnly, "icu"},
                        {TAV_CCSID_EBCDIC_37, "sbcs-ebcdic"},
                        {icuOnly, "icu"}};
  for (const Step& step : steps) {
    SCOPED_TRACE(step.source);
    converter.selectFor(step.source);
    EXPECT_EQ(converter.getSourceCCSID().getCCSID(), step.source);
    if (step.source == icuOnly && !tav::os::icuIsAvailable()) continue;
    EXPECT_EQ(routineName(converter.getAlgorithm()), step.routine);
  }
  converter.disable();
  EXPECT_FALSE(converter.isSupported());
  char out[4];
  EXPECT_EQ(converter.convertBytes(out, sizeof out, "ab", 2), 0u);
  EXPECT_EQ(converter.getError().id, static_cast<uint32_t>(CPCONVERTER_UNSUPPORTED));
}

TEST(ConverterSizes, EstimatesPerConverter) {
  for (const auto& row : tav::test::readDataTable("codepage/size_estimates.txt", 5)) {
    SCOPED_TRACE(row.where);
    auto converter = makeConverter(row.str(0), row.str(1));
    auto n = static_cast<size_t>(row.number(2));
    EXPECT_EQ(converter->getMaximumSizeForLength(n), static_cast<size_t>(row.number(3)));
    EXPECT_EQ(converter->getMaximumSizeForSize(n), static_cast<size_t>(row.number(4)));
  }
}

TEST(ConverterSizes, HugeInputsSaturate) {
  constexpr size_t kHuge = std::numeric_limits<size_t>::max() / 2 + 1;
  constexpr size_t kMax = std::numeric_limits<size_t>::max();
  TavClCodePage2UnicodeConverter toUnicode(TAV_CCSID_EBCDIC_37);
  EXPECT_EQ(toUnicode.getMaximumSizeForSize(kHuge), kMax);
  TavClUnicode2CodePageConverter toUtf8(TAV_CCSID_UTF8);
  EXPECT_EQ(toUtf8.getMaximumSizeForLength(kHuge), kMax);
  EXPECT_EQ(toUtf8.getMaximumSizeForSize(kMax), kMax);
}

}  // namespace
