#pragma once

#include "tests/real-server/InterNetNews.h"

#include <gtest/gtest.h>

// A fixture with a news server of its own. Its tests are passed over for a user who cannot have one.
template <class Fixture> class WithRealServer : public Fixture {
protected:
    void SetUp() override
    {
        if (const std::string obstacle = InterNetNews::Obstacle(); !obstacle.empty())
            GTEST_SKIP() << "The real news server is passed over: " << obstacle;
    }

    InterNetNews server;
};

using RealServerTest = WithRealServer<testing::Test>;
