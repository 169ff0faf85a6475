#pragma once

#include <QString>
#include <QTranslator>
#include <QVector>

class QWidget;
class ToolSettings;

/// A caption that the user can edit in the settings file: its key there, the default texts, and the
/// widgets that it dresses.
struct Caption
{
    const char *key;
    const char *chinese;
    const char *english;
    /// Object name of the dressed widget where it is not the key; "name,name" for two.
    const char *widgets = nullptr;

    QStringList widgetNames() const;
};

/// All captions, in the order in which they are written.
const QVector<Caption> &captions();

/// The language of the window: which texts its widgets and its messages have.
class Language
{
public:
    static const QString chinese; ///< the text that chooses Chinese; any other one means English
    static const QString english;

    /// Dresses the widgets below `window` with what `settings` has for them.
    Language(QWidget &window, ToolSettings &settings) : m_window(window), m_settings(settings) {}

    /// The flag that all messages are chosen by. English until a language is applied: that is what
    /// the captions are built with.
    const bool &isEnglish() const { return m_isEnglish; }
    /// The text that was applied last; empty before.
    const QString &applied() const { return m_applied; }

    /// Applies the stored language. Without one it writes "English" and all default texts, and
    /// leaves the widgets as they were built.
    void load();

    /// Gives every widget its text from the settings, an empty one where the key is missing, and
    /// stores `language`. Where the settings have no text of it at all, the defaults are written
    /// first.
    void apply(const QString &language);

private:
    /// Gives every widget its text, and the messages and Qt's own dialogs the language.
    void dressAll(const QString &language);
    /// Gives Qt's own dialogs the language too, where its texts are installed.
    void translateQt();

    QWidget &m_window;
    ToolSettings &m_settings;
    bool m_isEnglish = true;
    QString m_applied;
    QTranslator m_qtTexts;
};
