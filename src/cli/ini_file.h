#pragma once

#include <QMap>
#include <QString>

/// Keys with a text each.
using IniSection = QMap<QString, QString>;
/// An INI file as sections by their names, which are taken as they stand.
using IniSections = QMap<QString, IniSection>;

/// What the file at `path`, UTF-8, holds; nothing where there is no such file. Throws a Failure
/// where it cannot be read. A text with several blanks in a row needs quotes.
IniSections readIniFile(const QString &path);
