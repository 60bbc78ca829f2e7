#include "demo/sample/SampleArticles.h"

#include "demo/sample/Encoders.h"
#include "demo/sample/SamplePictures.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

// Posts to one group after the other and keeps the account of what a search will store.
class Poster {
public:
    void OpenGroup(const std::string& name, std::int32_t firstNumber)
    {
        postings.groups.push_back({name, {}});
        postings.groupsToSearch.push_back(name);
        nextNumber = firstNumber;
    }

    void ListEmptyGroup(const std::string& name) { postings.groups.push_back({name, {}}); }

    // Articles that have gone from the server.
    void LeaveGap(std::int32_t count) { nextNumber += count; }

    std::int32_t NextNumber() const { return nextNumber; }

    void Post(const std::string& from, const std::string& subject, const std::string& body)
    {
        SampleGroup& group = postings.groups.back();
        const auto lines = std::count(body.begin(), body.end(), '\n');
        const std::string id
            = "<" + std::to_string(nextNumber) + "." + std::to_string(postings.groups.size()) + "@kestrel.example>";
        const std::string day = std::to_string(1 + nextNumber % 28);
        group.articles.push_back({nextNumber,
            "Path: kestrel.example!not-for-mail\r\n"
            "From: "
                + from
                + "\r\n"
                  "Newsgroups: "
                + group.name
                + "\r\n"
                  "Subject: "
                + subject
                + "\r\n"
                  "Date: "
                + day
                + " Mar 2024 18:20:00 +0000\r\n"
                  "Message-ID: "
                + id
                + "\r\n"
                  "Lines: "
                + std::to_string(lines) + "\r\n",
            body});
        ++nextNumber;
    }

    // The last posting leads to this file in the group's directory, where it replaces an older one of that name.
    void Expect(const std::string& name, const std::string& bytes)
    {
        const std::string& group = postings.groups.back().name;
        std::erase_if(
            postings.expected, [&](const ExpectedFile& file) { return file.group == group && file.name == name; });
        postings.expected.push_back({group, name, bytes});
    }

    SamplePostings postings;

private:
    std::int32_t nextNumber = 1;
};

const std::string ada = "Ada Wren <ada@kestrel.example>";
const std::string tomas = "Tomas Lind <tomas@heron.example>";
const std::string mei = "Mei Sora <mei@plover.example>";

// What people write around their attachments, with lines that begin with dots.
std::string Talk(const std::string& text)
{
    return text + "\r\n\r\n...and so on.\r\n.\r\n..two dots above, one below\r\n.\r\n\r\n-- \r\nsent from the shed\r\n";
}

std::string WithText(const std::string& text, const std::string& attachment)
{
    return text + "\r\n\r\n" + attachment + "\r\n-- \r\nsent from the shed\r\n";
}

// The text up to the last place where `end` stands.
std::string CutBefore(const std::string& text, std::string_view end) { return text.substr(0, text.rfind(end)); }

std::string WithParts(const std::string& text, std::vector<std::string> parts)
{
    parts.insert(parts.begin(), MimeTextPart(text));
    return MimeMultipart(parts);
}

// A bit map whose last line of uuencode has 14 bytes and so begins with a dot.
std::string PictureWithADottedLine()
{
    for (int height = 60;; ++height) {
        std::string picture = DrawPicture(Scene::Mosaic, 101, height, 21, "BMP");
        if (picture.size() % 45 == 14)
            return picture;
    }
}

void PostKites(Poster& poster)
{
    poster.OpenGroup("alt.kites", 7001);
    poster.Post(
        ada, "Welcome, and what this group is for", Talk("Kites of all kinds. Be kind, and say where the wind was."));

    const std::string diamond = DrawPicture(Scene::Kites, 640, 480, 1, "JPEG");
    poster.Post(ada, "Saturday on the dunes - \"red-diamond.jpg\" (1/1)",
        WithText("A steady four.", Uuencode(diamond, "red-diamond.jpg")));
    poster.Expect("red-diamond.jpg", diamond);
    poster.LeaveGap(1);

    const std::string delta = DrawPicture(Scene::Kites, 900, 600, 2, "JPEG");
    poster.Post(
        tomas, "\"evening-delta.jpg\" yEnc (1/1)", WithText("Taken at dusk.", Yencode(delta, "evening-delta.jpg")));
    poster.Expect("evening-delta.jpg", delta);

    poster.Post(mei, "Which line for a two metre delta?", Talk("Is 50 kg enough, or is that asking for trouble?"));

    const std::string box = DrawPicture(Scene::Kites, 420, 560, 3, "PNG");
    poster.Post(mei, "box kite, finally - box-kite.png (1/1)",
        WithText("Eleven evenings of sewing.", Base64Block(box, "box-kite.png")));
    poster.Expect("box-kite.png", box);
    poster.LeaveGap(3);

    const std::string pair = DrawPicture(Scene::Kites, 800, 500, 4, "JPEG");
    poster.Post(tomas, "stunt pair - stunt-pair.jpg (1/1)",
        WithParts("Two of us, one wind.\r\n", {MimeBase64Part(pair, "stunt-pair.jpg", "image/jpeg")}));
    poster.Expect("stunt-pair.jpg", pair);

    poster.Post(ada, "torn-sail.jpg (1/1)",
        CutBefore(Uuencode(DrawPicture(Scene::Kites, 300, 200, 5, "JPEG"), "torn-sail.jpg"), "end"));
    poster.Post(ada, "Re: torn-sail.jpg (1/1)",
        Talk("> the end is missing here\r\n\r\nSorry. The line was cut, in both senses."));

    const std::string quilt = PictureWithADottedLine();
    poster.Post(mei, "a sail from scraps - quilt.bmp (1/1)",
        WithText("..starts with dots, as some lines below do.", Uuencode(quilt, "quilt.bmp")));
    poster.Expect("quilt.bmp", quilt);
}

// Of a picture in five parts. The one that comes last completes it.
void PostParts(Poster& poster, const std::string& panorama, const std::vector<std::size_t>& parts)
{
    const std::vector<std::string> bodies = YencodeParts(panorama, "panorama.jpg", 5);
    for (const std::size_t part : parts)
        poster.Post(ada, "\"panorama.jpg\" yEnc (" + std::to_string(part) + "/5)", bodies[part - 1]);
}

void PostHarbours(Poster& poster)
{
    poster.OpenGroup("alt.pictures.harbours", 118);
    poster.Post(
        tomas, "Before you post", Talk("One picture to an article, please, and not more than a page of story."));

    const std::string breakwater = DrawPicture(Scene::Harbour, 320, 240, 11, "BMP");
    poster.Post(mei, "the old breakwater - breakwater.bmp (1/1)",
        WithText("Before the storm.", Uuencode(breakwater, "breakwater.bmp")));
    poster.Expect("breakwater.bmp", breakwater);

    std::string horn = Yencode(DrawPicture(Scene::Harbour, 300, 200, 12, "JPEG"), "fog-horn.jpg");
    const std::size_t sum = horn.rfind("crc32=") + 6;
    horn[sum] = horn[sum] == '0' ? '1' : '0';
    poster.Post(ada, "\"fog-horn.jpg\" yEnc (1/1)", horn);

    const std::string panorama = DrawPicture(Scene::Harbour, 900, 200, 13, "JPEG");
    PostParts(poster, panorama, {4, 2, 5});
    // Nothing joins parts of this kind, which do not say to what they belong.
    poster.Post(ada, "panorama-two.jpg (1/3)", CutBefore(Uuencode(panorama, "panorama-two.jpg"), "\r\nM") + "\r\n");
    poster.LeaveGap(12);

    // The same name twice: in the group's directory the newer one replaces the older.
    const std::string lighthouse = DrawPicture(Scene::Harbour, 480, 640, 14, "JPEG");
    const std::string lighthouseAgain = DrawPicture(Scene::Harbour, 520, 640, 15, "JPEG");
    poster.Post(tomas, "lighthouse.jpg (1/1)", Uuencode(lighthouse, "lighthouse.jpg"));
    poster.Expect("lighthouse.jpg", lighthouse);
    poster.Post(tomas, "lighthouse.jpg, a better one - yEnc (1/1)", Yencode(lighthouseAgain, "lighthouse.jpg"));
    poster.Expect("lighthouse.jpg", lighthouseAgain);

    const std::string morning = DrawPicture(Scene::Harbour, 600, 400, 16, "JPEG");
    const std::string noon = DrawPicture(Scene::Harbour, 600, 400, 17, "JPEG");
    poster.Post(mei, "pier, two hours apart - pier-1.jpg, pier-2.jpg",
        WithParts("Same place, same lens.\r\n",
            {MimeBase64Part(morning, "pier-1.jpg", "image/jpeg"), MimeBase64Part(noon, "pier-2.jpg", "image/jpeg")}));
    poster.Expect("pier-1.jpg", morning);
    poster.Expect("pier-2.jpg", noon);

    poster.Post(mei, "Re: lighthouse.jpg",
        Talk("begin with the light, then the house. =ybegin is not how one begins a sentence."));
}

void PostPatterns(Poster& poster)
{
    poster.OpenGroup("rec.garden.patterns", 1);
    poster.Post(mei, "Patterns from beds, borders and windows", Talk("Stripes welcome."));

    const std::string blue = DrawPicture(Scene::Rosette, 512, 512, 31, "PNG");
    poster.Post(mei, "rosette - \"blue rosette no 4.png\" (1/1)", Uuencode(blue, "blue rosette no 4.png"));
    poster.Expect("blue rosette no 4.png", blue);

    const std::string wreath = DrawPicture(Scene::Rosette, 700, 700, 32, "JPEG");
    poster.Post(tomas, "wreath - Bl\xc3\xbctenkranz.jpg yEnc (1/1)", Yencode(wreath, "Bl\xc3\xbctenkranz.jpg"));
    poster.Expect("Bl\xc3\xbctenkranz.jpg", wreath);

    const std::string terrace = DrawPicture(Scene::Mosaic, 600, 450, 33, "JPEG");
    poster.Post(tomas, "terrace - caf\xe9 terrace.jpg (1/1)", Uuencode(terrace, "caf\xe9 terrace.jpg"));
    poster.Expect("caf\xc3\xa9 terrace.jpg", terrace);

    const std::string tiles = DrawPicture(Scene::Mosaic, 400, 400, 34, "PNG");
    poster.Post(ada, "tiles.png (1/1)", Base64Block(tiles, "tiles.png"));
    poster.Expect("tiles.png", tiles);
    poster.LeaveGap(400);

    poster.Post(ada, "Seed list, as promised", Talk("No picture in this one. Marigold, borage, cosmos."));

    const std::string hedge = DrawPicture(Scene::Rosette, 160, 120, 35, "BMP");
    poster.Post(mei, "maze seen from above - hedge.bmp (1/1)",
        WithParts("Find the way in.\r\n", {MimeBase64Part(hedge, "hedge.bmp", "image/bmp")}));
    poster.Expect("hedge.bmp", hedge);

    poster.Post(ada, "broken-window.png yEnc (1/1)",
        "=ybegin line=128 size=99999999999999999999 name=broken-window.png\r\nnothing of the kind\r\n=yend "
        "size=12\r\n");
}

void PostOddsAndEnds(Poster& poster)
{
    poster.OpenGroup("alt.odds-and-ends", 90210);
    poster.Post(tomas, "No rules", Talk("Whatever fits nowhere else."));

    // Names that lead out of the destination, or are none.
    struct OddName {
        const char* subject;
        std::string posted;
        std::string stored;
    };
    const OddName names[] = {
        {"two floors up - evil.jpg (1/1)", "../../evil.jpg", "evil.jpg"},
        {"new wallpaper for everyone (1/1)", "/etc/passwd", "passwd"},
        {"from the other system - x.jpg (1/1)", "..\\x.jpg", "x.jpg"},
        {"does it ring? bell.jpg (1/1)", "be\x07ll\x1b.jpg", "bell.jpg"},
        {"shy - .hidden.jpg (1/1)", ".hidden.jpg", "hidden.jpg"},
        {"long winded.jpg (1/1)", std::string(300, 'w') + ".jpg", std::string(251, 'w') + ".jpg"},
    };
    unsigned seed = 40;
    for (const OddName& name : names) {
        const std::string picture = DrawPicture(Scene::Mountains, 360, 240, ++seed, "JPEG");
        poster.Post(ada, name.subject, seed % 2 ? Uuencode(picture, name.posted) : Yencode(picture, name.posted));
        poster.Expect(name.stored, picture);
    }
    const std::string nameless = DrawPicture(Scene::Aurora, 640, 400, 51, "JPEG");
    poster.Post(mei, "northern lights, no idea what to call it, some .jpg yEnc (1/1)", Yencode(nameless, ""));
    poster.Expect("attachment", nameless);
    poster.LeaveGap(2);

    // The name under which the program itself keeps the body of this very article for a moment.
    const std::string aurora = DrawPicture(Scene::Aurora, 800, 500, 52, "JPEG");
    const std::string number = std::to_string(poster.NextNumber());
    poster.Post(tomas, "wallpaper for the winter (1/1)", Uuencode(aurora, "article" + number + ".uue"));
    poster.Expect("article" + number + " (2).uue", aurora);

    const std::string panorama = DrawPicture(Scene::Harbour, 900, 200, 13, "JPEG");
    PostParts(poster, panorama, {2, 3, 1});
    poster.Expect("panorama.jpg", panorama);

    std::string noise = "begin 644 noise.jpg\r\n";
    for (int line = 0; line < 40; ++line) {
        for (int column = 0; column < 60; ++column)
            noise += static_cast<char>(128 + (line * 37 + column * 91) % 128);
        noise += "\r\n";
    }
    poster.Post(ada, "noise.jpg (1/1)", noise + "end\r\n");

    const std::string range = DrawPicture(Scene::Mountains, 1000, 420, 53, "JPEG");
    poster.Post(
        mei, "the last range before home - range.jpg (1/1)", WithText("Goodbye for now.", Yencode(range, "range.jpg")));
    poster.Expect("range.jpg", range);
}

}

SamplePostings MakeSamplePostings()
{
    Poster poster;
    PostKites(poster);
    PostHarbours(poster);
    PostOddsAndEnds(poster);
    // What is left on the screen at the end.
    PostPatterns(poster);
    for (const char* name : {"alt.cellos", "alt.clocks.repair", "alt.kites.makers", "comp.sundials", "free.maps",
             "misc.lanterns", "rec.boats.models", "rec.boats.wooden", "rec.garden.herbs", "sci.weather.clouds",
             "soc.villages", "talk.bridges"})
        poster.ListEmptyGroup(name);
    return std::move(poster.postings);
}
