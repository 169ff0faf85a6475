#pragma once

#include "crc/crc_check_item.h"

#include <QByteArray>
#include <QSize>
#include <QString>
#include <QVector>

#include <optional>

enum class Model;

/// A file, and how a module is to hold it.
struct ProjectFile
{
    /// How it goes to the module, and where.
    enum class Kind {
        Flash,   ///< over ED2, in 256 KiB flash blocks from `number` on
        Picture, ///< over ED2, as picture `number` of the size of the screen
        Bmp,     ///< over UART2, at its own size: on K7UID2 page `number`, else picture memory
        Icon,    ///< over UART2, into the same flash as Flash
        Os       ///< over UART2, the operating system
    };

    Kind kind;
    QString path;
    QString name;       ///< without its folder
    int number;         ///< -1 where there is none
    QByteArray content; ///< as it is sent, but for the boot bytes of an operating system
    QSize size;         ///< of a picture, in pixels
    /// What the module can check: of flash one unit for each block, but for a last one without a
    /// whole page; else one or none.
    QVector<CrcCheckItem> units;
    int uncovered; ///< bytes at the end of `content` that no unit covers
    QString state; ///< time and size of the file when it was read

    /// Only flash goes in blocks; all others are sent whole.
    int blocks() const;
};

/// The files of a project, as they lie in a folder or are named one by one.
class Project
{
public:
    struct LeftOut
    {
        QString name;
        QString reason;
    };

    /// `screen` is the size of the module's pictures, where it is known.
    Project(Model model, const std::optional<QSize> &screen) : m_model(model), m_screen(screen) {}

    /// Adds the files of `folder` that have a number, at the start of their names or in the
    /// folder's k7.ini, and match `glob`. `takesOs` adds an operating system, too.
    void addFolder(const QString &folder, const QString &glob, bool takesOs);
    /// Adds one file. Its kind follows from its name if none is given, its number likewise. Throws
    /// a Failure where it cannot be used.
    void add(const QString &path, std::optional<ProjectFile::Kind> kind, std::optional<int> number);

    /// By kind and number.
    const QVector<ProjectFile> &files() const { return m_files; }
    const QVector<LeftOut> &leftOut() const { return m_leftOut; }

    /// The kind that the name of a file speaks of; none for other files.
    static std::optional<ProjectFile::Kind> kindOf(const QString &name);

private:
    void refuseOverlaps(const ProjectFile &file) const;

    const Model m_model;
    const std::optional<QSize> m_screen;
    QVector<ProjectFile> m_files;
    QVector<LeftOut> m_leftOut;
};

/// Whether files of `kind` stand in flash blocks.
bool isFlash(ProjectFile::Kind kind);

/// The name of `kind` in the options and in JSON.
QString kindName(ProjectFile::Kind kind);
