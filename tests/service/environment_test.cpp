#include <gtest/gtest.h>

#include <cstring>

#include "oxa/service.h"

// ctest sets OXA_TEST_VALUE=abcdefgh and OXA_TEST_EMPTY= for this program.

TEST(ServiceGetenv, CopiesWholeValue) {
  char buf[32];
  std::memset(buf, 'x', sizeof buf);
  EXPECT_EQ(oxa_serv_getenv("OXA_TEST_VALUE", buf, sizeof buf), 8);
  EXPECT_STREQ(buf, "abcdefgh");
}

TEST(ServiceGetenv, TruncatesWithinLengthAndTerminates) {
  for (int32_t length = 1; length <= 9; ++length) {
    char buf[12];
    std::memset(buf, 'x', sizeof buf);
    EXPECT_EQ(oxa_serv_getenv("OXA_TEST_VALUE", buf, length), 8);
    EXPECT_EQ(std::strlen(buf), static_cast<size_t>(length - 1));
    EXPECT_EQ(std::strncmp(buf, "abcdefgh", length - 1), 0);
    for (size_t i = length; i < sizeof buf; ++i) EXPECT_EQ(buf[i], 'x') << "wrote past length";
  }
}

TEST(ServiceGetenv, AbsentEmptyOrNoBuffer) {
  char buf[4] = {'x', 'x', 'x', 'x'};
  EXPECT_LT(oxa_serv_getenv("OXA_TEST_NO_SUCH_VARIABLE", buf, 4), 1);
  EXPECT_LT(oxa_serv_getenv(nullptr, buf, 4), 1);
  EXPECT_EQ(buf[0], 'x');  // absence writes nothing
  EXPECT_EQ(oxa_serv_getenv("OXA_TEST_VALUE", nullptr, 4), 8);
  EXPECT_EQ(oxa_serv_getenv("OXA_TEST_VALUE", buf, 0), 8);
  EXPECT_EQ(buf[0], 'x');
  EXPECT_LT(oxa_serv_getenv("OXA_TEST_EMPTY", buf, 4), 1);  // empty counts as absent
  EXPECT_EQ(buf[0], '\0');                                  // but its value is copied
}
