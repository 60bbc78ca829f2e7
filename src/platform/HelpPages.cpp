#include "platform/HelpPages.h"

#include "platform/DisplayText.h"

#include <QFile>
#include <QHelpContentWidget>
#include <QHelpEngine>
#include <QHelpLink>
#include <QSplitter>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QTextDocument>

namespace {

// Links lead to other pages of the help file and nowhere else.
class PageBrowser : public QTextBrowser {
public:
    explicit PageBrowser(QWidget* parent)
        : QTextBrowser(parent)
    {
    }

    QHelpEngineCore* engine = nullptr;

protected:
    QVariant loadResource(int, const QUrl& url) override
    {
        return engine != nullptr ? engine->fileData(engine->findFile(url)) : QVariant();
    }

    void doSetSource(const QUrl& url, QTextDocument::ResourceType type) override
    {
        if (engine != nullptr && engine->findFile(url).isValid())
            QTextBrowser::doSetSource(url, type);
    }
};

}

// The engine keeps what it knows of a help file in a file of its own, which nobody needs a second time.
struct HelpPages::Parts {
    explicit Parts(QWidget* splitter)
        : browser(new PageBrowser(splitter))
    {
        browser->setObjectName(QStringLiteral("page"));
        browser->setAccessibleName(QStringLiteral("Help page"));
        // The usual blue of links cannot be read on a dark ground.
        const QPalette palette = browser->palette();
        if (palette.color(QPalette::Base).lightness() < 128)
            browser->document()->setDefaultStyleSheet(
                QStringLiteral("a { color: %1 }").arg(palette.color(QPalette::Highlight).lighter(150).name()));
    }
    ~Parts() { Close(); }

    void Close()
    {
        browser->engine = nullptr;
        delete contents;
        contents = nullptr;
        engine.reset();
        folder.reset();
    }

    // In the table of contents.
    void MarkPage(const QUrl& page) { contents->setCurrentIndex(contents->indexOf(page)); }

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<QHelpEngine> engine;
    QString space;
    QHelpContentWidget* contents = nullptr;
    PageBrowser* browser;
};

HelpPages::HelpPages(Container& container, std::string_view name, const Place& place)
    : Control(container, new QSplitter, name, place)
    , parts(std::make_unique<Parts>(widget))
{
    QObject::connect(parts->browser, &QTextBrowser::sourceChanged, widget, [this](const QUrl& page) {
        parts->MarkPage(page);
        Raise(PageChange);
    });
}

HelpPages::~HelpPages() = default;

bool HelpPages::Open(const std::string& helpFile)
{
    const QString file = QFile::decodeName(helpFile.c_str());
    const QString space = QHelpEngineCore::namespaceName(file);
    auto folder = std::make_unique<QTemporaryDir>();
    if (space.isEmpty() || !folder->isValid())
        return false;
    auto engine = std::make_unique<QHelpEngine>(folder->filePath(QStringLiteral("known.qhc")));
    engine->setReadOnly(false);
    if (!engine->setupData() || !engine->registerDocumentation(file))
        return false;
    parts->Close();
    parts->space = space;
    parts->browser->engine = engine.get();
    parts->contents = engine->contentWidget();
    parts->contents->setObjectName(QStringLiteral("contents"));
    parts->contents->setAccessibleName(QStringLiteral("Contents"));
    parts->contents->setHeaderHidden(true);
    auto* splitter = static_cast<QSplitter*>(widget);
    splitter->insertWidget(0, parts->contents);
    splitter->setSizes({splitter->width() * 2 / 5, splitter->width() * 3 / 5});
    QObject::connect(parts->contents, &QHelpContentWidget::linkActivated, parts->browser,
        [browser = parts->browser](const QUrl& url) { browser->setSource(url); });
    QObject::connect(parts->contents, &QHelpContentWidget::clicked, parts->browser,
        [browser = parts->browser, model = engine->contentModel()](const QModelIndex& index) {
            if (const QHelpContentItem* item = model->contentItemAt(index))
                browser->setSource(item->url());
        });
    QObject::connect(engine->contentModel(), &QHelpContentModel::contentsCreated, parts->contents, [this] {
        parts->contents->expandAll();
        parts->MarkPage(parts->browser->source());
    });
    engine->contentModel()->createContents(QString());
    parts->engine = std::move(engine);
    parts->folder = std::move(folder);
    return true;
}

void HelpPages::Close() { parts->Close(); }

bool HelpPages::ShowTopic(int number)
{
    const QList<QHelpLink> found = parts->engine->documentsForIdentifier(QString::number(number));
    if (found.isEmpty())
        return false;
    parts->browser->setSource(found.front().url);
    return true;
}

void HelpPages::ShowContents()
{
    parts->browser->setSource(QUrl(QStringLiteral("qthelp://%1/help/index.html").arg(parts->space)));
}

void HelpPages::GoBack() { parts->browser->backward(); }

std::vector<HelpPages::Page> HelpPages::Search(std::string_view text) const
{
    std::vector<Page> pages;
    for (const QUrl& url : parts->engine->files(parts->space, QString(), QStringLiteral("html"))) {
        QTextDocument page;
        page.setHtml(QString::fromUtf8(parts->engine->fileData(url)));
        if (page.toPlainText().contains(ToDisplay(text), Qt::CaseInsensitive))
            pages.push_back(
                {FromDisplay(page.metaInformation(QTextDocument::DocumentTitle)), url.toString().toStdString()});
    }
    return pages;
}

void HelpPages::Show(const Page& page) { parts->browser->setSource(QUrl(QString::fromStdString(page.address))); }
