#include "platform/HelpPages.h"

#include "platform/DisplayText.h"

#include <QFile>
#include <QKeyEvent>
#include <QListWidget>
#include <QSplitter>
#include <QTextBrowser>
#include <QTextDocument>

namespace {

class Contents : public QListWidget {
public:
    using QListWidget::QListWidget;

protected:
    // Enter opens a page, and goes no further: not to the window's button, too.
    void keyPressEvent(QKeyEvent* event) override
    {
        QListWidget::keyPressEvent(event);
        event->setAccepted(event->isAccepted() || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter);
    }
};

}

// Links lead to other pages of the help file and nowhere else.
class HelpPages::Browser : public QTextBrowser {
public:
    using QTextBrowser::QTextBrowser;

    int RowOf(const QUrl& address) const { return static_cast<int>(names.indexOf(address.fileName())); }
    void Show(int row, const QString& anchor = {}) { setSource(QUrl("help:/" + names.at(row) + anchor)); }

    // By the rows of the contents.
    QStringList names, pages, texts;

protected:
    // Empty for what is not in the file, but not null, with which the toolkit would look for it on the disk.
    QVariant loadResource(int, const QUrl& address) override { return pages.value(RowOf(address)); }

    void doSetSource(const QUrl& address, QTextDocument::ResourceType type) override
    {
        if (RowOf(address) >= 0)
            QTextBrowser::doSetSource(address, type);
    }
};

HelpPages::HelpPages(Container& container, std::string_view name, const Place& place)
    : Control(container, new QSplitter, name, place)
    , contents(new Contents(widget))
    , browser(new Browser(widget))
{
    contents->setObjectName(QStringLiteral("contents"));
    contents->setAccessibleName(QStringLiteral("Contents"));
    browser->setObjectName(QStringLiteral("page"));
    browser->setAccessibleName(QStringLiteral("Help page"));
    As<QSplitter>().setSizes({widget->width() * 2 / 5, widget->width() * 3 / 5});
    // The usual blue of links cannot be read on a dark ground.
    const QPalette palette = browser->palette();
    if (palette.color(QPalette::Base).lightness() < 128)
        browser->document()->setDefaultStyleSheet(
            QStringLiteral("a { color: %1 }").arg(palette.color(QPalette::Highlight).lighter(150).name()));
    const auto show = [this](const QListWidgetItem* item) { browser->Show(contents->row(item)); };
    QObject::connect(contents, &QListWidget::itemActivated, browser, show);
    QObject::connect(contents, &QListWidget::itemClicked, browser, show);
    QObject::connect(browser, &QTextBrowser::sourceChanged, contents, [this](const QUrl& address) {
        contents->setCurrentRow(browser->RowOf(address));
        Raise(PageChange);
    });
}

// A help file is its pages in the order of the contents, each behind a line with its name:
//
//     <!-- page first-search.html -->
//
// An element whose id is a "t" and a number is the topic of that number.
bool HelpPages::Open(const std::string& helpFile)
{
    QFile file(QFile::decodeName(helpFile.c_str()));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QString content = QString::fromUtf8(file.readAll());
    const QStringList parts = content.split(QStringLiteral("<!-- page "));
    if (!parts.front().isEmpty() || !content.endsWith(QStringLiteral("</html>\n")))
        return false;
    contents->clear();
    for (QStringList* list : {&browser->names, &browser->pages, &browser->texts})
        list->clear();
    for (const QString& part : parts.mid(1)) {
        browser->names += part.section(' ', 0, 0);
        browser->pages += part.section('\n', 1);
        QTextDocument document(browser);
        document.setHtml(browser->pages.back());
        browser->texts += document.toPlainText();
        contents->addItem(document.metaInformation(QTextDocument::DocumentTitle));
    }
    browser->reload();
    return true;
}

bool HelpPages::ShowTopic(int number)
{
    const QString id = QStringLiteral(" id=\"t%1\"").arg(number);
    for (int row = 0; row < contents->count(); ++row) {
        if (browser->pages.at(row).contains(id)) {
            // The topic of a whole page shows it from its edge.
            const bool isWhole = browser->pages.at(row).contains("<h1" + id);
            browser->Show(row, isWhole ? QString() : QStringLiteral("#t%1").arg(number));
            return true;
        }
    }
    return false;
}

void HelpPages::ShowContents() { browser->Show(0); }

void HelpPages::GoBack() { browser->backward(); }

std::vector<std::string> HelpPages::Search(std::string_view text) const
{
    std::vector<std::string> titles;
    for (int row = 0; row < contents->count(); ++row) {
        if (browser->texts.at(row).contains(ToDisplay(text), Qt::CaseInsensitive))
            titles.push_back(FromDisplay(contents->item(row)->text()));
    }
    return titles;
}

void HelpPages::Show(std::string_view title)
{
    for (const QListWidgetItem* item : contents->findItems(ToDisplay(title), Qt::MatchExactly))
        browser->Show(contents->row(item));
}
