#pragma once

#include <QSettings>
#include <QString>
#include <QStringList>

/// The tool's own settings: an INI file, UTF-8, opened once and kept for the life of the window. A
/// missing or unreadable file is a file without keys. Every change is one key, written at once.
class ToolSettings
{
public:
    /// Reads the start folders from `file`.
    explicit ToolSettings(const QString &file);

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
    void refresh() { m_store.sync(); }
    QString text(const QString &key) const { return m_store.value(key).toString(); }
    void setText(const QString &key, const QString &text) { m_store.setValue(key, text); }

private:
    QSettings m_store;
    QString m_icoFolder;
    QString m_fontFolder;
    QString m_imageFolder;
};
