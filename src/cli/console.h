#pragma once

#include <QByteArray>
#include <QString>

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

/// The terminal that the program was started from, or what stands for it. Each system has a file of
/// its own.
namespace console {

/// The words behind the name of the program, the last one first, as the parser takes them. How they
/// are encoded is for encoded() and decoded() to know.
std::vector<std::string> words(int argc, char *argv[]);
std::string encoded(const QString &word);
QString decoded(const std::string &word);

/// Writes `text` at once: all of its characters on a terminal, elsewhere those of the local 8-bit
/// encoding. False where it cannot, now or before.
bool print(std::FILE *file, const QString &text);
/// What there is to read, 4 KiB at most, as soon as there is anything; empty at the end, nothing
/// where it cannot be read.
std::optional<QByteArray> readSome(int descriptor);
/// The platform of Qt that draws text without a display.
extern const char *const platform;
/// Whether `file` is a terminal; from then on it understands escape sequences.
bool isTerminal(std::FILE *file);
/// Columns of the terminal at stderr; 80 where it does not tell.
int columns();

} // namespace console
