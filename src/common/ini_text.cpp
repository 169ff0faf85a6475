#include "common/ini_text.h"

#include <QBuffer>
#include <QHash>

namespace iniText {

namespace {

/// A line in its pieces; one behind the other they are what the user wrote.
struct Line
{
    QByteArray content; ///< a group, or a key with its value
    QByteArray remark;  ///< from the blanks in front of its semicolon on
    QByteArray end;     ///< empty where the text ends without one
};

using Lines = QVector<Line>;

/// How many bytes at `at` end a line: CR or LF alone, or both in any order. 0 elsewhere.
int endBytesAt(const QByteArray &text, int at)
{
    const auto isEnd = [&text](int i) {
        return i < text.size() && (text.at(i) == '\n' || text.at(i) == '\r');
    };
    if (!isEnd(at))
        return 0;
    return isEnd(at + 1) && text.at(at + 1) != text.at(at) ? 2 : 1;
}

void moveLastBlanks(QByteArray &from, QByteArray &to)
{
    int kept = from.size();
    while (kept > 0 && (from.at(kept - 1) == ' ' || from.at(kept - 1) == '\t'))
        --kept;
    to.prepend(from.mid(kept));
    from.truncate(kept);
}

/// Takes the line that begins at `at` as QSettings does: a quote or a backslash can hold lines
/// together, and behind a semicolon they cannot. What is still open at the end is closed there.
Line takeLine(const QByteArray &text, int &at)
{
    Line line;
    bool isQuoted = false;
    while (at < text.size() && (isQuoted || endBytesAt(text, at) == 0)) {
        const char c = text.at(at++);
        if (!line.remark.isEmpty() || (c == ';' && !isQuoted)) {
            line.remark += c;
            continue;
        }
        line.content += c;
        if (c == '\\' && at + endBytesAt(text, at) == text.size()) {
            line.content += "\r\n"; // so that it holds on to nothing that is added behind it
            at = text.size();
        } else if (c == '\\') {
            const int escaped = qMax(1, endBytesAt(text, at));
            line.content += text.mid(at, escaped);
            at += escaped;
        }
        if (c == '"')
            isQuoted = !isQuoted;
    }
    if (isQuoted)
        line.content += '"';
    if (!line.remark.isEmpty())
        moveLastBlanks(line.content, line.remark);
    line.end = text.mid(at, endBytesAt(text, at));
    at += line.end.size();
    return line;
}

bool isBlank(const Line &line)
{
    return line.content.trimmed().isEmpty() && line.remark.isEmpty();
}

Lines linesOf(const QByteArray &text)
{
    Lines lines;
    for (int at = 0; at < text.size();)
        lines.append(takeLine(text, at));
    return lines;
}

/// As text files on this system have it; a text device is what knows.
QByteArray systemLineEnd()
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly | QIODevice::Text);
    buffer.write("\n");
    return buffer.data();
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
            const QByteArray &content = lines.at(i).content;
            const QByteArray line = (i == 0 ? withoutMark(content) : content).trimmed();
            if (line.startsWith('['))
                group = line.mid(1, line.indexOf(']') - 1).trimmed();
            if (isBlank(lines.at(i)))
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
    Lines lines = linesOf(text);
    const QByteArray end =
        lines.isEmpty() || lines.first().end.isEmpty() ? systemLineEnd() : lines.first().end;
    Index index(lines);
    for (const Entry &entry : entries) {
        const QByteArray group = groupOf(entry.key);
        const int line = index.lineOf.value(entry.key.toLatin1(), -1);
        if (line >= 0) {
            lines[line].content = lineOf(entry);
            continue;
        }
        if (!index.endOf.contains(group)) {
            while (!lines.isEmpty() && isBlank(lines.last()))
                lines.removeLast();
            if (!lines.isEmpty())
                lines.append(Line());
            lines.append({'[' + group + ']', {}, {}});
            index.endOf[group] = lines.size();
        }
        const int place = index.endOf.value(group);
        lines.insert(place, {lineOf(entry), {}, {}});
        index.makeRoomAt(place);
        index.lineOf[entry.key.toLatin1()] = place;
        index.endOf[group] = place + 1;
    }
    QByteArray result;
    for (const Line &line : qAsConst(lines))
        result += line.content + line.remark + (line.end.isEmpty() ? end : line.end);
    return result;
}

QString rawValue(const QByteArray &text, const QString &key)
{
    const Lines lines = linesOf(text);
    const int line = Index(lines).lineOf.value(key.toLatin1(), -1);
    if (line < 0)
        return {};
    const QByteArray &content = lines.at(line).content;
    return QString::fromUtf8(content.mid(content.indexOf('=') + 1).trimmed());
}

Parsed parse(const QByteArray &text)
{
    Parsed parsed;
    Group group{0, {}};
    bool isEmpty = false;
    const auto endGroup = [&] {
        if (isEmpty)
            parsed.emptyGroups.append(group);
    };
    const auto lines = withoutMark(text).replace("\r\n", "\n").replace('\r', '\n').split('\n');
    for (int i = 0; i < lines.size(); ++i) {
        const QByteArray line = lines.at(i).split(';').first().trimmed();
        const int equals = line.indexOf('=');
        if (line.startsWith('[') && line.endsWith(']')) {
            endGroup();
            group = {i + 1, QString::fromUtf8(line.mid(1, line.size() - 2).trimmed())};
            isEmpty = true;
        } else if (equals > 0) {
            parsed.assignments.append({i + 1, group.name,
                                       QString::fromUtf8(line.left(equals).trimmed()),
                                       QString::fromUtf8(line.mid(equals + 1).trimmed())});
            isEmpty = false;
        } else if (!line.isEmpty() && parsed.badLine == 0)
            parsed.badLine = i + 1;
    }
    endGroup();
    return parsed;
}

} // namespace iniText
