#pragma once

#include <QMap>
#include <QString>

/// An INI file as sections of keys with a text each.
using IniSections = QMap<QString, QMap<QString, QString>>;

/// What the file at `path`, UTF-8, holds; nothing where there is no such file. Throws a Failure
/// where it cannot be read. A text with several blanks in a row needs quotes.
IniSections readIniFile(const QString &path);
