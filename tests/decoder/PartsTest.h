#pragma once

#include "tests/decoder/DecoderTest.h"

// Attachments that come in parts.
class PartsTest : public DecoderTest {
protected:
    static std::vector<std::string> Spread(std::string_view attachment, std::size_t count,
        const std::string& name = "a.bin", const YencDialect& dialect = {.total = 1})
    {
        std::vector<std::string> bodies = YencodeParts(attachment, name, count, dialect);
        std::transform(bodies.begin(), bodies.end(), bodies.begin(), DotStuff);
        return bodies;
    }

    static std::string With(std::string text, std::string_view old, std::string_view now)
    {
        const std::size_t at = text.find(old);
        EXPECT_NE(at, std::string::npos) << old;
        return text.replace(at, old.size(), now);
    }

    // The eight digits behind a key.
    static std::string Sum(const std::string& body, std::string_view key)
    {
        return body.substr(body.find(key) + key.size(), 8);
    }

    static std::string Without(const std::string& body, const std::string& key)
    {
        return With(body, key + Sum(body, key), "");
    }

    void Restart() { decoder = AttachmentDecoder(); }

    WaitingSets Waiting() { return decoder.Waiting(folder.Path()); }

    // They are kept, and make nothing whole.
    void Await(const std::vector<std::string>& bodies)
    {
        for (const std::string& body : bodies)
            EXPECT_EQ(Decode(body), -1);
    }

    // The only file is this attachment. It goes.
    void ExpectWhole(const std::string& posted)
    {
        EXPECT_EQ(decoder.ImageFilename(), "a.bin");
        EXPECT_TRUE(Taken("a.bin") == posted);
        EXPECT_TRUE(Files().empty());
    }

    const std::string parts = folder.File(".tamarack-parts");
    const std::string bytes = RandomBytes(10'007);
    const std::string others = RandomBytes(10'007, 2);
};
