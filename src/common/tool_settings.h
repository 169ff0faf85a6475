#pragma once

#include "common/ini_text.h"

#include <QSettings>
#include <QString>
#include <QStringList>

#include <optional>

/// The tool's own settings: an INI file, UTF-8, kept for the life of the window. A missing or
/// unreadable file is a file without keys. Every change is written at once, and whole or not at
/// all; one that cannot be written holds until the window is closed.
class ToolSettings
{
public:
    /// Reads the start folders from `file`. Where there is no such file yet, that of `prepared` is
    /// its first content; where none can be made, `prepared` is read all the same.
    explicit ToolSettings(const QString &file, const QString &prepared = QString());

    // Where file dialogs start: a folder or a path in it; empty before the first choice.
    const QString &icoFolder() const { return m_icoFolder; }
    const QString &fontFolder() const { return m_fontFolder; }
    const QString &imageFolder() const { return m_imageFolder; }

    // A choice is remembered in the file, and its first path is where the next dialog starts. Lists
    // are stored as lists although the next start reads one string: a list of one path comes back,
    // a longer one does not. That is wanted.
    void rememberIcoPath(const QString &path);
    void rememberFontFiles(const QStringList &paths);
    void rememberImagePath(const QString &path);
    void rememberImageFiles(const QStringList &paths);

    /// The screen resolutions that the file lists, such as "480X272"; entries that it promises and
    /// lacks are empty, and 1000 count at most. When it lists none the defaults are written for the
    /// next start, and the list is empty.
    QStringList loadResolutions();

    /// Takes in what was edited in the file meanwhile.
    void refresh();
    /// Empty for a list: an unquoted comma makes one of a value.
    QString text(const QString &key) const { return value(key).toString(); }
    /// The same, but as it stands in the file where it is a list: commas belong to captions.
    QString caption(const QString &key) const;
    bool hasGroup(const QString &group) const;
    void set(const QVector<iniText::Entry> &entries);

private:
    QVariant value(const QString &key) const;

    /// The text of the file, none when it cannot be read. What could not be written into another
    /// one is forgotten: the user's file counts.
    std::optional<QByteArray> currentText();

    const QString m_file;
    QSettings m_store; ///< only reads
    QVector<iniText::Entry> m_unwritten;
    std::optional<QByteArray> m_textUnwrittenInto;
    QString m_icoFolder;
    QString m_fontFolder;
    QString m_imageFolder;
};
