#include "demo/sample/Encoders.h"
#include "tests/decoder/DecoderTest.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;

std::size_t OpenFiles() { return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), {})); }

// Bodies of each kind, cut and changed at random. What must hold for all of them: nothing but whole attachments under
// reported names in the directory, existing files as they were, no file left open.
TEST_F(DecoderTest, NoDamageGetsOutOfTheDirectory)
{
    const std::string bytes = RandomBytes(700);
    const std::vector<std::string> bodies{Uuencode(bytes, "../k.bin"), Uuencode(bytes, "k.bin", {.zero = ' '}),
        Yencode(bytes, "/k.bin"), Yencode(bytes, "k.bin", {.lineLength = 40, .part = 1, .total = 1}),
        Base64Block(bytes, "k.bin"),
        MimeMultipart({MimeTextPart("Hello"), MimeBase64Part(bytes, "k.bin"), MimeBase64Part(bytes, "=?x?Q?=2Fk?=")})
            + Uuencode(bytes, "k.bin")};
    const std::vector<std::string> inserted{"\n", "\r\n", "..", "=y", "=", "begin 644 ../x\r\n",
        "=ybegin size=9 name=x\r\n", "\r\n--=_tamarack_part\r\n", "end\r\n", "====\r\n", std::string(1, '\0'), " ", "/",
        "99999999999999999999"};
    ASSERT_TRUE(MakeFile(folder.File("kept/existing"), "kept"));
    ASSERT_TRUE(MakeFile(folder.File("destination/k.bin"), "also kept"));
    const std::string destination = folder.File("destination/");
    const std::size_t openFiles = OpenFiles();
    std::mt19937 random(3);
    const auto below = [&random](std::size_t limit) { return random() % std::max<std::size_t>(limit, 1); };

    int stored = 0;
    for (int round = 0; round < 6000; ++round) {
        std::string body = DotStuff(bodies[static_cast<std::size_t>(round) % bodies.size()]);
        const std::size_t changes = below(4);
        for (std::size_t change = 0; change < changes; ++change) {
            const std::size_t at = below(body.size());
            switch (below(4)) {
            case 0:
                body.resize(at);
                break;
            case 1:
                if (!body.empty())
                    body[at] = static_cast<char>(body[at] ^ 1 << below(8));
                break;
            case 2:
                body.insert(at, inserted[below(inserted.size())]);
                break;
            default:
                body.erase(at, below(80));
                break;
            }
        }
        SCOPED_TRACE(round);
        fs::remove(destination + bodyName);
        ASSERT_TRUE(MakeFile(destination + bodyName, body));
        decoder.SetDecodeFilename(destination + bodyName);
        ASSERT_EQ(ContentOf(destination + bodyName), body);

        std::vector<std::string> expected{bodyName, "k.bin"};
        for (const std::string& name : decoder.StoredNames())
            expected.push_back(name);
        std::sort(expected.begin(), expected.end());
        expected.erase(std::unique(expected.begin(), expected.end()), expected.end());
        ASSERT_EQ(FilesBelow(destination), expected);
        ASSERT_EQ(ContentOf(destination + "k.bin"), "also kept");
        if (changes == 0) {
            ASSERT_GT(decoder.DecodeStatus(), 0);
            ASSERT_EQ(ContentOf(destination + decoder.ImageFilename()), bytes);
        }
        stored += decoder.DecodeStatus() > 0 ? 1 : 0;
        for (const std::string& name : decoder.StoredNames())
            fs::remove(destination + name);
    }
    EXPECT_GT(stored, 1500) << "the damage left too little to test";
    EXPECT_LT(stored, 5000) << "damage is not noticed";
    EXPECT_EQ(FilesBelow(folder.File("kept/")), std::vector<std::string>{"existing"});
    EXPECT_EQ(FilesBelow(folder.Path()).size(), 3U); // "existing", "k.bin" and the body
    EXPECT_EQ(OpenFiles(), openFiles);
}

// With a check sum, no change of the bytes goes unnoticed.
TEST_F(DecoderTest, ChecksumFindsEachChange)
{
    const std::string bytes = RandomBytes(1000);
    const std::string body = Yencode(bytes, "k.bin");
    const std::size_t first = body.find('\n') + 1;
    const std::size_t last = body.rfind("=yend");
    for (std::size_t at = first; at < last; ++at) {
        std::string changed = body;
        changed[at] ^= 4;
        EXPECT_TRUE(Decode(changed) <= 0 || Content("k.bin") == bytes) << at;
    }
}

}
