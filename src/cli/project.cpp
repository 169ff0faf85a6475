#include "cli/project.h"

#include "cli/device.h"
#include "cli/failure.h"
#include "cli/ini_file.h"
#include "cli/input_files.h"
#include "common/file_number.h"
#include "common/picture.h"
#include "common/read_file.h"
#include "common/whole_number.h"
#include "download/flash_blocks.h"
#include "download/os_download.h"
#include "download/screen_picture.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace {

using Kind = ProjectFile::Kind;

constexpr int flashBlockCount = 256;
constexpr int pictureCount = 256; ///< that ED2 can name
constexpr int pageCount = 0x10000;
constexpr int pageBytes = 4096;      ///< that a check covers at a time
constexpr int unitBytes = 32 * 1024; ///< in which files go over UART2, filled up with zeros

struct Suffixes
{
    const char *names;
    Kind kind;
};

constexpr Suffixes knownSuffixes[] = {
    {"bin ico hzk dzk wav", Kind::Flash},
    {"bmp jpg jpeg png gif", Kind::Picture},
};

Failure fileFault(const QString &path, const QString &fault, const QString &remedy)
{
    return {ExitCode::badFile, QString("%1: %2").arg(path, fault), remedy};
}

QByteArray wholeFile(const QString &path)
{
    ReadFault fault = ReadFault::None;
    const auto content = readFile(path, &fault);
    if (fault == ReadFault::Unreadable)
        throw brokenOff(path);
    if (!content)
        throw fileFault(path,
                        fault == ReadFault::TooLarge ? "the file is too large"
                                                     : "the file cannot be read",
                        "Is the name right, and may you read it?");
    return *content;
}

QImage imageOf(const QString &path)
{
    const QByteArray content = wholeFile(path);
    const QImage image = picture::decode(content);
    if (image.isNull())
        throw fileFault(path, picture::refusal(content).in(true).section('\n', 0, 0),
                        "Save it anew as PNG or BMP.");
    return image;
}

void fillFlash(ProjectFile &file)
{
    file.content = wholeFile(file.path);
    if (file.kind == Kind::Icon)
        file.content.append((unitBytes - file.content.size() % unitBytes) % unitBytes, '\0');
    file.units = crcCheck::flashUnits(file.number, file.name, file.content);
    file.uncovered = file.content.size() % pageBytes;
    if (file.content.isEmpty())
        throw fileFault(file.path, "the file is empty", "It would only erase its flash block.");
}

void fillPicture(ProjectFile &file, const std::optional<QSize> &screen)
{
    if (!screen)
        throw Failure{ExitCode::usage, "the size of the screen is not known",
                      "Say it with --size WxH, or as size=WxH in k7.ini or devices.ini."};
    file.size = *screen;
    file.content = screenPicture::pixels(imageOf(file.path), *screen);
    file.units = {crcCheck::pictureUnit(file.number, file.name, file.content)};
}

/// Picture memory has no number by which it could be checked.
void fillBmp(ProjectFile &file, Model model)
{
    const QImage image = imageOf(file.path);
    file.size = image.size();
    file.content = picture::toRgb565(image);
    if (model == Model::K7uid2)
        file.units = {crcCheck::pictureUnit(file.number, file.name, file.content)};
    else
        file.uncovered = file.content.size();
}

void fillOs(ProjectFile &file)
{
    file.content = wholeFile(file.path);
    if (const Text *refusal = OsDownload::refusal(file.content.size()))
        throw fileFault(file.path, refusal->in(true).section('\n', 0, 0),
                        "Is this the file of an operating system?");
    file.units = {crcCheck::systemUnit(file.name, file.content)};
}

/// How many numbers there are for `kind`; 0 where it needs none.
int numbersOf(Kind kind, Model model)
{
    switch (kind) {
    case Kind::Flash:
    case Kind::Icon:
        return flashBlockCount;
    case Kind::Picture:
        return pictureCount;
    case Kind::Bmp:
        return model == Model::K7uid2 ? pageCount : 0;
    case Kind::Os:
        break;
    }
    return 0;
}

QString stateOf(const QString &path)
{
    const QFileInfo info(path);
    return QString("%1 %2").arg(info.lastModified().toMSecsSinceEpoch()).arg(info.size());
}

/// Whether `number`, as it is written, is one for `kind`.
bool isNumberOf(Kind kind, Model model, const QString &number)
{
    const int numbers = numbersOf(kind, model);
    return numbers == 0 || wholeNumber(number, 0, numbers - 1);
}

/// The numbers that k7.ini gives to files, by their names; -1 leaves a file out.
QMap<QString, int> numbersIn(const IniSections &ini)
{
    QMap<QString, int> numbers;
    for (const char *section : {"flash", "pictures"}) {
        const auto entries = ini.value(section);
        for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
            const auto number = wholeNumber(entry.key());
            if (!number)
                throw Failure{ExitCode::usage,
                              QString("k7.ini: \"%1\" is no number").arg(entry.key()),
                              QString("Entries of [%1] are NUMBER=FILE.").arg(section)};
            numbers.insert(entry.value(), *number);
        }
    }
    return numbers;
}

} // namespace

int ProjectFile::blocks() const
{
    constexpr int blockBytes = 256 * 1024;
    return kind == Kind::Flash ? qMax(1, (content.size() + blockBytes - 1) / blockBytes) : 1;
}

std::optional<ProjectFile::Kind> Project::kindOf(const QString &name)
{
    if (name.startsWith("ZOLTOS"))
        return Kind::Os;
    const QString suffix = QFileInfo(name).suffix().toLower();
    for (const Suffixes &known : knownSuffixes)
        if (QString(known.names).split(' ').contains(suffix))
            return known.kind;
    return std::nullopt;
}

void Project::add(const QString &path, std::optional<ProjectFile::Kind> kind,
                  std::optional<int> number)
{
    const QString name = QFileInfo(path).fileName();
    if (!kind)
        kind = kindOf(name);
    if (!kind)
        throw Failure{ExitCode::usage, QString("%1: what kind of file is this?").arg(path),
                      "Say it with --as flash, picture, bmp, icon or os."};
    const QString written = number ? QString::number(*number) : leadingDigits(path);
    ProjectFile file{*kind, path, name,         wholeNumber(written).value_or(-1), {}, {},
                     {},    0,    stateOf(path)};
    if (!isNumberOf(*kind, m_model, written))
        throw Failure{ExitCode::usage,
                      QString("%1 has %2")
                          .arg(path, written.isEmpty() ? "no number" : "the number " + written),
                      QString("Numbers are 0 to %1: at the start of its name, behind it as "
                              "FILE=NUMBER, or in k7.ini.")
                          .arg(numbersOf(*kind, m_model) - 1)};
    if (isFlash(*kind))
        fillFlash(file);
    else if (*kind == Kind::Picture)
        fillPicture(file, m_screen);
    else if (*kind == Kind::Bmp)
        fillBmp(file, m_model);
    else
        fillOs(file);
    refuseOverlaps(file);
    const auto place = std::upper_bound(
        m_files.begin(), m_files.end(), file, [](const ProjectFile &a, const ProjectFile &b) {
            return std::pair(a.kind, a.number) < std::pair(b.kind, b.number);
        });
    m_files.insert(place, file);
}

void Project::refuseOverlaps(const ProjectFile &file) const
{
    const auto end = [](const ProjectFile &each) {
        return each.number + (isFlash(each.kind) ? flashBlocks(0, each.content).size() : 1);
    };
    if (isFlash(file.kind) && end(file) > flashBlockCount)
        throw Failure{ExitCode::badFile,
                      QString("%1 is too large for flash block %2").arg(file.path).arg(file.number),
                      "The flash ends behind block 255. Give it a lower number."};
    for (const ProjectFile &other : m_files) {
        const bool shareNumbers =
            isFlash(file.kind) ? isFlash(other.kind) : file.kind == other.kind;
        if (shareNumbers && file.number >= 0 && file.number < end(other) &&
            other.number < end(file))
            throw Failure{
                ExitCode::badFile,
                QString("%1 and %2 both need %3 %4")
                    .arg(other.path, file.path, isFlash(file.kind) ? "flash block" : "picture")
                    .arg(qMax(file.number, other.number)),
                "Give one of them another number."};
    }
}

void Project::addFolder(const QString &folder, const QString &glob, bool takesOs)
{
    const QDir dir(folder);
    if (!dir.exists())
        throw fileFault(folder, "there is no such folder", "Is the name right?");
    const QRegularExpression wanted(QRegularExpression::wildcardToRegularExpression(glob));
    const QMap<QString, int> numbers = numbersIn(readIniFile(dir.filePath("k7.ini")));
    for (auto named = numbers.begin(); named != numbers.end(); ++named)
        if (!dir.exists(named.key()))
            throw fileFault(dir.filePath(named.key()),
                            "k7.ini names this file, and it is not there", "Correct k7.ini.");
    QStringList names = dir.entryList(QDir::Files, QDir::Name);
    for (const QString &name : numbers.keys())
        if (!names.contains(name))
            names.append(name); // in a folder below
    for (const QString &name : qAsConst(names)) {
        if (name == "k7.ini" || (!glob.isEmpty() && !wanted.match(name).hasMatch()))
            continue;
        const auto kind = kindOf(QFileInfo(name).fileName());
        const auto given =
            numbers.contains(name) ? std::optional(numbers.value(name)) : std::nullopt;
        const QString digits = leadingDigits(name);
        const bool isNumbered = kind && *kind != Kind::Os;
        if (!kind)
            m_leftOut.append({name, "no kind of file that a module holds"});
        else if (*kind == Kind::Os && !takesOs)
            m_leftOut.append({name, "an operating system is sent with `k7 send` alone"});
        else if (isNumbered && (given ? *given < 0 : digits.isEmpty()))
            m_leftOut.append({name, "no number in its name or in k7.ini"});
        else if (isNumbered && !given && !isNumberOf(*kind, m_model, digits))
            m_leftOut.append({name, QString("a module has no number %1").arg(digits)});
        else
            add(dir.filePath(name), kind, given);
    }
}

bool isFlash(ProjectFile::Kind kind)
{
    return kind == Kind::Flash || kind == Kind::Icon;
}

QString kindName(ProjectFile::Kind kind)
{
    return QStringList{"flash", "picture", "bmp", "icon", "os"}.value(static_cast<int>(kind));
}
