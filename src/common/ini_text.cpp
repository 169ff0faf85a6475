#include "common/ini_text.h"

namespace iniText {

namespace {

using Lines = QList<QByteArray>;

/// The lines of `text` as QSettings reads them: a quote or a backslash can hold lines together, and
/// behind a semicolon they cannot. What is still open at the end is closed there.
Lines linesOf(const QByteArray &text)
{
    Lines lines;
    QByteArray line;
    bool isQuoted = false;
    bool isComment = false;
    for (int i = 0; i < text.size(); ++i) {
        const char c = text.at(i);
        if (c == '\n' && !isQuoted) {
            lines.append(line);
            line.clear();
            isComment = false;
            continue;
        }
        line += c;
        isComment = isComment ? c != '\r' : c == ';' && !isQuoted;
        if (isComment)
            continue;
        if (c == '"')
            isQuoted = !isQuoted;
        else if (c == '\\' && i + 1 < text.size())
            line += text.at(++i);
        else if (c == '\\')
            line.chop(1);
    }
    lines.append(isQuoted ? line + '"' : line);
    return lines;
}

/// Where a key stands, or where a new one of its group would.
struct Place
{
    int line = -1; ///< of the key, -1 when there is none
    int end = -1;  ///< behind the last line of its group, -1 when there is no such group
};

QByteArray groupOf(const QString &key)
{
    return key.section('/', 0, 0).toLatin1();
}

QByteArray nameOf(const QString &key)
{
    return key.section('/', 1).toLatin1();
}

/// Of several lines with one key the last counts.
Place find(const Lines &lines, const QString &key)
{
    const QByteArray group = groupOf(key);
    const QByteArray name = nameOf(key);
    Place place;
    bool isInGroup = false;
    for (int i = 0; i < lines.size(); ++i) {
        QByteArray line = lines.at(i).trimmed();
        if (i == 0 && line.startsWith("\xEF\xBB\xBF"))
            line.remove(0, 3); // some editors mark UTF-8 so
        if (line.startsWith('['))
            isInGroup = line.mid(1, line.indexOf(']') - 1).trimmed() == group;
        if (!isInGroup || line.isEmpty())
            continue;
        place.end = i + 1;
        const int equals = line.indexOf('=');
        if (equals >= 0 && line.left(equals).trimmed() == name)
            place.line = i;
    }
    return place;
}

/// `value` as it stands in a file; in quotes where blanks, commas and the like are its own.
QByteArray written(QString value)
{
    // A single "@" begins what QSettings keeps of other types.
    if (value.startsWith('@'))
        value.prepend('@');
    QByteArray text;
    bool isPlain = !value.isEmpty() && value.trimmed() == value;
    for (const char byte : value.toUtf8()) {
        const auto code = static_cast<uchar>(byte);
        isPlain = isPlain && code >= ' ' && !QByteArray("\"\\,;=").contains(byte);
        if (code < ' ')
            text += "\\x" + QByteArray::number(code, 16) + "\"\""; // the quotes end the digits
        else if (byte == '"' || byte == '\\')
            text += QByteArray("\\") + byte;
        else
            text += byte;
    }
    return isPlain ? text : '"' + text + '"';
}

QByteArray lineOf(const Entry &entry)
{
    QByteArray values;
    for (const QString &value : entry.values)
        values += (values.isEmpty() ? "" : ", ") + written(value);
    return nameOf(entry.key) + '=' + values;
}

} // namespace

QByteArray withEntries(const QByteArray &text, const QVector<Entry> &entries)
{
    Lines lines = text.isEmpty() ? Lines() : linesOf(text);
    for (const Entry &entry : entries) {
        const Place place = find(lines, entry.key);
        if (place.line >= 0) {
            lines[place.line] = lineOf(entry);
        } else if (place.end >= 0) {
            lines.insert(place.end, lineOf(entry));
        } else {
            while (!lines.isEmpty() && lines.last().trimmed().isEmpty())
                lines.removeLast();
            if (!lines.isEmpty())
                lines.append(QByteArray());
            lines += {'[' + groupOf(entry.key) + ']', lineOf(entry), QByteArray()};
        }
    }
    return lines.join('\n');
}

QString rawValue(const QByteArray &text, const QString &key)
{
    const Lines lines = linesOf(text);
    const Place place = find(lines, key);
    if (place.line < 0)
        return {};
    const QByteArray line = lines.at(place.line);
    const QByteArray value = line.mid(line.indexOf('=') + 1);
    return QString::fromUtf8(value.split(';').first().trimmed()); // a comment may follow
}

} // namespace iniText
