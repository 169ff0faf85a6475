#include "common/ini_text.h"

#include <QHash>

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

/// `text` without the mark that some editors put before UTF-8.
QByteArray withoutMark(const QByteArray &text)
{
    return text.startsWith("\xEF\xBB\xBF") ? text.mid(3) : text;
}

QByteArray groupOf(const QString &key)
{
    return key.section('/', 0, 0).toLatin1();
}

QByteArray nameOf(const QString &key)
{
    return key.section('/', 1).toLatin1();
}

/// Which line has which key, and where each group ends.
struct Index
{
    explicit Index(const Lines &lines)
    {
        QByteArray group;
        for (int i = 0; i < lines.size(); ++i) {
            QByteArray line = lines.at(i).trimmed();
            if (i == 0)
                line = withoutMark(line);
            if (line.startsWith('['))
                group = line.mid(1, line.indexOf(']') - 1).trimmed();
            if (line.isEmpty())
                continue;
            endOf[group] = i + 1;
            // Of several lines with one key the last counts.
            if (line.contains('='))
                lineOf[group + '/' + line.left(line.indexOf('=')).trimmed()] = i;
        }
    }

    void makeRoomAt(int line)
    {
        for (QHash<QByteArray, int> *places : {&lineOf, &endOf})
            for (int &place : *places)
                place += place >= line ? 1 : 0;
    }

    QHash<QByteArray, int> lineOf; ///< by "Group/key"
    QHash<QByteArray, int> endOf;  ///< behind the last line of the group
};

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
    Index index(lines);
    for (const Entry &entry : entries) {
        const QByteArray group = groupOf(entry.key);
        const int line = index.lineOf.value(entry.key.toLatin1(), -1);
        if (line >= 0) {
            lines[line] = lineOf(entry);
            continue;
        }
        if (!index.endOf.contains(group)) {
            while (!lines.isEmpty() && lines.last().trimmed().isEmpty())
                lines.removeLast();
            if (!lines.isEmpty())
                lines.append(QByteArray());
            lines << '[' + group + ']' << QByteArray();
            index.endOf[group] = lines.size() - 1;
        }
        const int end = index.endOf.value(group);
        lines.insert(end, lineOf(entry));
        index.makeRoomAt(end);
        index.lineOf[entry.key.toLatin1()] = end;
        index.endOf[group] = end + 1;
    }
    return lines.join('\n');
}

QString rawValue(const QByteArray &text, const QString &key)
{
    const Lines lines = linesOf(text);
    const int line = Index(lines).lineOf.value(key.toLatin1(), -1);
    if (line < 0)
        return {};
    const QByteArray value = lines.at(line).mid(lines.at(line).indexOf('=') + 1);
    return QString::fromUtf8(value.split(';').first().trimmed()); // a comment may follow
}

Parsed parse(const QByteArray &text)
{
    Parsed parsed;
    QString group;
    const Lines lines = withoutMark(text).split('\n');
    for (int i = 0; i < lines.size(); ++i) {
        const QByteArray line = lines.at(i).split(';').first().trimmed();
        const int equals = line.indexOf('=');
        if (line.startsWith('[') && line.endsWith(']'))
            group = QString::fromUtf8(line.mid(1, line.size() - 2).trimmed());
        else if (equals > 0)
            parsed.assignments.append({i + 1, group, QString::fromUtf8(line.left(equals).trimmed()),
                                       QString::fromUtf8(line.mid(equals + 1).trimmed())});
        else if (!line.isEmpty() && parsed.badLine == 0)
            parsed.badLine = i + 1;
    }
    return parsed;
}

} // namespace iniText
