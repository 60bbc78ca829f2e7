#include "decoder/BodyDecoder.h"
#include "decoder/Processor.h"
#include "decoder/SixBit.h"
#include "demo/sample/Encoders.h"
#include "tests/decoder/DecoderTest.h"

#include <algorithm>
#include <map>

namespace {

class BodyDecoderTest : public DecoderTest {
protected:
    ~BodyDecoderTest() override { Processor::Limit(Processor::Vectors::Avx512); }
};

struct Dialect {
    const char* what;
    std::string (*encode)(std::string_view bytes);
};

std::string WithLineFeedsOnly(std::string text)
{
    std::erase(text, '\r');
    return text;
}

std::string Multipart(std::string_view bytes, std::size_t lineLength)
{
    return MimeMultipart({MimeTextPart("A kite."),
        "content-type: image/png;\r\n name=k.bin\r\nCONTENT-TRANSFER-ENCODING:  Base64 \r\n\r\n"
            + Base64Lines(bytes, lineLength)});
}

// The gateway that put blanks at the line ends, and the one that doubled each line end.
std::string Replaced(std::string text, std::string_view from, std::string_view to)
{
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

const Dialect dialects[] = {
    {"uuencode", [](std::string_view bytes) { return Uuencode(bytes, "k.bin"); }},
    {"uuencode, LF", [](std::string_view bytes) { return WithLineFeedsOnly(Uuencode(bytes, "k.bin")); }},
    {"uuencode with blanks",
        [](std::string_view bytes) { return Uuencode(bytes, "k.bin", {.mode = "0600", .zero = ' '}); }},
    {"uuencode, blanks lost",
        [](std::string_view bytes) { return Uuencode(bytes, "k.bin", {.zero = ' ', .trailingBlanksLost = true}); }},
    {"uuencode, blanks added",
        [](std::string_view bytes) { return Replaced(Uuencode(bytes, "k.bin"), "\r\n", "  \r\n"); }},
    {"uuencode, line ends doubled",
        [](std::string_view bytes) { return Replaced(Uuencode(bytes, "k.bin"), "\r\n", "\r\n\r\n"); }},
    {"uuencode with check characters",
        [](std::string_view bytes) { return Uuencode(bytes, "k.bin", {.checkCharacters = true}); }},
    {"uuencode, short last group, no closing line",
        [](std::string_view bytes) {
            return Uuencode(bytes, "k.bin", {.shortLastGroup = true, .closingLine = false});
        }},
    {"uuencode, lines of 63", [](std::string_view bytes) { return Uuencode(bytes, "k.bin", {.bytesInLine = 63}); }},
    {"uuencode, lines that begin with a dot",
        [](std::string_view bytes) { return Uuencode(bytes, "k.bin", {.bytesInLine = 14}); }},
    {"yEnc", [](std::string_view bytes) { return Yencode(bytes, "k.bin"); }},
    {"yEnc, dots escaped", [](std::string_view bytes) { return Yencode(bytes, "k.bin", {.escapeLeadingDots = true}); }},
    {"yEnc, LF", [](std::string_view bytes) { return WithLineFeedsOnly(Yencode(bytes, "k.bin")); }},
    {"yEnc, no check sum, short lines",
        [](std::string_view bytes) { return Yencode(bytes, "k.bin", {.lineLength = 3, .checksums = false}); }},
    {"yEnc, the only part", [](std::string_view bytes) { return Yencode(bytes, "k.bin", {.part = 1, .total = 1}); }},
    {"begin-base64", [](std::string_view bytes) { return Base64Block(bytes, "k.bin"); }},
    {"begin-base64, LF", [](std::string_view bytes) { return WithLineFeedsOnly(Base64Block(bytes, "k.bin")); }},
    {"MIME", [](std::string_view bytes) { return Multipart(bytes, 76); }},
    {"MIME, odd lines", [](std::string_view bytes) { return Multipart(bytes, 61); }},
    {"MIME, one line", [](std::string_view bytes) { return Multipart(bytes, std::string::npos); }},
};

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
        for (const Dialect& dialect : dialects) {
            int number = 0;
            for (const std::string& attachment : Attachments()) {
                SCOPED_TRACE(testing::Message()
                    << dialect.what << ", attachment " << number++ << ", vectors " << static_cast<int>(vectors));
                const std::string body
                    = "\r\n..A line of text, and then\r\n\r\n" + dialect.encode(attachment) + "\r\n-- \r\nYours\r\n";
                ASSERT_EQ(Decode(DotStuff(body)), 1);
                ASSERT_EQ(decoder.ImageFilename(), "k.bin");
                ASSERT_TRUE(Content("k.bin") == attachment);
                ASSERT_EQ(Files().size(), 1U);
                std::remove(folder.File("k.bin").c_str());
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
    struct Row {
        const char* sample;
        int status;
        const char* content;
    };
    const char* const cat = "Cat\n";
    for (const Row& row : {Row{"cat.uue", 1, cat}, Row{"cat.b64", 1, cat}, Row{"cat.ync", 1, cat},
             Row{"quoted-name-blanks-lost.uue", 1, "\x01\x02\x03"}, Row{"no-end-line.uue", -1, nullptr},
             Row{"line-too-long.uue", -2, nullptr}, Row{"line-too-short.uue", -2, nullptr},
             Row{"small-letters.uue", -2, nullptr}, Row{"data-after-closing-line.uue", -2, nullptr},
             Row{"middle-of-a-posting.uue", -1, nullptr}, Row{"crc-wrong.ync", -2, nullptr},
             Row{"crc-no-number.ync", -2, nullptr}, Row{"size-wrong.ync", -2, nullptr},
             Row{"sizes-differ.ync", -2, nullptr}, Row{"size-beyond-64-bits.ync", 0, nullptr},
             Row{"no-yend.ync", -1, nullptr}, Row{"part-2-of-3.ync", -1, nullptr},
             Row{"ypart-of-less-than-all.ync", -1, nullptr}, Row{"escape-cut-off.ync", -2, nullptr},
             Row{"no-equals-signs.b64", -1, nullptr}, Row{"half-a-group.b64", -2, nullptr},
             Row{"data-after-padding.b64", -2, nullptr}, Row{"no-closing-boundary.mime", -1, nullptr},
             Row{"foreign-character.mime", -2, nullptr}, Row{"named-text.mime", 0, nullptr},
             Row{"unnamed-image.mime", 0, nullptr}}) {
        SCOPED_TRACE(row.sample);
        const std::string body = ContentOf(std::string(DECODER_SAMPLES) + row.sample);
        ASSERT_FALSE(body.empty());
        EXPECT_EQ(Decode(body), row.status);
        EXPECT_EQ(Files().size(), row.content != nullptr ? 1U : 0U);
        if (row.content != nullptr) {
            EXPECT_EQ(Content(decoder.ImageFilename()), row.content);
            std::remove(folder.File(decoder.ImageFilename()).c_str());
        }
    }
}

TEST_F(BodyDecoderTest, ProseIsNoAttachment)
{
    for (const char* prose :
        {"", "\r\n", "begin", "begin 5 minutes early\r\nM\r\n", "begin 644 \r\n#0V%T\r\n`\r\nend\r\n",
            "begin 644 picture.jpg\r\n", "begin 644 is how it begins,\r\nand so on\r\nend\r\n",
            "begin 999 x\r\n#0V%T\r\nend\r\n", "begin 64444 x\r\n#0V%T\r\nend\r\n", " begin 644 x\r\n#0V%T\r\nend\r\n",
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
    for (const Row& row : {
             Row{"in their order", Yencode(blue, "b.jpg") + "and\r\n" + Uuencode(red, "a.jpg"), {"b.jpg", "a.jpg"}, 2},
             Row{"after one cut off", cut + Uuencode(blue, "b.jpg"), {"b.jpg"}, 1},
             Row{"after one cut off by text", cut + "text\r\n" + Base64Block(blue, "b.jpg"), {"b.jpg"}, 1},
             Row{"before a damaged one", Uuencode(blue, "b.jpg") + wrong, {"b.jpg"}, 1},
             Row{"after a damaged one", wrong + Yencode(blue, "b.jpg"), {"b.jpg"}, 1},
             Row{"after a yEnc part",
                 Yencode(red, "part.jpg", {.part = 1, .total = 2, .whole = blue}) + Yencode(blue, "b.jpg"), {"b.jpg"},
                 1},
             Row{"yEnc cut off by the next", Yencode(red, "r.jpg").substr(0, 600) + "\r\n" + Yencode(blue, "b.jpg"),
                 {"b.jpg"}, 1},
             Row{"the same twice", Uuencode(red, "a.jpg") + Yencode(red, "a.jpg"), {"a.jpg", "a.jpg"}, 2},
             Row{"two of a name", Uuencode(red, "a.jpg") + Yencode(blue, "a.jpg"), {"a.jpg", "a (2).jpg"}, 2},
             Row{"uuencode cut off by a boundary", MimeMultipart({MimeTextPart(cut), MimeBase64Part(blue, "b.jpg")}),
                 {"b.jpg"}, 1},
             Row{"uuencode cut off by the last boundary", MimeMultipart({MimeTextPart(cut)}, "=_X"), {}, -1},
             Row{"only broken ones: the worst counts", cut + "\r\n" + wrong, {}, -2},
             Row{"only parts", Yencode(red, "part.jpg", {.part = 1, .total = 2, .whole = blue}), {}, -1},
         }) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(Decode(DotStuff(row.body)), row.status);
        EXPECT_EQ(decoder.StoredNames(), row.names);
        std::vector<std::string> files = row.names;
        std::sort(files.begin(), files.end());
        files.erase(std::unique(files.begin(), files.end()), files.end());
        EXPECT_EQ(Files(), files);
        for (const std::string& name : files) {
            EXPECT_TRUE(Content(name) == (name.starts_with("b") || name == "a (2).jpg" ? blue : red)) << name;
            std::remove(folder.File(name).c_str());
        }
    }
}

// The rest counts as damaged, and nothing of it lies about.
TEST_F(BodyDecoderTest, OneArticleStoresSoManyAttachments)
{
    const auto bodyOf = [](std::size_t count, const char* last) {
        std::string body;
        for (std::size_t i = 0; i < count; ++i)
            body += Uuencode("red", "r" + std::to_string(i)) + last;
        return body;
    };
    EXPECT_EQ(Decode(bodyOf(mostAttachments + 5, "")), 100);
    EXPECT_EQ(Files().size(), 100U);
    const std::string damaged = bodyOf(mostAttachments, "begin 644 x\r\n#<F5D\r\n!!!!\r\n");
    EXPECT_EQ(Decode(damaged), 50);

    struct : AttachmentSink {
        void Open(std::string_view) override { }
        void Write(std::string_view) override { }
        bool Keep() override { return ++kept != 0; }
        void Drop() override { }
        std::size_t kept = 0;
    } sink;
    for (const auto& [count, outcome] :
        {std::pair{mostAttachments, Outcome::Stored}, {mostAttachments + 1, Outcome::Damaged}}) {
        const std::string body = bodyOf(count, "text\r\n");
        LineReader lines{std::string_view(body)};
        sink.kept = 0;
        EXPECT_EQ(DecodeBody(lines, sink), outcome);
        EXPECT_EQ(sink.kept, 100U);
    }
}

TEST_F(BodyDecoderTest, MimeHeadersNameTheAttachment)
{
    struct Row {
        const char* what;
        const char* header;
        const char* name;
    };
    for (const Row& row : {
             Row{"type", "Content-Type: image/jpeg; name=\"red kite.jpg\"\r\n", "red kite.jpg"},
             Row{"the disposition goes first",
                 "Content-Disposition: inline; size=3; filename=red.jpg\r\nContent-Type: image/jpeg; name=blue.jpg\r\n",
                 "red.jpg"},
             Row{"folded, upper case", "CONTENT-TYPE: IMAGE/JPEG;\r\n\tNAME=\"red.jpg\"\r\n", "red.jpg"},
             Row{"other headers first",
                 "X-Sender: ada\r\nContent-ID: <1@x>\r\nContent-Type: image/png; name=red.png\r\n", "red.png"},
             Row{"quotes, semicolon", "Content-Type: image/png; name=\"a \\\"red\\\"; one.png\"\r\n",
                 "a \"red\"; one.png"},
             Row{"path", "Content-Type: image/png; name=\"C:\\kites\\red.png\"\r\n", "red.png"},
             Row{"RFC 2231", "Content-Disposition: attachment; filename=x; filename*=utf-8'de'gr%C3%BCn%20.jpg\r\n",
                 "gr\xc3\xbcn .jpg"},
             Row{"RFC 2231 in pieces",
                 "Content-Disposition: attachment; filename*1=\"ne kite\"; filename*0*=''gr%C3%BC; filename*2=.jpg\r\n",
                 "gr\xc3\xbcne kite.jpg"},
             Row{"RFC 2047", "Content-Type: image/jpeg; name=\"=?utf-8?B?Z3LDvG4=?= =?iso-8859-1?q?_k=FCte?=.jpg\"\r\n",
                 "gr\xc3\x83\xc2\xbcn k\xc3\xbcte.jpg"},
             Row{"encoded escape from the directory", "Content-Type: image/png; name*=''..%2F..%2Fred.png\r\n",
                 "red.png"},
         }) {
        SCOPED_TRACE(row.what);
        // The boundary shows only by the header that follows it, so one with Content- has to come first.
        const std::string body = MimeMultipart(
            {MimeTextPart("Hello"), row.header + std::string("Content-Transfer-Encoding: base64\r\n\r\nQ2F0Cg==\r\n")});
        EXPECT_EQ(Decode(body), 1);
        EXPECT_EQ(decoder.ImageFilename(), row.name);
        EXPECT_EQ(Content(row.name), "Cat\n");
        std::remove(folder.File(row.name).c_str());
    }
}

// Lines without an end, and far longer than the reader's block.
TEST_F(BodyDecoderTest, EndlessLinesDoNoHarm)
{
    const std::string endless(3 * LineReader::blockSize + 5, 'M');
    EXPECT_EQ(Decode(endless), 0);
    EXPECT_EQ(Decode("begin 644 a\r\n" + endless), 0);
    EXPECT_EQ(Decode("begin 644 a\r\n#0V%T\r\n" + endless), -2);
    EXPECT_EQ(Decode("begin 644 " + endless + "\r\n#0V%T\r\n`\r\nend\r\n"), 0);
    EXPECT_EQ(Decode("=ybegin size=3 name=a\r\n" + endless), -2);
    EXPECT_EQ(Decode("--x\r\nContent-Type: " + endless + "\r\n\r\n--x--\r\n"), 0);
    EXPECT_EQ(Decode(std::string(LineReader::blockSize, 'x') + Uuencode("Cat\n", "cat")), 0) << "not at a line start";
    EXPECT_TRUE(Files().empty());
    EXPECT_EQ(Decode(endless + "\r\n" + Uuencode("Cat\n", "cat") + endless), 1);
}

}
