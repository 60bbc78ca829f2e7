#pragma once

#include "real-server/InterNetNews.h"

#include <gtest/gtest.h>

// A test with a news server of its own. Passed over for a user who cannot have one.
class RealServerTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (const std::string obstacle = InterNetNews::Obstacle(); !obstacle.empty())
            GTEST_SKIP() << "The real news server is passed over: " << obstacle;
    }

    InterNetNews server;
};
