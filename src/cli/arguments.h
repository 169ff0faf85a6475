#pragma once

#include "cli/console.h"
#include "common/whole_number.h"

#include <CLI/CLI.hpp>

#include <QString>
#include <QStringList>

#include <string>
#include <vector>

/// What the grammar's texts are as ours.
namespace arguments {

/// Whole numbers from `least` to `most`, decimal, or hexadecimal behind 0x.
inline CLI::Validator number(int least, int most)
{
    const std::string range =
        "number from " + std::to_string(least) + " to " + std::to_string(most);
    CLI::Validator validator(
        [least, most, range](std::string &text) -> std::string {
            const auto value = wholeNumber(QString::fromStdString(text), least, most);
            if (!value)
                return '"' + text + "\" is no " + range;
            text = std::to_string(*value); // without the zeros that would make it octal
            return {};
        },
        "");
    return validator;
}

/// Seconds from `least` to `most`; "nan" is none of them.
inline CLI::Validator seconds(double least, double most)
{
    return CLI::Validator(
        [least, most](std::string &text) -> std::string {
            bool isNumber = false;
            const double value = QString::fromStdString(text).toDouble(&isNumber);
            if (isNumber && value >= least && value <= most)
                return {};
            return QString("\"%1\" is no number from %2 to %3")
                .arg(QString::fromStdString(text))
                .arg(least)
                .arg(most, 0, 'f', 0)
                .toStdString();
        },
        "");
}

inline QString text(const std::string &argument)
{
    return console::decoded(argument);
}

inline QStringList texts(const std::vector<std::string> &arguments)
{
    QStringList list;
    for (const std::string &argument : arguments)
        list.append(text(argument));
    return list;
}

} // namespace arguments
