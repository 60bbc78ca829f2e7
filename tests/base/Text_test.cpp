#include "base/Text.h"

#include <gtest/gtest.h>

TEST(Text, NumbersAreReadFromTheFront)
{
    for (const auto& [text, value] : {std::pair("  12.5abc", 12.5), {"-3", -3}, {"+4", 4}, {"1e3", 1000}, {".5", 0.5},
             {"   ", 0}, {"-", 0}, {"+-3", 0}, {"--3", 0}, {"0x10", 0}, {"inf", 0}, {"1,5", 1}, {"\t7", 0}, {"1e", 1},
             {"5.", 5}, {"1e-999", 0}})
        EXPECT_EQ(Val(text), value) << text;
    EXPECT_GT(Val("1e999"), 1e300);
    EXPECT_LT(Val("-1e999"), -1e300);
    EXPECT_EQ(WholeNumber("2.5"), 2); // halves to even
    EXPECT_EQ(WholeNumber("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(WholeNumber("2147483648"), std::nullopt);
}
