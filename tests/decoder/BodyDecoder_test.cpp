#include "decoder/BodyDecoder.h"
#include "decoder/Processor.h"
#include "decoder/SixBit.h"
#include "demo/sample/Encoders.h"
#include "tests/decoder/DecoderTest.h"

#include <filesystem>
#include <map>
#include <set>

namespace {

namespace fs = std::filesystem;

class BodyDecoderTest : public DecoderTest {
protected:
    ~BodyDecoderTest() override { Processor::Limit(Processor::Vectors::Avx512); }
};

std::size_t OpenFiles() { return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), {})); }

// The gateway that put blanks at the line ends, the one that doubled each line end, and a disk that keeps only the LF.
std::string Replaced(std::string text, std::string_view from, std::string_view to)
{
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

std::string Multipart(std::string_view bytes, std::size_t lineLength)
{
    return MimeMultipart({MimeTextPart("A kite."),
        "content-type: image/png;\r\n name=k.bin\r\nCONTENT-TRANSFER-ENCODING:  Base64 \r\n\r\n"
            + Base64Lines(bytes, lineLength)});
}

std::map<std::string, std::string> InEachDialect(std::string_view bytes)
{
    const auto uuencode = [&](const UuencodeDialect& dialect) { return Uuencode(bytes, "k.bin", dialect); };
    const auto yencode = [&](const YencDialect& dialect) { return Yencode(bytes, "k.bin", dialect); };
    const std::string usual = uuencode({});
    return {{"uuencode", usual}, {"uuencode, LF", Replaced(usual, "\r\n", "\n")},
        {"uuencode, blanks added", Replaced(usual, "\r\n", "  \r\n")},
        {"uuencode, line ends doubled", Replaced(usual, "\r\n", "\r\n\r\n")},
        {"uuencode with blanks", uuencode({.mode = "0600", .zero = ' '})},
        {"uuencode, blanks lost", uuencode({.zero = ' ', .trailingBlanksLost = true})},
        {"uuencode, lines of 63 with check characters", uuencode({.checkCharacters = true, .bytesInLine = 63})},
        {"uuencode, short last group, no closing line", uuencode({.shortLastGroup = true, .closingLine = false})},
        {"uuencode, lines that begin with a dot", uuencode({.bytesInLine = 14})}, {"yEnc", yencode({})},
        {"yEnc, dots escaped", yencode({.escapeLeadingDots = true})},
        {"yEnc, short lines, LF, no check sum", Replaced(yencode({.lineLength = 3, .checksums = false}), "\r\n", "\n")},
        {"yEnc, the only part", yencode({.part = 1, .total = 1})},
        {"begin-base64, LF", Replaced(Base64Block(bytes, "k.bin"), "\r\n", "\n")},
        {"MIME, odd lines", Multipart(bytes, 61)}, {"MIME, one line", Multipart(bytes, std::string::npos)}};
}

// Attachments that end at each place in a line, run over the blocks of the reader, or consist of what needs care.
std::vector<std::string> Attachments()
{
    std::vector<std::string> attachments{RandomBytes(300'000), std::string(20'000, '\0'), std::string(20'000, '\4'),
        std::string(5000, '\xd6'), std::string(5000, '\x13')};
    for (std::size_t size : {0, 1, 2, 3, 13, 14, 15, 44, 45, 46, 57, 63, 64, 127, 128, 129, 4500})
        attachments.push_back(RandomBytes(size, static_cast<unsigned>(size)));
    // A text that an encoder leaves as it is: dots at line starts, and what looks like the end.
    attachments.push_back(Replaced(std::string(3000, '.'), "..", "\4\3=y."));
    return attachments;
}

TEST_F(BodyDecoderTest, GivesBackWhatWasEncodedInEachDialect)
{
    for (const auto vectors :
        {Processor::Vectors::Common, Processor::Vectors::Ssse3, Processor::Vectors::Avx2, Processor::Vectors::Avx512}) {
        Processor::Limit(vectors);
        for (const std::string& attachment : Attachments()) {
            for (const auto& [dialect, encoded] : InEachDialect(attachment)) {
                SCOPED_TRACE(testing::Message()
                    << dialect << ", " << attachment.size() << " bytes, vectors " << static_cast<int>(vectors));
                const std::string body = "\r\n..A line of text, and then\r\n\r\n" + encoded + "\r\n-- \r\nYours\r\n";
                ASSERT_EQ(Decode(DotStuff(body)), 1);
                ASSERT_EQ(decoder.ImageFilename(), "k.bin");
                ASSERT_TRUE(Taken("k.bin") == attachment);
                ASSERT_TRUE(Files().empty());
            }
        }
    }
}

TEST_F(BodyDecoderTest, ForeignCharactersAreSeenAtEachPlace)
{
    for (const auto vectors : {Processor::Vectors::Common, Processor::Vectors::Avx512}) {
        Processor::Limit(vectors);
        for (const auto alphabet : {SixBitAlphabet::Uuencode, SixBitAlphabet::Base64}) {
            for (int character = 0; character < 256; ++character) {
                for (std::size_t place = 0; place < 60; ++place) {
                    std::string text(60, 'A');
                    text[place] = static_cast<char>(character);
                    char bytes[45 + AttachmentWriter::slack];
                    ASSERT_EQ(
                        DecodeGroups(alphabet, text.data(), 15, bytes).foreign, SixBitValue(alphabet, text[place]) < 0)
                        << character << " at " << place;
                }
            }
        }
    }
}

class MemorySink : public AttachmentSink {
public:
    void Open(std::string_view name) override { current = {std::string(name), {}}; }
    void Write(std::string_view bytes) override { current.second += bytes; }
    [[nodiscard]] bool Keep() override { return kept.insert(current).second; }
    void Drop() override { }

    std::pair<std::string, std::string> current;
    std::map<std::string, std::string> kept;
};

// However the body comes out of its file, and whatever kinds follow each other in it.
TEST_F(BodyDecoderTest, TornBodyGivesTheSame)
{
    const std::string bytes = RandomBytes(9000);
    const std::string body = DotStuff("\r\nHello\r\n" + Uuencode(bytes, "1") + Yencode(bytes, "2") + "text\r\n"
        + Yencode(bytes, "3", {.lineLength = 64}) + Base64Block(bytes, "4")
        + MimeMultipart({Uuencode(bytes, "5", {.bytesInLine = 14}),
            "Content-Type: multipart/mixed; boundary=inner\r\n\r\n"
                + MimeMultipart({MimeBase64Part(bytes, "6"), MimeBase64Part(bytes, "7")}, "inner"),
            MimeBase64Part(bytes, "8")}));
    for (const std::size_t piece : {std::size_t{1}, std::size_t{2}, std::size_t{17}, std::size_t{4096}, body.size()}) {
        SCOPED_TRACE(piece);
        std::size_t at = 0;
        LineReader lines([&](char* to, std::size_t size) {
            const std::size_t count = body.copy(to, std::min(size, piece), at);
            at += count;
            return count;
        });
        MemorySink sink;
        EXPECT_EQ(DecodeBody(lines, sink), Outcome::Stored);
        EXPECT_EQ(sink.kept.size(), 8U);
        for (const auto& [name, content] : sink.kept)
            EXPECT_TRUE(content == bytes) << name;
    }
}

TEST_F(BodyDecoderTest, SamplesTellTheirFault)
{
    const std::map<int, std::vector<const char*>> samples{
        {1, {"cat.uue", "cat.b64", "cat.ync", "quoted-name-blanks-lost.uue"}},
        {0, {"size-beyond-64-bits.ync", "named-text.mime", "unnamed-image.mime"}},
        {-1,
            {"no-end-line.uue", "middle-of-a-posting.uue", "no-yend.ync", "part-2-of-3.ync",
                "ypart-of-less-than-all.ync", "no-equals-signs.b64", "no-closing-boundary.mime"}},
        {-2,
            {"line-too-long.uue", "line-too-short.uue", "small-letters.uue", "data-after-closing-line.uue",
                "crc-wrong.ync", "crc-no-number.ync", "size-wrong.ync", "sizes-differ.ync", "escape-cut-off.ync",
                "half-a-group.b64", "data-after-padding.b64", "foreign-character.mime"}}};
    for (const auto& [status, names] : samples) {
        for (const std::string name : names) {
            SCOPED_TRACE(name);
            const std::string body = ContentOf(DECODER_SAMPLES + name);
            ASSERT_FALSE(body.empty());
            EXPECT_EQ(Decode(body), status);
            EXPECT_EQ(Taken(decoder.ImageFilename()), status < 1 ? "" : name.starts_with("cat") ? "Cat\n" : "\1\2\3");
            EXPECT_TRUE(Files().empty());
        }
    }
}

TEST_F(BodyDecoderTest, ProseIsNoAttachment)
{
    for (const char* prose : {"", "begin", "begin 5 minutes early\r\nM\r\n", "begin 644 \r\n#0V%T\r\n`\r\nend\r\n",
             "begin 644 is how it begins,\r\nand so on\r\nend\r\n", "begin 999 x\r\n#0V%T\r\nend\r\n",
             "begin 64444 x\r\n#0V%T\r\nend\r\n", " begin 644 x\r\n#0V%T\r\nend\r\n",
             "begin-base64 644 x\r\nis the line you want.\r\n", "=ybegin is a line of yEnc\r\n=yend\r\n",
             "=ybegin line=128 name=x.jpg\r\n=yend size=0\r\n", "--\r\nContent with it all\r\n",
             "-- \r\nContent-Type: my signature\r\n", "--x\r\nno header\r\n\r\n--x--\r\n", "end\r\n",
             "--x\r\nContent-Type: text/plain\r\n\r\n--x--\r\n--x\r\nX: closed\r\nContent-Type: a/b; name=x\r\n"
             "Content-Transfer-Encoding: base64\r\n\r\nQ2F0\r\n--x--\r\n",
             "MANY THANKS\r\nMANY MORE\r\nM\r\nMM\r\n"}) {
        SCOPED_TRACE(prose);
        EXPECT_EQ(Decode(prose), 0);
        EXPECT_TRUE(Files().empty());
    }
}

TEST_F(BodyDecoderTest, WholeOnesAreStoredBesideBrokenOnes)
{
    const std::string red = RandomBytes(1000, 1);
    const std::string blue = RandomBytes(1000, 2);
    std::string cut = Uuencode(red, "cut.jpg");
    cut.resize(cut.find("\r\nM", cut.size() / 2) + 2);
    std::string wrong = Yencode(red, "wrong.jpg");
    wrong[wrong.size() / 2] ^= 1;
    struct Row {
        const char* what;
        std::string body;
        std::vector<std::string> names;
        int status;
    };
    const std::string part = Yencode(red, "part.jpg", {.part = 1, .total = 2, .whole = blue});
    for (const Row& row :
        {
            Row{"in their order", Yencode(blue, "b.jpg") + "and\r\n" + Uuencode(red, "a.jpg"), {"b.jpg", "a.jpg"}, 2},
            Row{"after one cut off", cut + Uuencode(blue, "b.jpg"), {"b.jpg"}, 1},
            Row{"after one cut off by text", cut + "text\r\n" + Base64Block(blue, "b.jpg"), {"b.jpg"}, 1},
            Row{"after a damaged one", wrong + Yencode(blue, "b.jpg"), {"b.jpg"}, 1},
            Row{"after a yEnc part", part + Yencode(blue, "b.jpg"), {"b.jpg"}, 1},
            Row{"yEnc cut off by the next", wrong.substr(0, 400) + "\r\n" + Yencode(blue, "b.jpg"), {"b.jpg"}, 1},
            Row{"the same twice", Uuencode(red, "a.jpg") + Yencode(red, "a.jpg"), {"a.jpg", "a.jpg"}, 2},
            Row{"cut off by a boundary", MimeMultipart({cut, MimeBase64Part(blue, "b.jpg")}), {"b.jpg"}, 1},
            Row{"cut off by the last boundary", MimeMultipart({MimeTextPart(cut)}), {}, -1},
            Row{"the end of one", "=ybegin size=9 name=x\r\n=ypart begin=5 end=9\r\nabcde\r\n=yend size=5\r\n", {}, -1},
            Row{"only broken ones: the worst counts", cut + "\r\n" + wrong, {}, -2},
        }) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(Decode(DotStuff(row.body)), row.status);
        EXPECT_EQ(decoder.StoredNames(), row.names);
        for (const std::string& name : std::set(row.names.begin(), row.names.end()))
            EXPECT_TRUE(Taken(name) == (name == "b.jpg" ? blue : red)) << name;
        EXPECT_TRUE(Files().empty());
    }
}

// The rest counts as damaged, and nothing of it lies about.
TEST_F(BodyDecoderTest, OneArticleStoresSoManyAttachments)
{
    std::string whole, besideDamaged;
    for (std::size_t i = 0; i < mostAttachments + 5; ++i) {
        whole += Uuencode("red", "r" + std::to_string(i));
        besideDamaged += Uuencode("red", "r") + "begin 644 x\r\n#<F5D\r\n!!!!\r\n";
    }
    EXPECT_EQ(Decode(whole), 100);
    EXPECT_EQ(Files().size(), 100U);
    EXPECT_EQ(Decode(besideDamaged), 50);
}

TEST_F(BodyDecoderTest, MimeHeadersNameTheAttachment)
{
    for (const auto& [header, name] : {
             // The disposition goes first.
             std::pair(
                 "Content-Disposition: inline; size=3; filename=red.jpg\r\nContent-Type: image/jpeg; name=blue.jpg",
                 "red.jpg"),
             {"CONTENT-TYPE: IMAGE/JPEG;\r\n\tNAME=\"red.jpg\"", "red.jpg"},
             {"X-Sender: ada\r\nContent-ID: <1@x>\r\nContent-Type: image/png; name=red.png", "red.png"},
             {"Content-Type: image/png; name=\"a \\\"red\\\"; one.png\"", "a \"red\"; one.png"},
             // RFC 2231, whole and in pieces, and RFC 2047.
             {"Content-Disposition: attachment; filename=x; filename*=utf-8'de'gr%C3%BCn%20.jpg", "gr\xc3\xbcn .jpg"},
             {"Content-Disposition: attachment; filename*1=\"ne kite\"; filename*0*=''gr%C3%BC; filename*2=.jpg",
                 "gr\xc3\xbcne kite.jpg"},
             {"Content-Type: image/jpeg; name=\"=?utf-8?B?Z3LDvG4=?= =?iso-8859-1?q?_k=FCte?=.jpg\"",
                 "gr\xc3\x83\xc2\xbcn k\xc3\xbcte.jpg"},
             {"Content-Type: image/png; name*=''..%2F..%2Fred.png", "red.png"},
         }) {
        SCOPED_TRACE(header);
        // The boundary shows only by the header that follows it, so one with Content- has to come first.
        const std::string body = MimeMultipart(
            {MimeTextPart("Hello"), header + std::string("\r\nContent-Transfer-Encoding: base64\r\n\r\nQ2F0Cg==\r\n")});
        EXPECT_EQ(Decode(body), 1);
        EXPECT_EQ(decoder.ImageFilename(), name);
        EXPECT_EQ(Taken(name), "Cat\n");
    }
}

// Lines without an end, and far longer than the reader's block.
TEST_F(BodyDecoderTest, EndlessLinesDoNoHarm)
{
    const std::string endless(3 * LineReader::blockSize + 5, 'M');
    for (const auto& [body, status] : {std::pair{endless, 0}, {"begin 644 a\r\n" + endless, 0},
             {"begin 644 a\r\n#0V%T\r\n" + endless, -2}, {"begin 644 " + endless + "\r\n#0V%T\r\n`\r\nend\r\n", 0},
             {"=ybegin size=3 name=a\r\n" + endless, -2}, {"--x\r\nContent-Type: " + endless + "\r\n\r\n--x--\r\n", 0},
             // Not at the start of a line.
             {std::string(LineReader::blockSize, 'x') + Uuencode("Cat\n", "cat"), 0}})
        EXPECT_EQ(Decode(body), status) << body.substr(0, 30);
    EXPECT_TRUE(Files().empty());
    EXPECT_EQ(Decode(endless + "\r\n" + Uuencode("Cat\n", "cat") + endless), 1);
}

// Bodies of each kind, cut and changed at random. What must hold for all of them: nothing but whole attachments under
// reported names in the directory, existing files as they were, no file left open.
TEST_F(BodyDecoderTest, NoDamageGetsOutOfTheDirectory)
{
    const std::string bytes = RandomBytes(700);
    std::vector<std::string> bodies{DotStuff(Uuencode(bytes, "../x"))};
    for (const auto& [dialect, encoded] : InEachDialect(bytes))
        bodies.push_back(DotStuff(encoded));
    const std::vector<std::string> inserted{"\n", "\r\n", "..", "=y", "=", "begin 644 ../x\r\n",
        "=ybegin size=9 name=x\r\n", "\r\n--=_tamarack_part\r\n", "end\r\n", "====\r\n", std::string(1, '\0'), " ", "/",
        "99999999999999999999"};
    ASSERT_TRUE(MakeFile(folder.File("k.bin"), "kept"));
    const std::size_t openFiles = OpenFiles();
    std::mt19937 random(3);
    const auto below = [&random](std::size_t limit) { return random() % std::max<std::size_t>(limit, 1); };

    int stored = 0;
    for (std::size_t round = 0; round < 6000; ++round) {
        SCOPED_TRACE(round);
        std::string body = bodies[round % bodies.size()];
        const std::size_t changes = below(4);
        for (std::size_t change = 0; change < changes; ++change) {
            const std::size_t at = below(body.size()), kind = below(4);
            if (kind == 0)
                body.resize(at);
            else if (kind == 1 && !body.empty())
                body[at] = static_cast<char>(body[at] ^ 1 << below(8));
            else
                body.replace(at, kind == 2 ? 0 : below(80), kind == 2 ? inserted[below(inserted.size())] : "");
        }
        stored += Decode(body) > 0 ? 1 : 0;
        ASSERT_EQ(Content("k.bin"), "kept");
        ASSERT_TRUE(changes != 0 || Content(decoder.ImageFilename()) == bytes);
        for (const std::string& name : std::set(decoder.StoredNames().begin(), decoder.StoredNames().end()))
            EXPECT_TRUE(fs::remove(folder.File(name))) << name;
        ASSERT_EQ(Files(), std::vector<std::string>{"k.bin"});
    }
    EXPECT_GT(stored, 1500) << "the damage left too little to test";
    EXPECT_LT(stored, 5000) << "damage is not noticed";
    EXPECT_FALSE(fs::exists(folder.File("../x")));
    EXPECT_EQ(OpenFiles(), openFiles);
}

}
