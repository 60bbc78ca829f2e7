#pragma once

#include "decoder/AttachmentDecoder.h"
#include "demo/sample/Encoders.h"
#include "demo/support/TemporaryFolder.h"
#include "tests/support/RandomBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <vector>

namespace fs = std::filesystem;

// A destination directory in which bodies are decoded as the scan does it.
class DecoderTest : public testing::Test {
protected:
    // With a limit of the system's (setrlimit(2)) meanwhile: a short file for a full disk, or few open files.
    int Decode(std::string_view body, __rlimit_resource resource = RLIMIT_FSIZE, rlim_t limit = RLIM_INFINITY)
    {
        // A new file each time: to truncate one has the disk wait for its old content.
        fs::remove(bodyPath);
        EXPECT_TRUE(MakeFile(bodyPath, body));
        const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit old = {};
        EXPECT_EQ(getrlimit(resource, &old), 0);
        const rlimit now{std::min(limit, old.rlim_cur), old.rlim_max};
        EXPECT_EQ(setrlimit(resource, &now), 0);
        decoder.SetDecodeFilename(bodyPath);
        setrlimit(resource, &old);
        std::signal(SIGXFSZ, oldHandler);
        EXPECT_EQ(ContentOf(bodyPath), body) << "the body was changed";
        EXPECT_EQ(decoder.ImageFilename(), decoder.StoredNames().empty() ? "" : decoder.StoredNames().front());
        return decoder.DecodeStatus();
    }

    // What lies in the directory besides the body and the parts that wait, hidden files too.
    std::vector<std::string> Files() const
    {
        std::vector<std::string> files = FilesBelow(folder.Path());
        std::erase_if(files, [this](const std::string& name) {
            return folder.File(name) == bodyPath || name.starts_with(".tamarack-parts/");
        });
        return files;
    }

    std::string Content(const std::string& name) const { return ContentOf(folder.File(name)); }

    // And the file goes.
    std::string Taken(const std::string& name) const
    {
        const std::string content = Content(name);
        std::remove(folder.File(name).c_str());
        return content;
    }

    TemporaryFolder folder;
    const std::string bodyPath = folder.File("article7.uue");
    AttachmentDecoder decoder;
};
