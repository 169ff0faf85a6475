#include "cli/ini_file.h"

#include "cli/failure.h"
#include "common/read_file.h"

#include <CLI/CLI.hpp>

#include <QFile>
#include <QStringList>

#include <sstream>

IniSections readIniFile(const QString &path)
{
    if (!QFile::exists(path))
        return {};
    const auto content = readFile(path);
    if (!content)
        throw Failure{ExitCode::badFile, path + " cannot be read", "Make it readable."};
    std::istringstream text(content->toStdString());
    CLI::ConfigINI format;
    format.arrayDelimiter(' '); // commas belong to the texts
    IniSections sections;
    for (const CLI::ConfigItem &item : format.from_config(text)) {
        if (item.name == "++" || item.name == "--") // where a section begins and ends
            continue;
        QStringList words;
        for (const std::string &word : item.inputs)
            words.append(QString::fromStdString(word));
        const QString section =
            item.parents.empty() ? QString() : QString::fromStdString(item.parents.front());
        sections[section].insert(QString::fromStdString(item.name), words.join(' '));
    }
    return sections;
}
