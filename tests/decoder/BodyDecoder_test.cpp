#include "decoder/AttachmentStore.h"
#include "decoder/BodyDecoder.h"
#include "decoder/Processor.h"
#include "decoder/SixBit.h"
#include "tests/decoder/DecoderTest.h"

#include <map>
#include <set>

namespace {

class BodyDecoderTest : public DecoderTest {
protected:
    ~BodyDecoderTest() override { Processor::Limit(Processor::Vectors::Avx512); }
};

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
            for (std::size_t at = 0; at < 256 * 60; ++at) {
                std::string text(60, 'A');
                const char character = text[at % 60] = static_cast<char>(at / 60);
                char bytes[45 + AttachmentWriter::slack];
                ASSERT_EQ(DecodeGroups(alphabet, text.data(), 15, bytes).foreign, SixBitValue(alphabet, character) < 0)
                    << at;
            }
        }
    }
}

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
        const std::vector<std::string> noNames;
        AttachmentSets sets;
        AttachmentStore store(bodyPath, noNames, sets);
        EXPECT_EQ(DecodeBody(lines, store), Outcome::Stored);
        EXPECT_EQ(store.Names(), (std::vector<std::string>{"1", "2", "3", "4", "5", "6", "7", "8"}));
        for (const std::string& name : store.Names())
            EXPECT_TRUE(Taken(name) == bytes) << name;
    }
}

// Each sample is named for what is wrong with it.
TEST_F(BodyDecoderTest, SamplesTellTheirFault)
{
    for (const auto& [samples, status] : {std::pair{"stored", 1}, {"none", 0}, {"part", -1}, {"damaged", -2}}) {
        const std::vector<std::string> names = FilesBelow(DECODER_SAMPLES + std::string(samples));
        EXPECT_GT(names.size(), 3U);
        for (const std::string& name : names) {
            SCOPED_TRACE(name);
            EXPECT_EQ(Decode(ContentOf(DECODER_SAMPLES + std::string(samples) + "/" + name)), status);
            EXPECT_EQ(Taken(decoder.ImageFilename()), status < 1 ? "" : name.starts_with("cat") ? "Cat\n" : "\1\2\3");
            EXPECT_TRUE(Files().empty());
        }
    }
}

// Far longer than the reader's block.
TEST_F(BodyDecoderTest, EndlessLinesDoNoHarm)
{
    const std::string endless(3 * LineReader::blockSize + 5, 'M');
    for (const auto& [body, status] : {std::pair{endless, 0}, {"begin 644 a\r\n" + endless, 0},
             {"begin 644 a\r\n#0V%T\r\n" + endless, -2}, {"begin 644 " + endless + "\r\n#0V%T\r\n`\r\nend\r\n", 0},
             {"=ybegin size=3 name=a\r\n" + endless, -2}, {"--x\r\nContent-Type: " + endless + "\r\n\r\n--x--\r\n", 0},
             {std::string(LineReader::blockSize, 'x') + Uuencode("Cat\n", "cat"), 0}, // not at the start of a line
             {endless + "\r\n" + Uuencode("Cat\n", "cat") + endless, 1}})
        EXPECT_EQ(Decode(body), status) << body.substr(0, 30);
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
        std::string body;
        std::vector<std::string> names;
        int status;
    };
    const std::string blueOne = Yencode(blue, "b.jpg");
    const std::string part = Yencode(red, "part.jpg", {.part = 1, .total = 2, .whole = blue});
    for (const Row& row : {Row{blueOne + "and\r\n" + Uuencode(red, "a.jpg"), {"b.jpg", "a.jpg"}, 2},
             Row{cut + Uuencode(blue, "b.jpg"), {"b.jpg"}, 1},
             Row{cut + "text\r\n" + Base64Block(blue, "b.jpg"), {"b.jpg"}, 1}, Row{wrong + blueOne, {"b.jpg"}, 1},
             Row{part + blueOne, {"b.jpg"}, 1}, Row{wrong.substr(0, 400) + "\r\n" + blueOne, {"b.jpg"}, 1},
             Row{Uuencode(red, "a.jpg") + Yencode(red, "a.jpg"), {"a.jpg", "a.jpg"}, 2},
             Row{MimeMultipart({cut, MimeBase64Part(blue, "b.jpg")}), {"b.jpg"}, 1},
             Row{MimeMultipart({MimeTextPart(cut)}), {}, -1},
             Row{"=ybegin size=9 name=x\r\n=ypart begin=5 end=9\r\nabcde\r\n=yend size=5\r\n", {}, -1},
             Row{cut + "\r\n" + wrong, {}, -2}}) {
        SCOPED_TRACE(row.body.substr(0, 60));
        EXPECT_EQ(Decode(DotStuff(row.body)), row.status);
        EXPECT_EQ(decoder.StoredNames(), row.names);
        for (const std::string& name : std::set(row.names.begin(), row.names.end()))
            EXPECT_TRUE(Taken(name) == (name == "b.jpg" ? blue : red)) << name;
        EXPECT_TRUE(Files().empty());
    }
}

TEST_F(BodyDecoderTest, OneArticleStoresSoManyAttachments)
{
    std::string body;
    for (std::size_t i = 0; i < mostAttachments + 5; ++i)
        body += Uuencode("red", "r" + std::to_string(i / 2)) + (i % 2 == 0 ? "" : "begin 644 x\r\n#<F5D\r\n!!!!\r\n");
    EXPECT_EQ(Decode(body), 67); // of a hundred that begin
}

TEST_F(BodyDecoderTest, MimeHeadersNameTheAttachment)
{
    for (const auto& [header, name] :
        {std::pair("Content-Disposition: inline; size=3; filename=red.jpg\r\nContent-Type: image/jpeg; name=blue.jpg",
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
            {"Content-Type: image/png; name*=''..%2F..%2Fred.png", "red.png"}}) {
        // The boundary shows only by the header that follows it, so one with Content- has to come first.
        (void)Decode(MimeMultipart({MimeTextPart("Hello"),
            header + std::string("\r\nContent-Transfer-Encoding: base64\r\n\r\nQ2F0Cg==\r\n")}));
        EXPECT_EQ(Taken(name), "Cat\n") << header;
        EXPECT_TRUE(Files().empty());
    }
}

}
