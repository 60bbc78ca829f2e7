#include "tests/shell/ProgramTest.h"

#include "demo/sample/Encoders.h"
#include "tests/support/FaultProxy.h"

#include <QElapsedTimer>
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
        SampleServer::Options options;
        const auto identity = std::make_shared<Identity>(wishes);
        options.identity = identity;
        server.emplace(SampleGroups{GroupOf("alt.kites", 1, {Uuencode("red", "red.jpg")})}, options);
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
        QElapsedTimer since;
        QObject::connect(&watch, &QTimer::timeout, &watch, [&] {
            if (is()) {
                watch.stop();
                since.start();
                act();
            }
        });
        watch.start(1ms);
        desktop.boxes.clear();
        Search();
        EXPECT_TRUE(since.isValid() && since.elapsed() < 1000);
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
        const char* what;
        Identity::Wishes wishes;
        const char* sentence;
    };
    const char* const stranger = "It was signed by somebody whom this computer does not know.";
    const Row rows[] = {Row{"self-signed", {.names = own}, "It was signed by nobody but its owner."},
        Row{"other name", {.names = {"DNS:news.example.com"}, .issuer = &authority}, "It was made for another server."},
        Row{"expired", {.names = own, .validFrom = -9, .validUntil = -2, .issuer = &authority}, "It has expired."},
        Row{"not yet valid", {.names = own, .validFrom = 2, .issuer = &authority},
            "It is not valid yet; or the clock of this computer is wrong."},
        Row{"without the middle of its chain", {.names = own, .issuer = &middle}, stranger}};
    std::string before;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const std::string fingerprint = Serve(row.wishes);
        desktop.whileBoxIsUp = [this](const TestDesktop::Box&) {
            EXPECT_THAT(server->Log(), IsEmpty());
            EXPECT_FALSE(HasPadlock());
        };
        SearchAnswering(MessageAnswer::No);
        ASSERT_THAT(desktop.BoxTitles(), ElementsAre("Connection Security", "Connection Error"));
        const std::string text = desktop.boxes.front().text;
        EXPECT_EQ(
            text.starts_with("The certificate of 127.0.0.1 has changed since you trusted it.\r\n"), !before.empty());
        for (const Row& other : rows)
            EXPECT_EQ(text.find(other.sentence) != text.npos, std::string(row.sentence) == other.sentence);
        const std::string name = row.wishes.names.front().substr(row.wishes.names.front().find(':') + 1);
        const std::string issuer = row.wishes.issuer == nullptr ? name
            : row.wishes.issuer == &middle                      ? "Middle"
                                                                : "Kite Authority";
        const auto day = [](int days) {
            return QDateTime::currentDateTimeUtc().addDays(days).date().toString(Qt::ISODate).toStdString();
        };
        EXPECT_THAT(text,
            HasSubstr("\r\nMade for: " + name + "\r\nSigned by: " + issuer + "\r\nValid: " + day(row.wishes.validFrom)
                + " to " + day(row.wishes.validUntil) + "\r\nSHA-256 fingerprint:\r\n" + fingerprint.substr(0, 48)
                + "\r\n" + fingerprint.substr(48) + "\r\n"));
        EXPECT_EQ(PanelText("StatusBar1", 1), "Status: Error");
        EXPECT_EQ(ToolTip(), "The certificate was not accepted.");
        EXPECT_THAT(server->Log(), IsEmpty());
        EXPECT_EQ(Kept(), before);

        SearchAnswering(MessageAnswer::Yes);
        EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Connection Security"));
        EXPECT_EQ(Kept(), before = fingerprint);
        EXPECT_TRUE(HasPadlock());
        EXPECT_EQ(ToolTip(), "Encrypted with TLS 1.3, certificate of " + name);
        EXPECT_EQ(ContentOf(destination + "red.jpg"), "red");
        SearchAnswering(MessageAnswer::No);
        EXPECT_THAT(desktop.boxes, IsEmpty());
    }
    desktop.whileBoxIsUp = nullptr;
    Click("cmdDeleteServer");
    EXPECT_EQ(Kept(), "");
    EXPECT_FALSE(HasPadlock());
}

TEST_F(EncryptionTest, NobodyNoticesACertificateThatTheSystemTrusts)
{
    Serve({.issuer = &authority});
    std::vector<std::string> log;
    program->MainWindow().TCP1.StateChanged = [shown = program->MainWindow().TCP1.StateChanged, &log] {
        shown();
        log.push_back(PanelText("StatusBar1", 1));
    };
    Search();
    EXPECT_THAT(desktop.boxes, IsEmpty());
    EXPECT_EQ(Kept(), "");
    EXPECT_THAT(
        log, ElementsAre("Status: Resolving Host", "Status: Host Resolved", "Status: Connecting", "Status: Connected"));
    EXPECT_TRUE(HasPadlock());
    EXPECT_EQ(ContentOf(destination + "red.jpg"), "red");

    // The same server without encryption.
    TypeInto("txtPort", std::to_string(server->Port()));
    program->MainWindow().cboNewsServer.Click();
    EXPECT_FALSE(HasPadlock());
    EXPECT_EQ(ToolTip(), frmTamarack::connectionToolTip);
    Search();
    EXPECT_FALSE(HasPadlock());
    EXPECT_EQ(ToolTip(), "Not encrypted");
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
    EXPECT_EQ(Question(), nullptr);
    SearchAndWhen(isUp, [] {
        WindowNamed("frmTamarack")->close();
        Click("cmdStop"); // the process would be over by now
    });
    EXPECT_EQ(desktop.programEnds, 1);
    EXPECT_EQ(Question(), nullptr);
    StartOn(server->SecurePort());
    SearchAndWhen(isUp, [] { QTest::mouseClick(Question()->button(QMessageBox::Yes), Qt::LeftButton); });
    EXPECT_EQ(ContentOf(destination + "red.jpg"), "red");
    EXPECT_EQ(Kept(), fingerprint);

    // A server that hangs up while the user thinks: what they have said holds for the next attempt.
    desktop.showsQuestions = false;
    const std::string other = Serve({});
    desktop.whileBoxIsUp = [this](const TestDesktop::Box&) {
        server.reset();
        EXPECT_FALSE(Until([] { return false; }, 100ms));
    };
    SearchAnswering(MessageAnswer::Yes);
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Connection Security", "Connection Error"));
    EXPECT_EQ(Kept(), other);
    desktop.whileBoxIsUp = nullptr;
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
             Row{"breaks off", spoilt.Port(), {Reset}, "closed"}, Row{"says nothing", spoilt.Port(), {Stall}, ""}}) {
        SCOPED_TRACE(row.what);
        spoilt.SetFault(row.fault);
        StartOn(row.port);
        const bool waits = row.fault.kind == Stall;
        if (waits)
            SearchAndWhen([&] { return spoilt.HasStruck(); }, [] { Click("cmdStop"); });
        else
            Search();
        EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Connection Error"));
        EXPECT_EQ(PanelText("StatusBar1", 1), "Status: Error");
        EXPECT_FALSE(HasPadlock());
        EXPECT_THAT(ToolTip(), HasSubstr(waits ? frmTamarack::connectionToolTip : row.reason));
        if (!waits) {
            Click("cmdRefresh");
            EXPECT_EQ(PanelText("StatusBar1", 1), "Status: Error Connecting");
            EXPECT_THAT(ToolTip(), HasSubstr(row.reason));
        }
        EXPECT_EQ(server->CommandCount("group") + server->CommandCount("list"), 0U);
    }

    // An encrypted server on a port that is not.
    StartOn(server->SecurePort());
    program->MainWindow().TCP1.SecurePorts.clear();
    int passes = 0; // for a while
    const auto isConnected = [&] { return PanelText("StatusBar1", 1) == "Status: Connected" && ++passes > 20; };
    SearchAndWhen(isConnected, [] { Click("cmdStop"); });
    EXPECT_THAT(desktop.boxes, IsEmpty());
}

// The handshake, and what comes behind it. Of two handshakes with the same server one may be some bytes longer.
TEST_F(EncryptionTest, EveryTenthByteCutOffSplitOrSpoilt)
{
    using enum FaultProxy::Fault::Kind;
    Serve({.issuer = &authority});
    FaultProxy proxy(server->SecurePort());
    StartOn(proxy.Port());
    Search();
    const std::uint64_t bytes = proxy.BytesPassed() - 20;
    ASSERT_GT(bytes, 1000U);
    for (std::uint64_t at = 0; at < bytes && !HasFailure(); at += 10) {
        const FaultProxy::Fault::Kind kinds[] = {Close, Reset, Stall, Insert, Split};
        const FaultProxy::Fault::Kind kind = kinds[at / 10 % 5];
        SCOPED_TRACE("fault " + std::to_string(static_cast<int>(kind)) + " at " + std::to_string(at));
        proxy.SetFault({kind, at});
        int idle = 0;
        std::uint64_t seen = 0;
        QTimer user; // who stops it when nothing has come any more for a while
        QObject::connect(&user, &QTimer::timeout, [&] {
            idle = proxy.BytesPassed() == seen ? idle + 1 : 0;
            seen = proxy.BytesPassed();
            if (idle > (kind == Split ? 1000 : 10) && proxy.HasStruck())
                Click("cmdStop");
        });
        user.start(2ms);
        Forget();
        SearchAnswering(MessageAnswer::No);
        EXPECT_TRUE(proxy.HasStruck());
        const bool isClosed = PanelText("StatusBar1", 1) != "Status: Connected";
        EXPECT_TRUE(isClosed || kind != Insert);
        if (kind != Split) {
            user.stop();
            proxy.SetFault({});
            Forget();
            SearchAnswering(MessageAnswer::No);
        }
        EXPECT_THAT(desktop.boxes, IsEmpty());
        EXPECT_EQ(ContentOf(destination + "red.jpg"), "red");
    }
}
