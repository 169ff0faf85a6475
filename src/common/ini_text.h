#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

/// The text of an INI file, UTF-8, as `QSettings` reads it. Changing the text itself leaves all
/// else in it as the user wrote it, and lets the file be written whole or not at all; `QSettings`
/// commits a file whose end did not fit on the disk.
namespace iniText {

/// A key such as "Group/key" in plain ASCII. Two values or more are a list.
struct Entry
{
    QString key;
    QStringList values;
};

/// `text` with `entries` in place of what it had under their keys; new keys go to the end of their
/// groups. Remarks stay, and so do line ends; new lines end as the first one does, or as is usual
/// on this system.
QByteArray withEntries(const QByteArray &text, const QVector<Entry> &entries);

/// What stands behind the "=" of `key`, as it is written, up to a comment or the end of the line.
/// Empty when there is no such key.
QString rawValue(const QByteArray &text, const QString &key);

/// A line "key=value" of a text.
struct Assignment
{
    int line;      ///< counted from 1
    QString group; ///< empty before the first one
    QString key;
    QString value;
};

/// A line "[name]" of a text.
struct Group
{
    int line; ///< counted from 1
    QString name;
};

struct Parsed
{
    QVector<Assignment> assignments;
    QVector<Group> emptyGroups; ///< behind which no key stands
    /// The first line that is neither a group, a key nor a comment; 0 when all are.
    int badLine = 0;
};

/// All keys of `text`, as they stand. A comment is a line, or its end, that begins with ";".
Parsed parse(const QByteArray &text);

} // namespace iniText
