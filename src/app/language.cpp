#include "app/language.h"

#include "common/tool_settings.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QGroupBox>
#include <QHash>
#include <QLabel>
#include <QLibraryInfo>
#include <QTabWidget>
#include <QTextBrowser>

const QString Language::chinese = QStringLiteral("中文");
const QString Language::english = QStringLiteral("English");

namespace {

const QString languageKey = QStringLiteral("Language/Language");
const QString chineseGroup = QStringLiteral("Chinese");
const QString englishGroup = QStringLiteral("English");

/// The tab widget on which `page` is a page, if it is one.
QTabWidget *tabsOf(QWidget *page)
{
    QWidget *stack = page->parentWidget();
    auto *tabs = stack ? qobject_cast<QTabWidget *>(stack->parentWidget()) : nullptr;
    return tabs && tabs->indexOf(page) >= 0 ? tabs : nullptr;
}

void dress(QWidget *widget, const QString &text)
{
    if (QTabWidget *tabs = tabsOf(widget))
        tabs->setTabText(tabs->indexOf(widget), text);
    else if (auto *group = qobject_cast<QGroupBox *>(widget))
        group->setTitle(text);
    else if (auto *label = qobject_cast<QLabel *>(widget))
        label->setText(text);
    else if (auto *button = qobject_cast<QAbstractButton *>(widget))
        button->setText(text);
    else if (auto *browser = qobject_cast<QTextBrowser *>(widget))
        browser->setPlainText(text);
}

QVector<iniText::Entry> defaultsOf(const QString &group)
{
    QVector<iniText::Entry> defaults;
    for (const Caption &caption : captions())
        defaults.append(
            {group + '/' + caption.key,
             {QString::fromUtf8(group == chineseGroup ? caption.chinese : caption.english)}});
    return defaults;
}

} // namespace

QStringList Caption::widgetNames() const
{
    return QString::fromLatin1(widgets ? widgets : key).split(',');
}

void Language::load()
{
    const QString stored = m_settings.text(languageKey);
    if (stored.isEmpty())
        m_settings.set(QVector<iniText::Entry>{{languageKey, {english}}} +
                       defaultsOf(chineseGroup) + defaultsOf(englishGroup));
    else
        dressAll(stored);
}

void Language::apply(const QString &language)
{
    m_settings.refresh();
    dressAll(language);
    m_settings.set({{languageKey, {language}}});
}

void Language::dressAll(const QString &language)
{
    m_isEnglish = language != chinese;
    m_applied = language;
    QHash<QString, QWidget *> widgets;
    for (auto *widget : m_window.findChildren<QWidget *>())
        widgets.insert(widget->objectName(), widget);
    const QString &group = m_isEnglish ? englishGroup : chineseGroup;
    // The file may have been deleted meanwhile. A single missing key is the user's choice. Most
    // files have the first one, which is found sooner than all groups are listed.
    const QString firstKey = group + '/' + captions().first().key;
    if (m_settings.text(firstKey).isEmpty() && !m_settings.hasGroup(group))
        m_settings.set(defaultsOf(group));
    for (const Caption &caption : captions()) {
        const QString text = m_settings.caption(group + '/' + caption.key);
        for (const QString &name : caption.widgetNames())
            if (QWidget *widget = widgets.value(name))
                dress(widget, text);
    }
    translateQt();
}

void Language::translateQt()
{
    QCoreApplication::removeTranslator(&m_qtTexts);
    if (!m_isEnglish &&
        m_qtTexts.load("qtbase_zh_CN", QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&m_qtTexts);
}
