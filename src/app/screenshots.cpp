#include "app/screenshots.h"

#include "app/dialog.h"
#include "app/language.h"

#include <QDir>
#include <QPixmap>
#include <QTabWidget>

namespace {

/// The tab widget on `page`, or none where the page holds controls.
QTabWidget *innerTabs(const QWidget *page)
{
    return page->findChild<QTabWidget *>(QString(), Qt::FindDirectChildrenOnly);
}

/// Shows each page of `tabs`, and of the tab widgets inside it, and saves the window.
bool savePages(Dialog &dialog, QTabWidget *tabs, const QDir &folder, const QString &suffix)
{
    bool saved = true;
    for (int i = 0; i < tabs->count(); ++i) {
        tabs->setCurrentIndex(i);
        if (QTabWidget *inner = innerTabs(tabs->currentWidget()))
            saved = savePages(dialog, inner, folder, suffix) && saved;
        else
            saved = dialog.grab().save(
                        folder.filePath(tabs->currentWidget()->objectName() + suffix + ".png")) &&
                    saved;
    }
    return saved;
}

} // namespace

bool saveScreenshots(Dialog &dialog, const QDir &folder)
{
    if (!folder.mkpath("."))
        return false;
    const QString before = dialog.language();
    auto *tabs = dialog.findChild<QTabWidget *>("tabWidget");
    bool saved = true;
    for (const auto &[language, suffix] : {std::pair(Language::chinese, QString("-zh")),
                                           std::pair(Language::english, QString("-en"))}) {
        dialog.selectLanguage(language);
        saved = savePages(dialog, tabs, folder, suffix) && saved;
    }
    if (!before.isEmpty())
        dialog.applyLanguage(before);
    return saved;
}
