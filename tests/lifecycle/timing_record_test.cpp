// The one record with a number in it, whatever the program and the counter do.

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

#include "lifecycle/arrangement.h"
#include "lifecycle/pretended_counter.h"
#include "lifecycle/transform_call.h"

namespace nerova_zel::test {
namespace {

/** A call that fails at once between two counts. */
Events records_between(Arrangement& arrangement, std::int64_t start, std::int64_t end) {
  const TransformCall call(nullptr);
  const PretendedCounter counter({start, end});
  EXPECT_EQ(call.run(arrangement.library()), 4);
  return arrangement.journal.take();
}

class TimingRecord : public testing::Test {
 protected:
  TimingRecord() {
    arrangement.logger.journals_times = true;
    arrangement.initialize();
  }

  /** Seconds and more than 24 bits of nanoseconds, after months of uptime. */
  void expect_exact() {
    constexpr std::int64_t uptime = 9000000000000000;
    EXPECT_EQ(records_between(arrangement, uptime, uptime + 3054457687),
              (Events{null_transformed,
                      "7|...\\polarization_processor\\nerova_zel_polarization_processor.cpp|190|"
                      "nv_polarization_processor_transform|transform takes 3054457.687000 microseconds."}));
  }

  Arrangement arrangement{{Companion::Logger}};
};

TEST_F(TimingRecord, IsComputedInDoublePrecision) {
  constexpr std::uint16_t single_precision = 0x007F;
  std::uint16_t before = 0;
  __asm__ volatile("fnstcw %0" : "=m"(before));
  __asm__ volatile("fldcw %0" : : "m"(single_precision));
  expect_exact();
  std::uint16_t after = 0;
  __asm__ volatile("fnstcw %0" : "=m"(after));
  __asm__ volatile("fldcw %0" : : "m"(before));
  EXPECT_EQ(after, single_precision);
}

TEST_F(TimingRecord, HasADecimalPointInEveryLocale) {
#if defined(_WIN32)
  ASSERT_NE(std::setlocale(LC_ALL, "German"), nullptr);
#else
  setenv("LOCPATH", NEROVA_LOCALES, 1);
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
#endif
  expect_exact();
  EXPECT_STREQ(std::localeconv()->decimal_point, ",");
#if !defined(_WIN32)
  const locale_t of_the_thread = duplocale(LC_GLOBAL_LOCALE);
  std::setlocale(LC_ALL, "C");
  uselocale(of_the_thread);
  expect_exact();
  EXPECT_EQ(uselocale(LC_GLOBAL_LOCALE), of_the_thread);
  freelocale(of_the_thread);
#endif
  std::setlocale(LC_ALL, "C");
}

TEST_F(TimingRecord, IsOfTheWholeFrame) {
  constexpr std::int32_t side = 600;
  TransformCall call(arrangement.make_processor());
  call.frame.assign(std::size_t{side} * side, 100);
  call.input = call.frame.data();
  call.width = call.height = side;
  std::vector<std::uint16_t> azimuth(call.frame.size());
  call.outputs = {};
  call.outputs[4] = azimuth.data();
  EXPECT_EQ(call.run(arrangement.library()), 0);
  const std::string record = arrangement.journal.take().at(0);
  // No processor computes a pixel in a hundredth of a nanosecond.
  EXPECT_GT(std::stod(record.substr(record.find("takes ") + 6)), side * side * 1e-5);
}

TEST_F(TimingRecord, IsLeftOutWithoutACounter) {
  const TransformCall call(nullptr);
  for (const std::vector<std::int64_t>& counts : {std::vector<std::int64_t>{}, std::vector<std::int64_t>{1}}) {
    const PretendedCounter counter(counts);
    EXPECT_EQ(call.run(arrangement.library()), 4);
    EXPECT_EQ(arrangement.journal.take(), Events{null_transformed});
  }
  // A start that cannot be read counts as 0.
  const Events records = records_between(arrangement, -1, 2000);
  EXPECT_NE(records.back().find("takes 2.000000 microseconds"), std::string::npos) << records.back();
}

}  // namespace
}  // namespace nerova_zel::test
