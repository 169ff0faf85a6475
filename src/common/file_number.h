#pragma once

#include <QString>

/// The decimal digits at the start of the file name of `path`: its number on the module. Empty when
/// there are none, and also when the whole name is digits; the latter is wanted.
QString leadingDigits(const QString &path);

/// The decimal digits at the start of the file name of `path` as a number, whatever follows them. 0
/// when there are none, or more than an int holds.
int leadingNumber(const QString &path);
