#include "cli/ini_file.h"

#include "cli/failure.h"
#include "common/read_file.h"

#include <CLI/CLI.hpp>

#include <QFile>
#include <QStringList>

#include <sstream>

namespace {

/// The keys of one section, and their texts.
IniSection keysOf(const QByteArray &lines)
{
    std::istringstream text(lines.toStdString());
    CLI::ConfigINI format;
    format.arrayDelimiter(' '); // commas belong to the texts
    IniSection keys;
    for (const CLI::ConfigItem &item : format.from_config(text)) {
        QStringList words;
        for (const std::string &word : item.inputs)
            words.append(QString::fromStdString(word));
        keys.insert(QString::fromStdString(item.fullname()), words.join(' '));
    }
    return keys;
}

} // namespace

IniSections readIniFile(const QString &path)
{
    if (!QFile::exists(path))
        return {};
    const auto content = readFile(path);
    if (!content)
        throw Failure{ExitCode::badFile, path + " cannot be read", "Make it readable."};
    // The format has names of sections that mean more than they say, such as "a.b" and "default".
    QMap<QString, QByteArray> linesOf;
    QString section;
    for (const QByteArray &line : content->split('\n')) {
        const QByteArray words = line.trimmed();
        const bool isName = words.startsWith('[') && words.endsWith(']');
        if (isName)
            section = QString::fromUtf8(words.mid(1, words.size() - 2));
        linesOf[section] += (isName ? QByteArray() : line) + '\n';
    }
    linesOf.remove({}); // above all sections
    IniSections sections;
    for (auto lines = linesOf.begin(); lines != linesOf.end(); ++lines)
        sections.insert(lines.key(), keysOf(lines.value()));
    return sections;
}
