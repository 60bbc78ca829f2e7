#include "tests/real-server/RealServerTest.h"

#include "demo/sample/Encoders.h"
#include "tests/support/ResidentMemory.h"

#include <QBuffer>
#include <QImage>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <set>

namespace fs = std::filesystem;

namespace {

constexpr int articlesInGroup = 400;

std::ptrdiff_t OpenDescriptors()
{
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

// A picture of 30 sizes and colours, and something behind it that no other has.
std::string Attachment(const std::string& label, int number)
{
    QImage image(40 + number % 30 * 20, 700 - number % 30 * 20, QImage::Format_RGB32);
    image.fill(QColor::fromHsv(number % 30 * 12, 200, 220));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "JPEG");
    std::string attachment = bytes.toStdString();
    std::mt19937 random(static_cast<unsigned>(number));
    for (int count = number * 53; count > 0; --count)
        attachment += static_cast<char>(random());
    return attachment + label;
}

// A long use of the program on a news server as they stand on the net. TAMARACK_SOAK is the number of groups, if other
// than a few.
class SoakTest : public RealServerTest {
protected:
    void Serve()
    {
        ASSERT_EQ(server.Start(groups), "");
        for (const std::string& group : groups) {
            for (int number = 1; number <= articlesInGroup; ++number) {
                const std::string name = Name(group, number);
                const std::string attachment = Attachment(name, number);
                Post(group, name + " (1/1)", number % 2 == 0 ? Uuencode(attachment, name) : Yencode(attachment, name));
                if (HasFatalFailure())
                    return;
            }
        }
    }

    static std::string Name(const std::string& group, int number)
    {
        return group.substr(4) + "-" + std::to_string(number) + ".jpg";
    }

    // The number of the last group that has a pointer, and its pointer.
    std::pair<std::size_t, int> Reached() const
    {
        const std::string records = ContentOf(PointerFile());
        if (records.empty())
            return {0, 0};
        const std::string_view last = std::string_view(records).substr(records.size() - 84);
        return {records.size() / 84, static_cast<unsigned char>(last[0]) | static_cast<unsigned char>(last[1]) << 8};
    }

    std::vector<std::string> groups;
};

}

TEST_F(SoakTest, MemoryStaysFlatAndFilesAreRight)
{
    const char* const wanted = std::getenv("TAMARACK_SOAK");
    const int count = wanted != nullptr ? std::max(2, std::atoi(wanted)) : 3;
    std::string selected;
    for (int number = 1; number <= count; ++number) {
        groups.push_back("alt.kites" + std::to_string(number));
        selected += groups.back() + "\r\n";
    }
    Serve();
    if (HasFatalFailure())
        return;
    MakeFile(SelectedFile(), selected);
    Launch();
    ASSERT_TRUE(Until([] { return IsVisible("frmTamarack"); }));
    TypeInto("txtPort", std::to_string(server.Port()));

    const std::ptrdiff_t descriptors = OpenDescriptors();
    long afterFirstGroup = 0;
    long highest = 0;
    std::mt19937 random(5);
    int stopBehind = 0; // this many items
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [&] {
        if (afterFirstGroup == 0 && Reached().first > 1)
            afterFirstGroup = ResidentKilobytes();
        else if (afterFirstGroup != 0)
            highest = std::max(highest, ResidentKilobytes());
        if (std::stoi(PanelText("StatusBar1", 2).substr(7)) >= stopBehind)
            Click("cmdStop");
    });
    user.start(5);

    // An article at which a search was stopped counts as read, whether it was stored or not.
    std::set<std::string> brokenOff;
    int runs = 0;
    for (; Reached() != std::pair(groups.size(), articlesInGroup); ++runs) {
        ASSERT_LT(runs, 3 * count + 20) << "the searches do not get on";
        // The first one is let run into the second group.
        stopBehind = runs == 0 ? articlesInGroup + 100 : 50 + static_cast<int>(random() % (2 * articlesInGroup));
        program->MainWindow().StatusBar1.Panels(2).SetText("Items: 0"); // the user does not go by the last search's
        Click("cmdFindNow");
        if (const auto [group, article] = Reached(); group != 0)
            brokenOff.insert(groups[group - 1] + "/" + Name(groups[group - 1], article));
    }
    user.stop();

    EXPECT_LE(OpenDescriptors(), descriptors + 1); // the connection stays
    const double growth = static_cast<double>(highest - afterFirstGroup) / static_cast<double>(afterFirstGroup);
    std::printf("%d searches over %d articles; resident after the first group %ld KB, at most %ld KB (%+.1f %%)\n",
        runs, count * articlesInGroup, afterFirstGroup, highest, 100 * growth);
#ifndef __SANITIZE_ADDRESS__ // which keeps what is freed for a while
    EXPECT_GT(highest, 0);
    EXPECT_LT(growth, 0.05);
#endif

    std::set<std::string> stored;
    for (const std::string& file : FilesBelow(destination))
        stored.insert(file);
    for (const std::string& group : groups) {
        // A search of a new group begins behind its first article.
        for (int number = 2; number <= articlesInGroup; ++number) {
            const std::string name = Name(group, number);
            const std::string file = group + "/" + name;
            if (stored.erase(file) != 0)
                EXPECT_TRUE(ContentOf(destination + file) == Attachment(name, number)) << file;
            else
                EXPECT_TRUE(brokenOff.contains(file)) << file << " is missing";
        }
    }
    EXPECT_THAT(stored, testing::IsEmpty());
    for (const TestDesktop::Box& box : desktop.boxes)
        ADD_FAILURE() << box.title << ": " << box.text;
}
