#include "app/dialog.h"
#include "app/screenshots.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QtTest>

namespace {

QList<QWidget *> controlsOf(const QWidget *parent)
{
    QList<QWidget *> controls;
    for (auto *child : parent->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly))
        if (!child->objectName().startsWith("qt_") && !child->isHidden())
            controls.append(child);
    return controls;
}

/// How wide `widget` must be to show its caption; 0 for widgets without one.
int captionWidth(QWidget *widget)
{
    const auto *label = qobject_cast<QLabel *>(widget);
    if (label)
        return label->text().isEmpty() || label->wordWrap() ? 0 : label->sizeHint().width();
    if (qobject_cast<QAbstractButton *>(widget) || qobject_cast<QComboBox *>(widget))
        return widget->minimumSizeHint().width();
    if (const auto *spin = qobject_cast<QSpinBox *>(widget)) {
        constexpr int arrows = 24;
        return arrows +
               spin->fontMetrics().horizontalAdvance(
                   spin->prefix() + QString::number(spin->maximum(), spin->displayIntegerBase()) +
                   spin->suffix());
    }
    if (const auto *group = qobject_cast<QGroupBox *>(widget))
        return group->fontMetrics().horizontalAdvance(group->title());
    return 0;
}

} // namespace

/// What a person would complain about at a glance, in both languages.
class TestLayout : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QFile::remove(QCoreApplication::applicationDirPath() + "/SystemConfig.ini");
        QApplication::setStyle("Fusion");
    }

    void nothingIsClippedOverlapsOrLeavesItsParent()
    {
        for (const char *language : {"English", "中文"}) {
            const auto dialog = dialogIn(language);
            QStringList complaints;
            int pages = 0;
            for (auto *tabs : dialog->findChildren<QTabWidget *>()) {
                for (int i = 0; i < tabs->count(); ++i) {
                    tabs->setCurrentIndex(i);
                    if (tabs->widget(i)->findChild<QTabWidget *>())
                        continue;
                    ++pages;
                    check(tabs->widget(i), complaints);
                    // The serial assistant has a layout for each command kind.
                    if (auto *kinds = tabs->widget(i)->findChild<QComboBox *>("serialCmd"))
                        for (int kind = 1; kind < kinds->count(); ++kind) {
                            kinds->setCurrentIndex(kind);
                            check(tabs->widget(i), complaints);
                        }
                }
            }
            QCOMPARE(pages, 10);
            QVERIFY2(complaints.isEmpty(), qPrintable(complaints.join('\n')));
        }
    }

    void allTabsAreSeenAtOnce()
    {
        for (const char *language : {"English", "中文"}) {
            const auto dialog = dialogIn(language);
            auto *outer = dialog->findChild<QTabWidget *>("tabWidget");
            for (const auto *tabs : dialog->findChildren<QTabWidget *>()) {
                // Only the current page has its size.
                for (int i = 0; i < outer->count(); ++i)
                    if (outer->widget(i)->isAncestorOf(tabs))
                        outer->setCurrentIndex(i);
                const QTabBar *bar = tabs->tabBar();
                QVERIFY2(bar->tabRect(bar->count() - 1).right() < tabs->width() &&
                             tabs->geometry().right() <= tabs->parentWidget()->width(),
                         qPrintable(tabs->objectName()));
            }
        }
    }

    void screenshotsShowEveryPageInBothLanguages()
    {
        const auto dialog = dialogIn("中文");
        const QTemporaryDir folder;
        QVERIFY(saveScreenshots(*dialog, folder.filePath("new")));
        const QDir pictures(folder.filePath("new"));
        QCOMPARE(pictures.entryList({"*-en.png"}, QDir::Files).size(), 10);
        QCOMPARE(pictures.entryList({"*-zh.png"}, QDir::Files).size(), 10);
        QVERIFY(QImage(pictures.filePath("tab_9-en.png")) !=
                QImage(pictures.filePath("tab_9-zh.png")));
        QCOMPARE(dialog->language(), QString("中文"));
        QVERIFY(!saveScreenshots(*dialog, QDir("/proc/no/such/folder")));
    }

private:
    void check(QWidget *page, QStringList &complaints) const
    {
        const QList<QWidget *> controls = controlsOf(page);
        for (int i = 0; i < controls.size(); ++i) {
            QWidget *control = controls.at(i);
            const auto complain = [&](const QString &text) {
                complaints.append(page->objectName() + '/' + control->objectName() + ' ' + text);
            };
            if (!page->rect().contains(control->geometry()))
                complain("leaves its parent");
            if (captionWidth(control) > control->width())
                complain(QString("needs %1 pixels").arg(captionWidth(control)));
            if (const auto *table = qobject_cast<QTableWidget *>(control))
                for (int c = 0; c < table->columnCount(); ++c)
                    if (table->horizontalHeaderItem(c) &&
                        table->horizontalHeader()->fontMetrics().horizontalAdvance(
                            table->horizontalHeaderItem(c)->text()) > table->columnWidth(c))
                        complain(QString("clips the header of column %1").arg(c));
            if (auto *browser = qobject_cast<QTextBrowser *>(control))
                if (browser->verticalScrollBar()->maximum() > 0)
                    complain("scrolls");
            for (const QWidget *other : controls.mid(i + 1))
                if (control->geometry().intersects(other->geometry()))
                    complain("overlaps " + other->objectName());
            if (qobject_cast<QGroupBox *>(control))
                check(control, complaints);
        }
    }

    std::unique_ptr<Dialog> dialogIn(const QString &language) const
    {
        auto dialog = std::make_unique<Dialog>();
        dialog->selectLanguage(language);
        dialog->show();
        return dialog;
    }
};

QTEST_MAIN(TestLayout)
#include "tst_layout.moc"
