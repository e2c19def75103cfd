#include <gtest/gtest.h>

#include <string>

#include "oxa/service.h"

TEST(ServicePrint, EveryCatalogueMessagePrintsWithItsArguments) {
  testing::internal::CaptureStderr();
  EXPECT_GT(oxa_serv_print(1, 735, 2, "vdLn", int64_t{17}), 0);
  for (int32_t m = 736; m <= 741; ++m) EXPECT_GT(oxa_serv_print(1, m, 1, "vdLn"), 0) << m;
  for (int32_t m = 742; m <= 753; ++m) EXPECT_GT(oxa_serv_print(1, m, 2, int64_t{5}, 0.1), 0) << m;
  const std::string err = testing::internal::GetCapturedStderr();
  EXPECT_NE(err.find("vdLn"), std::string::npos);
  EXPECT_NE(err.find("17"), std::string::npos);
  EXPECT_NE(err.find("0.10000000000000001"), std::string::npos);  // round-trip digits
}

TEST(ServicePrint, RefusesUnknownMessagesChannelsAndArgumentCounts) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(oxa_serv_print(1, 734, 1, "x"), -1);
  EXPECT_EQ(oxa_serv_print(1, 754, 1, "x"), -1);
  EXPECT_EQ(oxa_serv_print(7, 737, 1, "x"), -1);
  EXPECT_EQ(oxa_serv_print(1, 737, 2, "x", 1), -1);
  EXPECT_EQ(oxa_serv_print(1, 742, 1, int64_t{1}), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ServiceExit, EndsTheProcessWithTheCode) {
  EXPECT_EXIT(oxa_serv_exit(3), testing::ExitedWithCode(3), "");
}
