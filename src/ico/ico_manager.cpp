#include "ico/ico_manager.h"

#include "common/file_number.h"
#include "common/picture.h"
#include "common/read_file.h"
#include "common/replace_file.h"
#include "ico/ico_library.h"

#include <QDir>
#include <QtConcurrent>

namespace {

constexpr int noPosition = -1;

/// The number of a picture's icon; no number counts as 0.
int positionOf(const QString &text)
{
    if (text.isEmpty())
        return 0;
    bool fits = false;
    const int position = text.toInt(&fits);
    return fits && position <= IconRecord::maxPosition ? position : noPosition;
}

IcoManager::Outcome writeLibrary(const QString &path, const QVector<IconRecord> &icons)
{
    const auto library = icoLibrary::write(icons);
    if (!library)
        return IcoManager::Outcome::TooLarge;
    return replaceFile(path, *library) ? IcoManager::Outcome::Written
                                       : IcoManager::Outcome::Unwritable;
}

/// The picture in the file at `path`; one without size when there is none.
IcoManager::Picture loaded(const QString &path)
{
    const QImage image = picture::decode(readFile(path).value_or(QByteArray()));
    const QString position = leadingDigits(path);
    return {QFileInfo(path).fileName(), position, image.size(),
            icon::fromImage(positionOf(position), image)};
}

} // namespace

std::optional<QStringList> IcoManager::picturesIn(const QString &folder)
{
    // JPEG files with the long suffix are not among them. That is wanted.
    const QStringList suffixes{"ico", "jpg", "bmp", "gif", "png"};
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files | QDir::NoSymLinks);
    if (files.isEmpty())
        return std::nullopt;
    QStringList paths;
    for (const QFileInfo &file : files)
        if (suffixes.contains(file.suffix(), Qt::CaseInsensitive))
            paths.append(file.filePath());
    return paths;
}

void IcoManager::load(const QStringList &paths)
{
    // Decoding is nearly all of the time, and every picture is on its own: all cores take part.
    const auto all = QtConcurrent::blockingMapped<QVector<Picture>>(paths, &loaded);
    m_pictures.clear();
    m_skipped.clear();
    for (int i = 0; i < all.size(); ++i) {
        if (all.at(i).size.isEmpty())
            m_skipped.append(paths.at(i));
        else
            m_pictures.append(all.at(i));
    }
}

QStringList IcoManager::misplaced() const
{
    QStringList names;
    for (const Picture &picture : m_pictures)
        if (picture.icon.position == noPosition)
            names.append(picture.name);
    return names;
}

QVector<IconRecord> IcoManager::loadedIcons() const
{
    QVector<IconRecord> icons;
    for (const Picture &picture : m_pictures)
        if (picture.icon.position != noPosition)
            icons.append(picture.icon);
    return icons;
}

IcoManager::Outcome IcoManager::create(const QString &path) const
{
    return writeLibrary(path, loadedIcons());
}

IcoManager::Outcome IcoManager::add(const QString &path)
{
    if (!open(path))
        return Outcome::Invalid;
    m_icons += loadedIcons();
    return writeLibrary(path, m_icons);
}

IcoManager::Outcome IcoManager::replace(const QString &path)
{
    if (!open(path))
        return Outcome::Invalid;
    return writeLibrary(path, loadedIcons() + m_icons);
}

bool IcoManager::open(const QString &path)
{
    const auto file = readFile(path);
    return file && icoLibrary::read(*file, m_icons);
}
