#pragma once

#include <QString>

/// The decimal digits at the start of the file name of `path`: its number on the module. Empty when
/// there are none, and also when the whole name is digits; the latter is wanted.
QString leadingDigits(const QString &path);
