#pragma once

#include "ico/icon_record.h"

#include <QSize>
#include <QStringList>
#include <QVector>

#include <optional>

/// The pictures that were loaded for icon libraries, and the icons of the library that was read
/// last.
class IcoManager
{
public:
    struct Picture
    {
        QString name;     ///< of the file, without its folder
        QString position; ///< digits, empty when the name begins with none
        QSize size;       ///< as it was decoded
        IconRecord icon;
    };

    enum class Outcome {
        Written,
        Invalid,   ///< the library could not be read; it is as it was
        TooLarge,  ///< the icons do not fit into one library; nothing was written
        Unwritable ///< the file is as it was
    };

    /// The pictures of `folder` whose suffix makes them icons, by name. Nothing when the folder
    /// holds no file at all.
    static std::optional<QStringList> picturesIn(const QString &folder);

    /// Loads `paths` in place of what was loaded before. What cannot be opened or decoded is
    /// skipped, and its path is in skipped().
    void load(const QStringList &paths);
    const QVector<Picture> &pictures() const { return m_pictures; }
    const QStringList &skipped() const { return m_skipped; }
    /// Names of the loaded pictures whose number no library has. They are left out of all of them.
    QStringList misplaced() const;

    /// Writes a library of the loaded pictures alone.
    Outcome create(const QString &path) const;
    /// Puts the loaded pictures into the free positions of the library at `path`. The icons are
    /// then its own followed by all of the pictures.
    Outcome add(const QString &path);
    /// Puts the loaded pictures into the library at `path`, in place of icons at their positions.
    /// The icons are then those that it had.
    Outcome replace(const QString &path);

    /// Reads the icons of the library at `path`; false when it is none.
    bool open(const QString &path);
    const QVector<IconRecord> &icons() const { return m_icons; }

private:
    QVector<IconRecord> loadedIcons() const;

    QVector<Picture> m_pictures;
    QStringList m_skipped;
    QVector<IconRecord> m_icons;
};
