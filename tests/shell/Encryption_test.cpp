#include "tests/shell/ProgramTest.h"

#include "demo/sample/Encoders.h"
#include "tests/support/FaultProxy.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <openssl/ssl.h>

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string ToolTip() { return Find<QLabel>("StatusBar1.Panels(1)").toolTip().toStdString(); }

// The text stands behind the padlock.
bool HasPadlock() { return Find<QLabel>("StatusBar1.Panels(1)").indent() > 10; }

QMessageBox* Question()
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* box = qobject_cast<QMessageBox*>(window); box != nullptr && box->isVisible())
            return box;
    }
    return nullptr;
}

// A server whose certificate an authority has issued that only this process trusts, or somebody else.
class EncryptionTest : public ProgramTest {
protected:
    EncryptionTest()
    {
        MakeFile(folder.File("authority.pem"), authority.Certificate());
        settings.SaveSetting("Startup", "16", "0");
    }

    std::string Serve(const Identity::Wishes& wishes)
    {
        const auto identity = std::make_shared<Identity>(wishes);
        server.emplace(SampleGroups{GroupOf("alt.kites", 1, {Uuencode("red", "red.jpg")})},
            SampleServer::Options{.identity = identity});
        StartOn(server->SecurePort());
        return identity->Fingerprint();
    }

    void StartOn(std::uint16_t port)
    {
        Forget();
        Start({"alt.kites"}, port);
        Socket& TCP1 = program->MainWindow().TCP1;
        TCP1.SecurePorts = {port};
        TCP1.AuthoritiesFile = folder.File("authority.pem");
    }

    // Presses Find Now, on a new connection, with that answer to whatever is asked.
    void SearchAnswering(MessageAnswer answer)
    {
        program->MainWindow().cboNewsServer.Click(); // ends the session
        desktop.boxes.clear();
        desktop.answers = {answer};
        Search();
        desktop.answers.clear();
    }

    // Presses Find Now, and as soon as something is so, does what ends the search at once.
    void SearchAndWhen(const std::function<bool()>& is, const std::function<void()>& act)
    {
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, [&] {
            if (!is())
                return;
            watch.stop();
            act();
        });
        watch.start(1ms);
        desktop.boxes.clear();
        Search();
        EXPECT_FALSE(watch.isActive());
    }

    std::string Kept() const { return Settings(places.settingsFile).GetSetting("Certificates", serverName); }

    const Identity authority{{.names = {"DNS:Kite Authority"}, .isAuthority = true}};
    std::optional<SampleServer> server;
};

}

TEST_F(EncryptionTest, AsksAboutACertificateThatTheSystemDoesNotTrust)
{
    const Identity middle({.names = {"DNS:Middle"}, .issuer = &authority, .isAuthority = true});
    const std::vector<std::string> own{"IP:" + serverName};
    struct Row {
        Identity::Wishes wishes;
        const char *madeFor, *signedBy, *sentence;
    };
    const Row rows[] = {{{.names = own}, "127.0.0.1", "127.0.0.1", "It was signed by nobody but its owner."},
        {{.names = {"DNS:news.example.com"}, .issuer = &authority}, "news.example.com", "Kite Authority",
            "It was made for another server."},
        {{.names = own, .validFrom = -9, .validUntil = -2, .issuer = &authority}, "127.0.0.1", "Kite Authority",
            "It has expired."},
        {{.names = own, .validFrom = 2, .issuer = &authority}, "127.0.0.1", "Kite Authority",
            "It is not valid yet; or the clock of this computer is wrong."},
        {{.names = own, .issuer = &middle}, "127.0.0.1", "Middle",
            "It was signed by somebody whom this computer does not know."}};
    const auto day = [](int days) {
        return QDateTime::currentDateTimeUtc().addDays(days).date().toString(Qt::ISODate).toStdString();
    };
    std::string before;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sentence);
        const std::string fingerprint = Serve(row.wishes);
        SearchAnswering(MessageAnswer::No);
        ASSERT_THAT(desktop.BoxTitles(), ElementsAre("Connection Security", "Connection Error"));
        const std::string text = desktop.boxes.front().text;
        EXPECT_EQ(
            text.starts_with("The certificate of 127.0.0.1 has changed since you trusted it.\r\n"), !before.empty());
        for (const Row& other : rows)
            EXPECT_EQ(text.find(other.sentence) != text.npos, &other == &row);
        EXPECT_THAT(text,
            HasSubstr(std::string("\r\nMade for: ") + row.madeFor + "\r\nSigned by: " + row.signedBy + "\r\nValid: "
                + day(row.wishes.validFrom) + " to " + day(row.wishes.validUntil) + "\r\nSHA-256 fingerprint:\r\n"
                + fingerprint.substr(0, 48) + "\r\n" + fingerprint.substr(48) + "\r\n"));
        EXPECT_EQ(ToolTip(), "The certificate was not accepted.");
        EXPECT_THAT(server->Log(), IsEmpty());
        EXPECT_EQ(Kept(), before);

        SearchAnswering(MessageAnswer::Yes);
        EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Connection Security"));
        EXPECT_EQ(Kept(), before = fingerprint);
        EXPECT_TRUE(HasPadlock());
        EXPECT_EQ(ToolTip(), std::string("Encrypted with TLS 1.3, certificate of ") + row.madeFor);
        EXPECT_EQ(ContentOf(destination + "red.jpg"), "red");
        SearchAnswering(MessageAnswer::No);
        EXPECT_THAT(desktop.boxes, IsEmpty());
    }
    Click("cmdDeleteServer");
    EXPECT_EQ(Kept(), "");
    EXPECT_FALSE(HasPadlock());
}

// The box that the user sees, for as long as it is wanted.
TEST_F(EncryptionTest, TheQuestionGoesWithWhatItIsAbout)
{
    const std::string fingerprint = Serve({});
    desktop.showsQuestions = true;
    const auto isUp = [] { return Question() != nullptr; };

    SearchAndWhen(isUp, [] {
        EXPECT_EQ(Question()->windowTitle(), "Connection Security");
        EXPECT_EQ(Question()->defaultButton(), Question()->button(QMessageBox::No));
        QTest::keyClick(Question(), Qt::Key_Y); // typed into another window, when this one came up
        EXPECT_TRUE(Question() != nullptr && Question()->isVisible());
        QTest::keyClick(Question(), Qt::Key_Escape);
    });
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Connection Error"));
    EXPECT_EQ(Kept(), "");

    // Whatever the user can press while the program connects can be pressed now.
    SearchAndWhen(isUp, [] { Click("cmdStop"); });
    SearchAndWhen(isUp, [] {
        WindowNamed("frmTamarack")->close();
        Click("cmdStop"); // the process would be over by now
    });
    EXPECT_TRUE(desktop.programEnds == 1 && Question() == nullptr);
    StartOn(server->SecurePort());
    SearchAndWhen(isUp, [] { QTest::mouseClick(Question()->button(QMessageBox::Yes), Qt::LeftButton); });
    EXPECT_EQ(ContentOf(destination + "red.jpg"), "red");
    EXPECT_EQ(Kept(), fingerprint);

    // A server that hangs up while the user thinks: what they have said holds for the next attempt.
    const std::string other = Serve({});
    SearchAndWhen(isUp, [this] {
        server.reset();
        EXPECT_FALSE(Until([] { return false; }, 100ms));
        QTest::mouseClick(Question()->button(QMessageBox::Yes), Qt::LeftButton);
    });
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Connection Error"));
    EXPECT_EQ(Kept(), other);
}

// What is no encrypted connection ends as one that could not be made, at once or, where nothing is said, at a stop.
TEST_F(EncryptionTest, WhatCannotBeAccepted)
{
    Serve({.issuer = &authority});
    SampleServer old({}, {.identity = std::make_shared<Identity>(), .protocol = TLS1_1_VERSION});
    FaultProxy spoilt(server->SecurePort());
    using enum FaultProxy::Fault::Kind;
    struct Row {
        const char* what;
        std::uint16_t port;
        FaultProxy::Fault fault;
        const char* reason; // a part of it
    };
    for (const Row& row : {Row{"TLS 1.1", old.SecurePort(), {}, "protocol version"},
             Row{"a plain server", server->Port(), {}, "wrong version number"},
             Row{"garbage", spoilt.Port(), {Insert}, "wrong"}, Row{"hangs up", spoilt.Port(), {Close}, "closed"},
             Row{"breaks off", spoilt.Port(), {Reset}, "closed"}, Row{"says nothing", spoilt.Port(), {Stall}, ""},
             Row{"garbage in the middle", spoilt.Port(), {Insert, 200}, ""},
             Row{"hangs up in the middle", spoilt.Port(), {Close, 300}, "closed"},
             Row{"breaks off in the middle", spoilt.Port(), {Reset, 400}, "closed"},
             Row{"says no more", spoilt.Port(), {Stall, 500}, ""}}) {
        SCOPED_TRACE(row.what);
        spoilt.SetFault(row.fault);
        StartOn(row.port);
        const bool waits = row.fault.kind == Stall;
        if (waits)
            SearchAndWhen([&] { return spoilt.HasStruck(); }, [] { Click("cmdStop"); });
        else
            Search();
        EXPECT_TRUE(Until([&] { return spoilt.HasStruck() == (row.fault.kind != None); }));
        EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Connection Error"));
        EXPECT_EQ(PanelText("StatusBar1", 1), "Status: Error");
        EXPECT_FALSE(HasPadlock());
        EXPECT_THAT(ToolTip(), HasSubstr(waits ? frmTamarack::connectionToolTip : row.reason));
        EXPECT_EQ(server->CommandCount("group"), 0U);
    }
    // What comes in two pieces is accepted, by a user who is not asked.
    spoilt.SetFault({Split, 500});
    StartOn(spoilt.Port());
    Search();
    EXPECT_TRUE(spoilt.HasStruck() && HasPadlock());
    EXPECT_THAT(desktop.boxes, IsEmpty());
    EXPECT_EQ(Kept(), "");
    EXPECT_EQ(ContentOf(destination + "red.jpg"), "red");

    // The same server without encryption.
    TypeInto("txtPort", std::to_string(server->Port()));
    program->MainWindow().cboNewsServer.Click();
    EXPECT_EQ(ToolTip(), frmTamarack::connectionToolTip);
    Search();
    EXPECT_FALSE(HasPadlock());
    EXPECT_EQ(ToolTip(), "Not encrypted");
}
