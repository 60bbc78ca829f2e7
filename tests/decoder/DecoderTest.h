#pragma once

#include "decoder/AttachmentDecoder.h"
#include "demo/support/TemporaryFolder.h"
#include "tests/support/RandomBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>
#include <string_view>
#include <vector>

// A destination directory in which bodies are decoded as the scan does it.
class DecoderTest : public testing::Test {
protected:
    static constexpr const char* bodyName = "article7.uue";

    int Decode(std::string_view body)
    {
        // A new file each time: to truncate one has the disk wait for its old content.
        std::remove(folder.File(bodyName).c_str());
        EXPECT_TRUE(MakeFile(folder.File(bodyName), body));
        decoder.SetDecodeFilename(folder.File(bodyName));
        EXPECT_EQ(ContentOf(folder.File(bodyName)), body) << "the body was changed";
        EXPECT_EQ(decoder.ImageFilename(), decoder.StoredNames().empty() ? "" : decoder.StoredNames().front());
        EXPECT_EQ(decoder.StoredNames().size(), static_cast<std::size_t>(std::max(decoder.DecodeStatus(), 0)));
        return decoder.DecodeStatus();
    }

    // What lies in the directory besides the body and the parts that wait, hidden files too.
    std::vector<std::string> Files() const
    {
        std::vector<std::string> files = FilesBelow(folder.Path());
        std::erase_if(
            files, [](const std::string& name) { return name == bodyName || name.starts_with(".tamarack-parts/"); });
        return files;
    }

    std::string Content(const std::string& name) const { return ContentOf(folder.File(name)); }

    // The content of a file, which goes.
    std::string Taken(const std::string& name) const
    {
        std::string content = Content(name);
        std::remove(folder.File(name).c_str());
        return content;
    }

    TemporaryFolder folder;
    AttachmentDecoder decoder;
};
