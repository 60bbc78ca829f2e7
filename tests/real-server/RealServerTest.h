#pragma once

#include "demo/support/InterNetNews.h"
#include "tests/shell/ProgramTest.h"

// The whole program beside a real news server. Its tests are passed over for a user who cannot have one.
class RealServerTest : public ProgramTest {
protected:
    void SetUp() override
    {
        if (const std::string obstacle = InterNetNews::Obstacle(); !obstacle.empty())
            GTEST_SKIP() << "The real news server is passed over: " << obstacle;
    }

    void Post(const std::string& group, const std::string& subject, const std::string& body)
    {
        const std::string status = server.Post(group, subject, body);
        ASSERT_TRUE(status.starts_with("240")) << status;
    }

    InterNetNews server;
};
